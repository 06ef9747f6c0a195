#include "numfreq/get_sgn_param.h"

#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nci.h"
#include "flib/io/unit.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "numfreq/job_files.h"
#include "numfreq/sgn_file.h"

namespace numfreq {

void get_sgn_param(bool ref, std::string_view finp, std::int32_t& natom, std::int32_t& nbasis,
                   std::int32_t& nbsuse, std::int32_t& mi, std::int32_t& ma, std::int32_t& mci,
                   std::int32_t& nfc, std::int32_t& nfv, flib::element_location& tden_maxloc,
                   double& tden_maxval) {
    if (ref) {
        const flib::input_unit fid(finp);
        const sgn_parameters reference = read_sgn_parameters(fid);
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
    const flib::line_buffer flog = job_file(finp, suffix::log);
    const flib::line_buffer ffch = job_file(finp, suffix::checkpoint);
    bool ifoniom = false;
    std::int32_t info = 0;
    flib::qm_file_ifoniom(flog.padded(), ifoniom, info);
    if (ifoniom) {
        std::int32_t nqmmm = 0;
        flib::qm_file_natom_oniom_qm(flog.padded(), natom, nqmmm, info);
    } else {
        flib::qm_file_natom(ffch.padded(), natom, info);
    }
    std::int32_t na = 0;
    std::int32_t nb = 0;
    std::int32_t nae = 0;
    flib::qm_file_nbasis_nbsuse(ffch.padded(), na, nb, nbasis, nbsuse, info);
    flib::qm_file_nci(flog.padded(), mi, ma, mci, nae, nfc, nfv, info);
    tden_maxloc = {0, 0};
    tden_maxval = 0;
}

}  // namespace numfreq
