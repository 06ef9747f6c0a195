#include "sgn/job/job_atoms.h"

#include <cstddef>
#include <string>

#include "flib/io/stop_run.h"
#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/text/fixed_text.h"

namespace sgn {
namespace {

/// Reads all atoms of the log.
void read_all(std::string_view flog, job_atoms& atoms) {
    std::int32_t info = 0;
    flib::qm_file_nat(flog, atoms.natom, atoms.nat.all(), info);
    flib::qm_file_coord(flog, atoms.natom, atoms.x.view(), info);
    flib::qm_file_mass(flog, atoms.natom, atoms.mass.all(), info);
}

/// Reads the atoms of an ONIOM job's high layer.
void read_high_layer(std::string_view flog, job_atoms& atoms) {
    std::int32_t natom = 0;
    std::int32_t nqmmm = 0;
    std::int32_t info = 0;
    flib::qm_file_natom_oniom_qm(flog, natom, nqmmm, info);
    flib::zeroed_array<std::int32_t> idx({natom}, "the high-layer index");
    flib::qm_file_oniom_index(flog, natom, nqmmm, idx.all(), info);
    job_atoms whole(nqmmm);
    read_all(flog, whole);
    // Only now: what the readers have to say comes first.
    if (natom != atoms.natom) {
        throw flib::io_error(flib::trim_right(flog), 0,
                             "holds " + std::to_string(natom) + " high-layer atoms where " +
                                 std::to_string(atoms.natom) +
                                 " were expected: does the reference belong to another molecule?");
    }
    for (std::int32_t i = 1; i <= natom; ++i) {
        const auto to = static_cast<std::size_t>(i) - 1;
        flib::require_in_system(flog, idx.all()[to], nqmmm);
        const auto from = static_cast<std::size_t>(idx.all()[to]) - 1;
        for (std::int32_t k = 1; k <= 3; ++k) atoms.x(k, i) = whole.x(k, idx.all()[to]);
        atoms.nat.all()[to] = whole.nat.all()[from];
        atoms.mass.all()[to] = whole.mass.all()[from];
    }
}

}  // namespace

job_atoms::job_atoms(std::int32_t n)
    : natom(n),
      x(3, n, "the coordinates"),
      nat({n}, "the atomic numbers"),
      mass({n}, "the masses") {}

void read_job_atoms(std::string_view flog, job_atoms& atoms) {
    bool ifoniom = false;
    std::int32_t info = 0;
    flib::qm_file_ifoniom(flog, ifoniom, info);
    if (ifoniom) {
        read_high_layer(flog, atoms);
    } else {
        read_all(flog, atoms);
    }
}

}  // namespace sgn
