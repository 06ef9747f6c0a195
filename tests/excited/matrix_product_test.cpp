#include "flib/excited/matrix_product.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace flib {
namespace {

/// Rows and columns of the result, and terms of each sum.
struct product_shape {
    std::int32_t rows;
    std::int32_t columns;
    std::int32_t terms;
};

class MatrixProduct : public testing::TestWithParam<product_shape> {
  protected:
    std::vector<double> random_elements(std::int64_t count) {
        // Magnitudes far apart, so that another order of summation shows in the last bits.
        std::normal_distribution<double> normal;
        std::uniform_int_distribution<int> exponent(-30, 30);
        std::vector<double> elements(static_cast<std::size_t>(count));
        for (double& x : elements) x = std::ldexp(normal(random_), exponent(random_));
        return elements;
    }

    std::mt19937_64 random_{20};
};

TEST_P(MatrixProduct, HasTheBitsOfTheTripleLoop) {
    const auto& [rows, columns, terms] = GetParam();
    std::vector<double> a = random_elements(std::int64_t{rows} * terms);
    std::vector<double> b = random_elements(std::int64_t{terms} * columns);
    if (a.size() > 2) a[1] = -0.0;
    if (a.size() > 20) a[20] = std::numeric_limits<double>::infinity();
    const matrix_view<const double> left(a.data(), rows, terms);
    const matrix_view<const double> right(b.data(), terms, columns);
    for (const product_variant& variant : product_variants()) {
        std::vector<double> c(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns),
                              7.0);
        const matrix_view<double> product(c.data(), rows, columns);
        variant.multiply(left, right, product);
        std::int64_t different = 0;
        for (std::int32_t j = 1; j <= columns; ++j) {
            for (std::int32_t i = 1; i <= rows; ++i) {
                double sum = 0.0;
                for (std::int32_t k = 1; k <= terms; ++k) sum += left(i, k) * right(k, j);
                const bool both_nan = std::isnan(sum) && std::isnan(product(i, j));
                if (!both_nan && std::bit_cast<std::uint64_t>(sum) !=
                                     std::bit_cast<std::uint64_t>(product(i, j))) {
                    ++different;
                }
            }
        }
        EXPECT_EQ(different, 0) << variant.name;
    }
}

// Around the edges of the tiles and of the blocks: 240 rows, 3072 columns, 256 terms.
INSTANTIATE_TEST_SUITE_P(Shapes, MatrixProduct,
                         testing::Values(product_shape{1, 1, 1}, product_shape{3, 5, 0},
                                         product_shape{0, 4, 3}, product_shape{4, 0, 3},
                                         product_shape{7, 9, 2}, product_shape{24, 8, 16},
                                         product_shape{25, 7, 255}, product_shape{23, 17, 256},
                                         product_shape{240, 48, 257}, product_shape{241, 13, 513},
                                         product_shape{5, 3073, 3}));

}  // namespace
}  // namespace flib
