// The product of two matrices.
#pragma once

#include <span>

#include "flib/util/matrix.h"

#pragma GCC visibility push(hidden)
namespace flib {

/// c = a b. Each element of `c` is one running sum, from zero, in ascending order of the index
/// summed over, without fused operations: the bits of the plain triple loop, whatever the machine.
/// `c` must not overlap `a` or `b`. Throws std::bad_alloc if some 7 MiB of working memory cannot
/// be had.
void multiply(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c);

/// c += a b: the running sums of `c` go on with the terms of `a` and `b`.
void multiply_add(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c);

/// One way to go on with the sums. All give the same bits.
struct product_variant {
    const char* name;
    void (*multiply_add)(matrix_view<const double> a, matrix_view<const double> b,
                         matrix_view<double> c);
};

/// Those that this processor can run; multiply_add() takes the one that is fastest on it.
std::span<const product_variant> product_variants();

}  // namespace flib
#pragma GCC visibility pop
