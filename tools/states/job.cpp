#include "states/job.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/qm_file/type_tag.h"
#include "flib/text/fixed_text.h"
#include "flib/util/file.h"
#include "numfreq/file_state.h"
#include "numfreq/job_files.h"

namespace states {
namespace {

using numfreq::job_counts;

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
    if (counts.mci < 1) fail(files.log, "tells of no roots");
    if (counts.nbsuse != counts.nbasis) {
        fail(files.checkpoint, "has " + text(counts.nbsuse) + " independent functions of " +
                                   text(counts.nbasis) +
                                   " basis functions; all must be independent");
    }
    const std::int64_t orbitals = std::int64_t{counts.nfc} + counts.mi + counts.ma + counts.nfv;
    if (std::min({counts.nfc, counts.nfv}) < 0 || std::min(counts.mi, counts.ma) < 1 ||
        orbitals != counts.nbasis) {
        fail(files.log, "tells of " + text(counts.nfc) + " frozen core, " + text(counts.mi) +
                            " active occupied, " + text(counts.ma) + " active virtual and " +
                            text(counts.nfv) + " frozen virtual orbitals; the checkpoint has " +
                            text(counts.nbasis));
    }
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
    for (std::int32_t root = 1; root <= now.counts.mci; ++root) {
        const std::span<const double> amplitudes = now.amplitudes(root);
        const std::string of_root = "the amplitudes of root " + std::to_string(root);
        require_finite(now.files.dump, of_root.c_str(), amplitudes);
        if (std::ranges::all_of(amplitudes, [](double value) { return value == 0; })) {
            fail(now.files.dump, of_root + " are all zero");
        }
    }
}

}  // namespace

job_files files_of(const std::string& checkpoint) {
    const std::string name = flib::name_main(checkpoint);
    if (flib::trim_right(name).empty()) {
        fail(checkpoint,
             "cannot be a job: without directory and extension nothing is left as its name");
    }
    return {name, checkpoint, name + std::string(numfreq::suffix::log),
            name + std::string(numfreq::suffix::amplitudes)};
}

job::job(job_files its_files, const job_counts& sizes)
    : files(std::move(its_files)),
      counts(sizes),
      atoms(sizes.natom),
      force(3, sizes.natom, "the forces"),
      moc(sizes.nbasis, sizes.nbasis, "the MO coefficients"),
      tdip(3, sizes.mci, "the transition dipoles"),
      xpy({sizes.ma, sizes.mi, 2, sizes.mci}, "the excitation amplitudes") {}

std::span<const double> job::amplitudes(std::int32_t root) const {
    const auto block = static_cast<std::size_t>(counts.ma) * static_cast<std::size_t>(counts.mi);
    return xpy.all().subspan(2 * block * (static_cast<std::size_t>(root) - 1), block);
}

job read_job(const std::string& checkpoint, const job* reference) {
    const job_files files = files_of(checkpoint);
    const std::array states{numfreq::file_state(files.log), numfreq::file_state(files.checkpoint),
                            numfreq::file_state(files.dump)};
    require_kind(files.checkpoint, flib::tag::gaussian_fchk, "a formatted checkpoint");
    require_kind(files.log, flib::tag::gaussian_log, "a Gaussian log");
    require_kind(files.dump, flib::tag::gaussian_rwf, "a dump of a Gaussian read-write file");
    const job_counts counts =
        reading(files.log, [&] { return numfreq::count_job(files.log, files.checkpoint); });
    if (reference != nullptr) require_sizes_of(*reference, files, counts);
    require_sense(files, counts);
    states[0].require_room_for_atoms(counts.natom);

    job now(files, counts);
    std::int32_t info = 0;
    reading(files.log, [&] {
        numfreq::read_job_atoms(files.log, now.atoms);
        flib::qm_file_force_tdip(files.log, counts.natom, counts.mci, now.force.view(),
                                 now.tdip.view(), info);
    });
    reading(files.checkpoint, [&] {
        flib::qm_file_mo_coeff_nbasis_nbsuse(files.checkpoint, counts.nbasis, counts.nbsuse,
                                             now.moc.view(), info);
    });
    reading(files.dump, [&] {
        flib::qm_file_ci_xpy(files.dump, counts.mi, counts.ma, counts.mci, now.xpy.all(), info);
        now.energy.resize(static_cast<std::size_t>(counts.mci));
        flib::qm_file_ci_energy(files.dump, counts.mci, now.energy, info);
    });
    std::ranges::for_each(states, &numfreq::file_state::require_unchanged);
    if (reference != nullptr) require_atoms_of(*reference, now);
    require_numbers(now);
    return now;
}

}  // namespace states
