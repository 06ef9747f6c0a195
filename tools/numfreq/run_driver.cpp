#include "numfreq/run_driver.h"

#include <algorithm>
#include <vector>

#include "flib/io/unit.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/util/elements.h"
#include "flib/util/mod_timer.h"
#include "numfreq/get_sgn_param.h"
#include "sgn/job/chosen_element.h"
#include "sgn/job/file_state.h"
#include "sgn/job/job_atoms.h"
#include "sgn/job/job_files.h"
#include "sgn/result/sgn_file.h"

namespace numfreq {
namespace {

using flib::line_buffer;
using flib::matrix;

constexpr std::int32_t result_unit = 1;

}  // namespace

void run_driver(std::span<const std::string_view> arguments) {
    flib::timer timer1;
    timer1.start_timer();

    const line_buffer ffch(arguments.empty() ? std::string_view{} : arguments[0]);
    const bool ref = arguments.size() == 2;
    const line_buffer fref(ref ? arguments[1] : ffch.padded());
    const line_buffer fcis = sgn::job_file(ffch.padded(), sgn::suffix::amplitudes);
    const line_buffer flog = sgn::job_file(ffch.padded(), sgn::suffix::log);
    const line_buffer fsgn = sgn::job_file(ffch.padded(), sgn::suffix::result);

    const sgn::file_state inputs[] = {sgn::file_state(flog.padded()),
                                      sgn::file_state(ffch.padded()),
                                      sgn::file_state(fcis.padded())};
    sgn::sgn_parameters run;
    std::int32_t nbsuse = 0;
    double denmax_ref = 0;
    get_sgn_param(ref, fref.padded(), run.natom, run.nmo, nbsuse, run.mi, run.ma, run.mci, run.nfc,
                  run.nfv, run.tden_maxloc, denmax_ref);
    const std::int32_t natom = run.natom;
    inputs[0].require_room_for_atoms(natom);

    sgn::job_atoms atoms(natom);
    matrix<double> frc(3, natom, "the forces");
    matrix<double> tdip(3, 1, "the transition dipole");

    std::int32_t info = 0;
    sgn::read_job_atoms(flog.padded(), atoms);
    std::vector<sgn::report_symbol> symbol(atoms.nat.size());
    flib::nat_to_symbol(natom, atoms.nat.all(), symbol);

    flib::qm_file_force_tdip(flog.padded(), natom, 1, frc.view(), tdip.view(), info);
    const sgn::density_source density{
        ffch.padded(), fcis.padded(), {run.nmo, nbsuse, run.mi, run.ma, run.nfc, run.nfv}, run.mci};
    // A mapped run is judged at the reference's element, even if its own largest one is elsewhere.
    if (ref) {
        sgn::require_fits_reference(density);
        run.tden_maxval = sgn::density_at(density, run.tden_maxloc);
    } else {
        const flib::extremum largest = sgn::largest_of_density(density);
        run.tden_maxloc = largest.at;
        run.tden_maxval = denmax_ref = largest.value;
    }
    run.sign = flib::same_sign_d(run.tden_maxval, denmax_ref);

    sgn::sgn_body body{symbol, atoms.nat.all(), atoms.mass.all(), atoms.x.view(), {}, frc.view()};
    for (std::int32_t k = 1; k <= 3; ++k) {
        body.corrected_tdip[static_cast<std::size_t>(k) - 1] = tdip(k, 1) * run.sign;
    }
    std::ranges::for_each(inputs, &sgn::file_state::require_unchanged);
    flib::open_replace(result_unit, fsgn.padded());
    sgn::write_sgn_parameters(result_unit, run);
    sgn::write_sgn_body(result_unit, body);
    flib::commit_unit(result_unit);
}

}  // namespace numfreq
