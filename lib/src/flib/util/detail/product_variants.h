// The ways in which sums of products go on.
#pragma once

#include <span>

#include "flib/util/matrix.h"

#pragma GCC visibility push(hidden)
namespace flib {

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
