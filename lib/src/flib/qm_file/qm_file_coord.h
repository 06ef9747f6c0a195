// The Cartesian coordinates of a molecule.
#pragma once

#include <cstdint>
#include <string_view>

#include "flib/util/matrix.h"

namespace flib {

/// Reads the coordinates of `natom` atoms, in file order, from the file `fname` into the
/// 3 x `natom` matrix `x`, in Bohr. Tables in Angstrom are converted; those of ChemShell and Molpro
/// are stored as the file gives them. Which of several tables counts, the first or the last, is a
/// matter of each program's row.
///
/// `info` is 0 after a complete table, else -1 with `x` unchanged: a file of another kind, a
/// missing table. Throws stop_run if `natom` is below 1, or if the table is missing in a Gaussian
/// log (status 1), a ChemShell, Molpro or TURBOMOLE output (status 0); io_error if the file cannot
/// be opened, if the table is missing in an NWChem output, or if a table is too short.
void qm_file_coord(std::string_view fname, std::int32_t natom, matrix_view<double> x,
                   std::int32_t& info);

}  // namespace flib
