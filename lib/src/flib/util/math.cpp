#include "flib/util/math.h"

#include "flib/util/extremum.h"

namespace flib {

void mat_abs_maxval_d(std::int32_t n, matrix_view<const double> a, element_location& loc) {
    // One column at a time, since the matrix may have more rows than `n`.
    extremum largest;
    for (std::int32_t j = 1; j <= n; ++j) largest.look_at({a.column(j).data(), n, 1}, j);
    loc = largest.at;
}

std::int32_t same_sign_d(double a, double b) {
    const double p = a * b;
    if (p > 0) return 1;
    if (p < 0) return -1;
    return 0;
}

}  // namespace flib
