#include "numfreq/get_sgn_param.h"

#include <string>

#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/text/fixed_text.h"
#include "sgn/job/job_counts.h"
#include "sgn/job/job_files.h"
#include "sgn/result/sgn_file.h"

namespace numfreq {
namespace {

/// The message of a file that is no result file is fixed, and names no file: the hint does.
sgn::sgn_parameters read_reference(std::string_view file) {
    try {
        const flib::input_unit fid(file);
        return sgn::read_sgn_parameters(fid);
    } catch (const flib::stop_run& stop) {
        const std::string shown = flib::printable(flib::trim_right(file));
        throw flib::stop_run(stop.status(), stop.lines(),
                             shown + (sgn::is_sgn_file(file)
                                          ? ": is the result file of a reference, but a damaged one"
                                          : ": the result file of the reference was expected here, "
                                            "NAME.sgn of its run"));
    }
}

}  // namespace

void get_sgn_param(bool ref, std::string_view finp, std::int32_t& natom, std::int32_t& nbasis,
                   std::int32_t& nbsuse, std::int32_t& mi, std::int32_t& ma, std::int32_t& mci,
                   std::int32_t& nfc, std::int32_t& nfv, flib::element_location& tden_maxloc,
                   double& tden_maxval) {
    if (ref) {
        const sgn::sgn_parameters reference = read_reference(finp);
        natom = reference.natom;
        nbasis = nbsuse = reference.nmo;
        mi = reference.mi;
        ma = reference.ma;
        mci = reference.mci;
        nfc = reference.nfc;
        nfv = reference.nfv;
        tden_maxloc = reference.tden_maxloc;
        tden_maxval = reference.tden_maxval;
        return;
    }
    const flib::line_buffer flog = sgn::job_file(finp, sgn::suffix::log);
    const flib::line_buffer ffch = sgn::job_file(finp, sgn::suffix::checkpoint);
    const sgn::job_counts counts = sgn::count_job(flog.padded(), ffch.padded());
    natom = counts.natom;
    nbasis = counts.nbasis;
    nbsuse = counts.nbsuse;
    mi = counts.mi;
    ma = counts.ma;
    mci = counts.mci;
    nfc = counts.nfc;
    nfv = counts.nfv;
    tden_maxloc = {0, 0};
    tden_maxval = 0;
}

}  // namespace numfreq
