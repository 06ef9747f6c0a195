// Forces and transition dipoles of an excited-state gradient run.
#pragma once

#include <cstdint>
#include <string_view>

#include "flib/util/matrix.h"

namespace flib {

/// Reads from the Gaussian log `fname` the forces on `natom` atoms into the 3 x `natom` matrix
/// `force` (Hartree/Bohr) and the transition electric dipole moments between the ground state and
/// the first `ns` excited states into the 3 x `ns` matrix `tdip` (atomic units), both of the last
/// gradient step and as printed. The dipole table must stand above the force table. Of an ONIOM job
/// the integrated forces on the high-layer atoms are taken.
///
/// `force` is zeroed first; `info` is always -1. For a file of another kind, or one that cannot
/// be opened, `tdip` keeps its values. Throws stop_run (status 1) if a table is missing, or if the
/// number of high-layer atoms is not `natom`; io_error if a table is too short.
void qm_file_force_tdip(std::string_view fname, std::int32_t natom, std::int32_t ns,
                        matrix_view<double> force, matrix_view<double> tdip, std::int32_t& info);

}  // namespace flib
