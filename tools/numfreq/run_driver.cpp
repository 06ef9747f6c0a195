#include "numfreq/run_driver.h"

#include <algorithm>
#include <string>
#include <vector>

#include "flib/excited/get_ci_density_nbasis_nbsuse.h"
#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/util/elements.h"
#include "flib/util/mod_timer.h"
#include "numfreq/file_state.h"
#include "numfreq/get_sgn_param.h"
#include "numfreq/job_atoms.h"
#include "numfreq/job_files.h"
#include "numfreq/sgn_file.h"

namespace numfreq {
namespace {

using flib::line_buffer;
using flib::matrix;
using flib::zeroed_array;

constexpr std::int32_t result_unit = 1;

/// The element of the density at `loc`; run_error if it has none there.
double element_at(const matrix<double>& den, const flib::element_location& loc, bool ref) {
    const std::int32_t nmo = den.view().rows();
    const auto [row, column] = loc;
    if (row >= 1 && row <= nmo && column >= 1 && column <= nmo) return den(row, column);
    throw flib::run_error("the chosen element of the transition density, row " +
                          std::to_string(row) + " and column " + std::to_string(column) +
                          ", lies outside 1.." + std::to_string(nmo) +
                          (ref ? ": the reference does not fit this job"
                               : ": no element of the density is above zero in magnitude"));
}

}  // namespace

void run_driver(std::span<const std::string_view> arguments) {
    flib::timer timer1;
    timer1.start_timer();

    const line_buffer ffch(arguments.empty() ? std::string_view{} : arguments[0]);
    const bool ref = arguments.size() == 2;
    const line_buffer fref(ref ? arguments[1] : ffch.padded());
    const line_buffer fcis = job_file(ffch.padded(), suffix::amplitudes);
    const line_buffer flog = job_file(ffch.padded(), suffix::log);
    const line_buffer fsgn = job_file(ffch.padded(), suffix::result);

    const file_state inputs[] = {file_state(flog.padded()), file_state(ffch.padded()),
                                 file_state(fcis.padded())};
    sgn_parameters run;
    std::int32_t nbsuse = 0;
    double denmax_ref = 0;
    get_sgn_param(ref, fref.padded(), run.natom, run.nmo, nbsuse, run.mi, run.ma, run.mci, run.nfc,
                  run.nfv, run.tden_maxloc, denmax_ref);
    const std::int32_t natom = run.natom;
    const std::int32_t nbasis = run.nmo;
    inputs[0].require_room_for_atoms(natom);

    job_atoms atoms(natom);
    matrix<double> frc(3, natom, "the forces");
    matrix<double> moc(nbasis, nbasis, "the MO coefficients");
    matrix<double> den(nbasis, nbasis, "the transition density");
    zeroed_array<double> xpy({run.ma, run.mi, 2, run.mci}, "the excitation amplitudes");
    matrix<double> tdip(3, 1, "the transition dipole");

    std::int32_t info = 0;
    read_job_atoms(flog.padded(), atoms);
    std::vector<report_symbol> symbol(atoms.nat.size());
    flib::nat_to_symbol(natom, atoms.nat.all(), symbol);

    flib::qm_file_force_tdip(flog.padded(), natom, 1, frc.view(), tdip.view(), info);
    flib::qm_file_mo_coeff_nbasis_nbsuse(ffch.padded(), nbasis, nbsuse, moc.view(), info);
    flib::qm_file_ci_xpy(fcis.padded(), run.mi, run.ma, run.mci, xpy.all(), info);
    flib::get_ci_density_nbasis_nbsuse(nbasis, nbsuse, run.mi, run.ma, run.nfc, run.nfv, moc.view(),
                                       xpy.all(), den.view());

    // A mapped run is judged at the reference's element, even if its own largest one is elsewhere.
    if (!ref) {
        flib::mat_abs_maxval_d(nbasis, den.view(), run.tden_maxloc);
        denmax_ref = element_at(den, run.tden_maxloc, ref);
    }
    run.tden_maxval = element_at(den, run.tden_maxloc, ref);
    run.sign = flib::same_sign_d(run.tden_maxval, denmax_ref);

    sgn_body body{symbol, atoms.nat.all(), atoms.mass.all(), atoms.x.view(), {}, frc.view()};
    for (std::int32_t k = 1; k <= 3; ++k) {
        body.corrected_tdip[static_cast<std::size_t>(k) - 1] = tdip(k, 1) * run.sign;
    }
    std::ranges::for_each(inputs, &file_state::require_unchanged);
    flib::open_replace(result_unit, fsgn.padded());
    write_sgn_parameters(result_unit, run);
    write_sgn_body(result_unit, body);
    flib::commit_unit(result_unit);
}

}  // namespace numfreq
