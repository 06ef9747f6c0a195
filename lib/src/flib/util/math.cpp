#include "flib/util/math.h"

#include <cmath>

namespace flib {

void mat_abs_maxval_d(std::int32_t n, matrix_view<const double> a, element_location& loc) {
    // One pass in storage order; among equals the smaller (row, column) is kept, which is what a
    // scan by rows would meet first.
    loc = {0, 0};
    double largest = 0;
    for (std::int32_t j = 1; j <= n; ++j) {
        const std::span<const double> column = a.column(j);
        for (std::int32_t i = 1; i <= n; ++i) {
            const double magnitude = std::abs(column[static_cast<std::size_t>(i - 1)]);
            if (magnitude > largest || (magnitude == largest && i < loc[0])) {
                largest = magnitude;
                loc = {i, j};
            }
        }
    }
}

std::int32_t same_sign_d(double a, double b) {
    const double p = a * b;
    if (p > 0) return 1;
    if (p < 0) return -1;
    return 0;
}

}  // namespace flib
