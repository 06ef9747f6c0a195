// The element of largest magnitude of a product, without the product.
#pragma once

#include "flib/util/extremum.h"
#include "flib/util/matrix.h"

#pragma GCC visibility push(hidden)
namespace flib {

/// Whether most elements may be ruled out by their approximate values, where the processor is fit
/// for it. The result is the same.
enum class screening { never, where_possible };

/// The element of `a` x `b` that mat_abs_maxval_d() would choose, with the bits that multiply()
/// gives it. The working memory is that of multiply() and a block of columns of some 4 MiB, or,
/// with screening, mostly a quarter of that of `a`. Throws run_error or std::bad_alloc if there is
/// not enough.
extremum largest_of_product(matrix_view<const double> a, matrix_view<const double> b,
                            screening use = screening::where_possible);

}  // namespace flib
#pragma GCC visibility pop
