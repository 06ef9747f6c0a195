// The extremum of a matrix, and the comparison of signs.
#pragma once

#include <array>
#include <cstdint>

#include "flib/util/matrix.h"

namespace flib {

/// Row and column of a matrix element, 1-based; (0, 0) for none.
using element_location = std::array<std::int32_t, 2>;

/// The element of largest magnitude of the `n` x `n` matrix `a`. Of equal magnitudes the one in the
/// smallest row wins, and within it the one in the smallest column. Elements that are 0 or NaN do
/// not count: without any other, `loc` is (0, 0).
void mat_abs_maxval_d(std::int32_t n, matrix_view<const double> a, element_location& loc);

/// 1 if the product `a` x `b` is above zero, -1 if it is below, else 0: for a zero, a NaN, and a
/// product too small to be represented.
std::int32_t same_sign_d(double a, double b);

}  // namespace flib
