#include "numfreq/run_driver.h"

#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <vector>

#include "flib/excited/get_ci_density_nbasis_nbsuse.h"
#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/util/elements.h"
#include "flib/util/mod_timer.h"
#include "numfreq/get_sgn_param.h"
#include "numfreq/job_files.h"
#include "numfreq/sgn_file.h"

namespace numfreq {
namespace {

using flib::line_buffer;
using flib::matrix;
using flib::zeroed_array;

constexpr std::int32_t result_unit = 1;

/// An input file as it was at some moment. Each reader opens the file anew, and whoever writes it
/// may not have finished.
class file_state {
  public:
    explicit file_state(std::string_view name) : name_(flib::trim_right(name)) {
        known_ = stat(name_.c_str(), &status_) == 0;
    }

    /// Ends the run if the file is no longer what it was.
    void require_unchanged() const {
        const file_state now(name_);
        if (now.known_ == known_ && now.status_.st_dev == status_.st_dev &&
            now.status_.st_ino == status_.st_ino && now.status_.st_size == status_.st_size &&
            now.status_.st_mtim.tv_sec == status_.st_mtim.tv_sec &&
            now.status_.st_mtim.tv_nsec == status_.st_mtim.tv_nsec) {
            return;
        }
        throw flib::io_error(name_, 0, "was changed while it was being read");
    }

    /// Ends the run if so many atoms can not be in it. A file that no reader knows would not be
    /// asked otherwise, and memory and result would grow with a count that may be absurd.
    void require_room_for_atoms(std::int32_t natom) const {
        constexpr std::int32_t always_granted = 1000;
        constexpr std::int64_t shortest_row = 6;  // "0 0 0" and a newline
        if (!known_ || natom <= always_granted || natom <= status_.st_size / shortest_row) return;
        throw flib::io_error(name_, 0, "is too short to hold " + std::to_string(natom) + " atoms");
    }

  private:
    std::string name_;
    struct stat status_ {};
    bool known_ = false;
};

/// What the log says of the atoms, in its order.
struct geometry {
    explicit geometry(std::int32_t n)
        : natom(n),
          x(3, n, "the coordinates"),
          nat({n}, "the atomic numbers"),
          mass({n}, "the masses") {}

    void read(std::string_view flog) {
        std::int32_t info = 0;
        flib::qm_file_nat(flog, natom, nat.all(), info);
        flib::qm_file_coord(flog, natom, x.view(), info);
        flib::qm_file_mass(flog, natom, mass.all(), info);
    }

    std::int32_t natom;
    matrix<double> x;                // Bohr
    zeroed_array<std::int32_t> nat;  // atomic numbers
    zeroed_array<double> mass;       // u
};

/// Reads the atoms of an ONIOM job's high layer.
void read_high_layer(std::string_view flog, geometry& atoms) {
    std::int32_t natom = 0;
    std::int32_t nqmmm = 0;
    std::int32_t info = 0;
    flib::qm_file_natom_oniom_qm(flog, natom, nqmmm, info);
    zeroed_array<std::int32_t> idx({natom}, "the high-layer index");
    flib::qm_file_oniom_index(flog, natom, nqmmm, idx.all(), info);
    geometry whole(nqmmm);
    whole.read(flog);
    // Only now: what the readers have to say comes first.
    if (natom != atoms.natom) {
        throw flib::io_error(flib::trim_right(flog), 0,
                             "holds " + std::to_string(natom) + " high-layer atoms where " +
                                 std::to_string(atoms.natom) +
                                 " were expected: does the reference belong to another molecule?");
    }
    for (std::int32_t i = 1; i <= natom; ++i) {
        const auto to = static_cast<std::size_t>(i) - 1;
        flib::fail_unless_in_system(flog, idx.all()[to], nqmmm);
        const auto from = static_cast<std::size_t>(idx.all()[to]) - 1;
        for (std::int32_t k = 1; k <= 3; ++k) atoms.x(k, i) = whole.x(k, idx.all()[to]);
        atoms.nat.all()[to] = whole.nat.all()[from];
        atoms.mass.all()[to] = whole.mass.all()[from];
    }
}

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

    geometry atoms(natom);
    matrix<double> frc(3, natom, "the forces");
    matrix<double> moc(nbasis, nbasis, "the MO coefficients");
    matrix<double> den(nbasis, nbasis, "the transition density");
    zeroed_array<double> xpy({run.ma, run.mi, 2, run.mci}, "the excitation amplitudes");
    matrix<double> tdip(3, 1, "the transition dipole");

    bool ifoniom = false;
    std::int32_t info = 0;
    flib::qm_file_ifoniom(flog.padded(), ifoniom, info);
    if (ifoniom) {
        read_high_layer(flog.padded(), atoms);
    } else {
        atoms.read(flog.padded());
    }
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
