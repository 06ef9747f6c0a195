#include "flib/excited/matrix_product.h"

#include <algorithm>

namespace flib {

void multiply(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c) {
    for (std::int32_t j = 1; j <= c.columns(); ++j) {
        const std::span<double> sums = c.column(j);
        std::ranges::fill(sums, 0.0);
        for (std::int32_t k = 1; k <= a.columns(); ++k) {
            const std::span<const double> factors = a.column(k);
            const double factor = b(k, j);
            for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += factors[i] * factor;
        }
    }
}

}  // namespace flib
