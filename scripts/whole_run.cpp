// whole_run CHECKPOINT RESULT [REFERENCE.sgn]: writes the parameter block of the job's result,
// found by the public routines with everything in memory and numbers read one by one. For
// comparison with what the sign tool writes.
#include <cstdio>
#include <string>

#include "flib/io/unit.h"
#include "numfreq/get_sgn_param.h"
#include "sgn/job/job_files.h"
#include "sgn/result/sgn_file.h"
#include "support/whole_density.h"

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const std::string ffch = argv[1];
    const bool mapped = argc > 3;
    const flib::line_buffer fcis = sgn::job_file(ffch, sgn::suffix::amplitudes);
    sgn::sgn_parameters run;
    std::int32_t nbsuse = 0;
    double value = 0;
    try {
        numfreq::get_sgn_param(mapped, mapped ? argv[3] : argv[1], run.natom, run.nmo, nbsuse,
                               run.mi, run.ma, run.mci, run.nfc, run.nfv, run.tden_maxloc, value);
        const flib::density_source source{
            ffch, fcis.padded(), {run.nmo, nbsuse, run.mi, run.ma, run.nfc, run.nfv}, run.mci};
        const flib::extremum chosen =
            support::whole_density(source, mapped ? &run.tden_maxloc : nullptr);
        run.tden_maxloc = chosen.at;
        run.tden_maxval = chosen.value;
        run.sign = flib::same_sign_d(chosen.value, mapped ? value : chosen.value);
        flib::open_replace(1, argv[2]);
        sgn::write_sgn_parameters(1, run);
        flib::commit_unit(1);
    } catch (const flib::ending& end) {
        std::fprintf(stderr, "%s\n", end.what());
        return end.status();
    }
    return 0;
}
