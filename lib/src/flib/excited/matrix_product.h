// The product of two matrices.
#pragma once

#include "flib/util/matrix.h"

namespace flib {

/// c = a b. Each element of `c` is one running sum, from zero, in ascending order of the index
/// summed over, without fused operations: the bits of the plain triple loop, whatever the machine.
void multiply(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c);

}  // namespace flib
