#include "sgn/job/job.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "flib/excited/basis_functions.h"
#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/facts/file_facts.h"
#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/qm_file/qm_file_states.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/qm_file/type_tag.h"
#include "flib/text/fixed_text.h"
#include "flib/util/file.h"
#include "sgn/job/file_state.h"
#include "sgn/job/job_files.h"

namespace sgn {
namespace {

[[noreturn]] void fail(const std::string& file, const std::string& reason) {
    throw flib::io_error(file, 0, reason);
}

/// What `read` returns. The fixed messages of the readers do not name their file.
template <class Read>
auto reading(const std::string& file, Read read) {
    try {
        return read();
    } catch (const flib::stop_run& stop) {
        fail(file, stop.what());
    }
}

void require_kind(const std::string& file, std::string_view tag, const std::string& kind) {
    const flib::input_unit must_open(file);
    if (!(flib::type_tag_of(file) == tag)) fail(file, "is not " + kind);
}

/// The sizes that all jobs of a set share.
constexpr std::array<std::pair<const char*, std::int32_t job_counts::*>, 6> shared_sizes{{
    {"atoms", &job_counts::natom},
    {"basis functions", &job_counts::nbasis},
    {"active occupied orbitals", &job_counts::mi},
    {"active virtual orbitals", &job_counts::ma},
    {"frozen core orbitals", &job_counts::nfc},
    {"frozen virtual orbitals", &job_counts::nfv},
}};

void require_sizes_of(const job& reference, const job_files& files, const job_counts& counts) {
    const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = reference.counts;
    if (counts.natom == natom && counts.nbasis == nbasis && counts.nbsuse != nbsuse) {
        fail(files.checkpoint,
             "has " + std::to_string(counts.nbsuse) + " orbitals of " + std::to_string(nbasis) +
                 " basis functions, the reference has " + std::to_string(nbsuse) +
                 ": as many are needed in all jobs of a set. Run them with one threshold for "
                 "linear dependences at which all keep as many (Gaussian's IOp(3/59=N)), or with "
                 "a basis set without near dependences");
    }
    std::string differences;
    for (const auto& [what, size] : shared_sizes) {
        const std::int32_t expected = reference.counts.*size;
        if (counts.*size == expected) continue;
        if (!differences.empty()) differences += ", ";
        differences +=
            std::to_string(counts.*size) + " " + what + " instead of " + std::to_string(expected);
    }
    if (!differences.empty()) fail(files.checkpoint, "differs from the reference: " + differences);
}

void require_sense(const job_files& files, const job_counts& counts) {
    const auto text = [](std::int64_t n) { return std::to_string(n); };
    if (counts.nbasis == 0) fail(files.checkpoint, std::string(flib::no_orbitals));
    if (counts.nbsuse > counts.nbasis) {
        fail(files.checkpoint, "has " + text(counts.nbsuse) + " independent functions of " +
                                   text(counts.nbasis) + " basis functions");
    }
    const std::int64_t orbitals = std::int64_t{counts.nfc} + counts.mi + counts.ma + counts.nfv;
    if (std::min({counts.nfc, counts.nfv}) < 0 || std::min(counts.mi, counts.ma) < 1 ||
        orbitals != counts.nbsuse) {
        fail(files.log, "tells of " + text(counts.nfc) + " frozen core, " + text(counts.mi) +
                            " active occupied, " + text(counts.ma) + " active virtual and " +
                            text(counts.nfv) + " frozen virtual orbitals; the checkpoint has " +
                            text(counts.nbsuse));
    }
}

void require_amplitudes(const std::string& dump) {
    const std::int32_t record = flib::qm_file_dump_record(dump);
    if (record == flib::amplitude_record) return;
    fail(dump, "is a dump of record " + std::to_string(record) + "; the amplitudes are record " +
                   std::to_string(flib::amplitude_record));
}

/// How many states the job has, the first of its roots.
std::int32_t count_states(const job_files& files, const job_counts& counts, std::size_t printed,
                          const std::optional<flib::dump_layout>& layout) {
    const auto states = static_cast<std::int32_t>(printed);
    if (states == 0) fail(files.log, "has no transition dipoles of excited states");
    if (!layout) {
        if (counts.mci >= 1) return std::min(states, counts.mci);
        fail(files.log,
             "tells of no roots to seek, without which it is not known where the "
             "amplitudes begin in " +
                 flib::printable(files.dump));
    }
    if (states <= layout->roots) return states;
    fail(files.dump, "holds " + std::to_string(layout->roots) + " roots, the log has " +
                         std::to_string(states) + " states");
}

void require_atoms_of(const job& reference, const job& now) {
    const auto expected = reference.atoms.nat.all();
    const auto found = now.atoms.nat.all();
    const auto at = std::ranges::mismatch(expected, found);
    if (at.in1 == expected.end()) return;
    fail(now.files.log, "atom " + std::to_string(at.in1 - expected.begin() + 1) +
                            " is of atomic number " + std::to_string(*at.in2) + " instead of " +
                            std::to_string(*at.in1));
}

void require_finite(const std::string& file, const char* what, std::span<const double> values) {
    const auto is_finite = [](double value) { return std::isfinite(value); };
    if (std::ranges::all_of(values, is_finite)) return;
    fail(file, std::string(what) + " are not all finite numbers");
}

void require_numbers(const job& now) {
    require_finite(now.files.checkpoint, "the MO coefficients", now.moc.view().all());
    require_finite(now.files.dump, "the excitation energies", now.energy);
    require_finite(now.files.log, "the transition dipoles", now.tdip.view().all());
    for (std::int32_t root = 1; root <= now.states; ++root) {
        const std::span<const double> amplitudes = now.amplitudes(root);
        const std::string of_root = "the amplitudes of root " + std::to_string(root);
        require_finite(now.files.dump, of_root.c_str(), amplitudes);
        if (std::ranges::all_of(amplitudes, [](double value) { return value == 0; })) {
            fail(now.files.dump, of_root + " are all zero");
        }
    }
}

/// States can be followed without forces; only result files need them.
void read_forces(job& now) {
    try {
        std::int32_t info = 0;
        flib::qm_file_force_tdip(now.files.log, now.counts.natom, 0, now.force.view(),
                                 {nullptr, 3, 0}, info);
    } catch (const flib::stop_run& stop) {
        now.no_forces = stop.what();
    }
}

void read_energies(job& now, const std::optional<flib::dump_layout>& layout,
                   const std::vector<flib::printed_state>& printed) {
    now.energy.resize(static_cast<std::size_t>(now.states));
    if (layout && layout->has_rest) {
        std::int32_t info = 0;
        flib::qm_file_ci_energy(now.files.dump, now.states, now.energy, info);
        return;
    }
    for (std::size_t i = 0; i < now.energy.size(); ++i) {
        if (!printed[i].energy) {
            fail(now.files.dump, "does not tell where it holds the excitation energies, and " +
                                     flib::printable(now.files.log) + " has none of state " +
                                     std::to_string(i + 1));
        }
        now.energy[i] = *printed[i].energy;
    }
}

/// Reads the amplitudes of the states.
void read_amplitudes(job& now, const std::optional<flib::dump_layout>& layout) {
    const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = now.counts;
    // Where the layout is not told, the number of roots decides where they begin.
    const std::int32_t roots = layout ? now.states : mci;
    if (roots != now.states) now.xpy = {{ma, mi, 2, roots}, "the excitation amplitudes"};
    std::int32_t info = 0;
    flib::qm_file_ci_xpy(now.files.dump, mi, ma, roots, now.xpy.all(), info);
}

/// Half a unit of the last decimal that a log prints, and a little for the rounding of the other.
constexpr double half_of_dipole = 0.5e-4 + 1e-8;

bool rounds_to(std::span<const double> full, std::span<const double> printed, double half) {
    return std::ranges::equal(full, printed, [half](double a, double b) {
        return std::abs(a - b) <= half;  // false for what is not a number
    });
}

/// Why the moments of the checkpoint are not those of the log; empty if they are.
std::string other_than_printed(const job& now, const flib::state_moments& moments) {
    if (moments.states < now.states) {
        return "has the moments of " + std::to_string(moments.states) + " states, the log of " +
               std::to_string(now.states);
    }
    const std::span<const double> dipoles = moments.of_states.dipole;
    for (std::int32_t state = 1; state <= now.states; ++state) {
        const std::size_t from = 3 * (static_cast<std::size_t>(state) - 1);
        if (rounds_to(dipoles.subspan(from, 3), now.tdip.view().column(state), half_of_dipole)) {
            continue;
        }
        return "has a transition dipole of state " + std::to_string(state) +
               " that does not round to that of " + flib::printable(now.files.log) +
               ": they are not of one run";
    }
    return {};
}

/// The digits of the checkpoint are welcome, and nothing hangs on them.
void read_full_digits(job& now) {
    try {
        now.moments = flib::qm_file_state_moments(now.files.checkpoint);
        if (now.moments) now.forces_of = now.moments->target;
        const std::string reason = now.moments ? other_than_printed(now, *now.moments)
                                               : "has no moments of excited states";
        if (!reason.empty()) fail(now.files.checkpoint, reason);
    } catch (const flib::io_error& error) {
        now.no_moments = error.what();
        now.moments.reset();
    } catch (const flib::stop_run& stop) {
        now.no_moments = flib::printable(now.files.checkpoint) + ": " + stop.what();
    }
}

std::string number(double value) {
    return flib::decimal(value, 4);
}

/// Makes sure that they are amplitudes, and sees which spin each state has.
void judge_amplitudes(job& now, const std::optional<flib::dump_layout>& layout) {
    const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = now.counts;
    flib::zeroed_array<double> xmy;
    if (layout && layout->has_rest) {
        xmy = {{ma, mi, 2, now.states}, "X-Y"};
        std::int32_t info = 0;
        flib::qm_file_ci_xmy(now.files.dump, mi, ma, now.states, xmy.all(), info);
    }
    const std::size_t block = 2 * now.amplitudes(1).size();
    for (std::int32_t root = 1; root <= now.states; ++root) {
        const std::size_t from = block * (static_cast<std::size_t>(root) - 1);
        const auto minus = xmy.size() == 0 ? std::span<double>{} : xmy.all().subspan(from, block);
        flib::root_norms norms = flib::norms_of(now.xpy.all().subspan(from, block), minus);
        // Nobody tells what a second component holds then.
        if (!layout) norms.beta = norms.alpha;
        const std::string of_root = "the amplitudes of root " + std::to_string(root);
        if (!norms.are_of_amplitudes()) {
            const char* const product = norms.has_minus ? "(X+Y)(X-Y)" : "(X+Y)(X+Y)";
            fail(now.files.dump, of_root + " are not normalised as amplitudes are: " + product +
                                     " sums to " + number(norms.alpha) + " (alpha) and " +
                                     number(norms.beta) + " (beta) instead of " +
                                     (norms.has_minus ? "0.5" : "0.1 to 5"));
        }
        if (!layout) continue;
        if (norms.spin == flib::root_spin::neither) {
            fail(now.files.dump, of_root +
                                     " are neither a singlet's nor a triplet's: those of beta spin "
                                     "neither equal those of alpha spin nor their negatives");
        }
        now.spin.push_back(norms.spin);
    }
}

}  // namespace

job_files files_of(const std::string& checkpoint) {
    const std::string name = flib::name_main(checkpoint);
    if (flib::trim_right(name).empty()) {
        fail(checkpoint,
             "cannot be a job: without directory and extension nothing is left as its name");
    }
    return {name, checkpoint, name + std::string(suffix::log),
            name + std::string(suffix::amplitudes)};
}

job_files files_beside(const std::string& checkpoint) {
    job_files files = files_of(checkpoint);
    const std::string directory = checkpoint.substr(0, checkpoint.rfind('/') + 1);
    files.log.insert(0, directory);
    files.dump.insert(0, directory);
    return files;
}

job::job(job_files its_files, const job_counts& sizes, std::int32_t its_states)
    : files(std::move(its_files)),
      counts(sizes),
      states(its_states),
      atoms(sizes.natom),
      force(3, sizes.natom, "the forces"),
      moc(sizes.nbasis, sizes.nbsuse, "the MO coefficients"),
      tdip(3, its_states, "the transition dipoles"),
      xpy({sizes.ma, sizes.mi, 2, its_states}, "the excitation amplitudes") {}

std::span<const double> job::amplitudes(std::int32_t root) const {
    const auto block = static_cast<std::size_t>(counts.ma) * static_cast<std::size_t>(counts.mi);
    return xpy.all().subspan(2 * block * (static_cast<std::size_t>(root) - 1), block);
}

std::optional<flib::root_spin> job::spin_of(std::int32_t root) const {
    if (spin.empty()) return {};
    return spin[static_cast<std::size_t>(root) - 1];
}

job read_job(const job_files& files, const job* reference) {
    const std::array states{file_state(files.log), file_state(files.checkpoint),
                            file_state(files.dump)};
    require_kind(files.checkpoint, flib::tag::gaussian_fchk, "a formatted checkpoint");
    require_kind(files.log, flib::tag::gaussian_log, "a Gaussian log");
    require_kind(files.dump, flib::tag::gaussian_rwf, "a dump of a Gaussian read-write file");
    require_amplitudes(files.dump);
    job_counts counts =
        reading(files.log, [&] { return count_orbitals(files.log, files.checkpoint); });
    if (reference != nullptr) require_sizes_of(*reference, files, counts);
    require_sense(files, counts);
    states[0].require_room_for_atoms(counts.natom);

    const auto printed = reading(files.log, [&] { return flib::qm_file_states(files.log); });
    const auto layout = reading(files.dump, [&] { return flib::qm_file_dump_layout(files.dump); });
    const std::int32_t number_of_states = count_states(files, counts, printed.size(), layout);
    if (layout && counts.mci < 1) counts.mci = layout->roots;

    job now(files, counts, number_of_states);
    std::int32_t info = 0;
    reading(files.log, [&] { read_job_atoms(files.log, now.atoms); });
    for (std::int32_t state = 1; state <= now.states; ++state) {
        std::ranges::copy(printed[static_cast<std::size_t>(state) - 1].dipole,
                          now.tdip.view().column(state).begin());
    }
    read_forces(now);
    reading(files.checkpoint, [&] {
        flib::qm_file_mo_coeff_nbasis_nbsuse(files.checkpoint, counts.nbasis, counts.nbsuse,
                                             now.moc.view(), info);
    });
    reading(files.dump, [&] {
        read_amplitudes(now, layout);
        read_energies(now, layout, printed);
    });
    read_full_digits(now);
    std::ranges::for_each(states, &file_state::require_unchanged);
    if (reference != nullptr) require_atoms_of(*reference, now);
    require_numbers(now);
    reading(files.dump, [&] { judge_amplitudes(now, layout); });
    return now;
}

job read_job(const std::string& checkpoint, const job* reference) {
    return read_job(files_of(checkpoint), reference);
}

}  // namespace sgn
