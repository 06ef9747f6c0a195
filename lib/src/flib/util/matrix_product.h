// The product of two matrices.
#pragma once

#include "flib/util/matrix.h"

namespace flib {

/// c = a b. Each element of `c` is one running sum, from zero, in ascending order of the index
/// summed over, without fused operations: the bits of the plain triple loop, whatever the machine.
/// `c` must not overlap `a` or `b`. Throws std::bad_alloc if some 7 MiB of working memory cannot
/// be had.
void multiply(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c);

/// c += a b: the running sums of `c` go on with the terms of `a` and `b`.
void multiply_add(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c);

}  // namespace flib
