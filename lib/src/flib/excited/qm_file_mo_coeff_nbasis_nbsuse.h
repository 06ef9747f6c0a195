// The molecular-orbital coefficients.
#pragma once

#include <cstdint>
#include <string_view>

#include "flib/util/matrix.h"

namespace flib {

/// Reads the alpha MO coefficients of the Gaussian formatted checkpoint `fname` into the matrix
/// `mo` of `nbsuse` rows and `nbasis` columns, in the order of the file. With `nbsuse` equal to
/// `nbasis` the row is the basis function and the column the orbital; with a smaller `nbsuse` the
/// columns do not line up with orbitals.
///
/// Every element of `mo` is set to 0 before anything is read. `info` becomes 0. Throws stop_run if
/// `nbasis` is below 1 (status 0) or the file is of another kind (status 1); io_error if the file
/// cannot be opened or holds too few coefficients, or if `mo` has fewer than `nbsuse` x `nbasis`
/// elements.
void qm_file_mo_coeff_nbasis_nbsuse(std::string_view fname, std::int32_t nbasis,
                                    std::int32_t nbsuse, matrix_view<double> mo,
                                    std::int32_t& info);

}  // namespace flib
