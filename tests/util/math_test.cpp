#include "flib/util/math.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace flib {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct extremum_case {
    std::int32_t n;
    std::vector<double> rows;  // as written on paper
    element_location expected;
};

class Extremum : public testing::TestWithParam<extremum_case> {};

TEST_P(Extremum, IsTheFirstOfARowByRowScan) {
    const auto& [n, rows, expected] = GetParam();
    matrix<double> a(n, n, "a");
    for (std::int32_t i = 1; i <= n; ++i) {
        for (std::int32_t j = 1; j <= n; ++j) {
            a(i, j) = rows[static_cast<std::size_t>((i - 1) * n + j - 1)];
        }
    }
    element_location loc{7, 7};
    mat_abs_maxval_d(n, a.view(), loc);
    EXPECT_EQ(loc, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Extremum,
    testing::Values(extremum_case{2, {1, -3, 3, 2}, {1, 2}},
                    extremum_case{2, {1, 2, 3, -3}, {2, 1}},
                    extremum_case{3, {0, 0, 5, 0, -5, 0, 5, 0, 0}, {1, 3}},
                    extremum_case{2, {0, -0.0, nan, 0}, {0, 0}},
                    extremum_case{2, {nan, 1, nan, 1e-300}, {1, 2}},
                    extremum_case{1, {-5}, {1, 1}}, extremum_case{0, {}, {0, 0}}));

TEST(SameSign, LooksAtTheProduct) {
    EXPECT_EQ(same_sign_d(2, -0.5), -1);
    EXPECT_EQ(same_sign_d(-1, -1), 1);
    EXPECT_EQ(same_sign_d(0, 7), 0);
    EXPECT_EQ(same_sign_d(nan, 1), 0);
    EXPECT_EQ(same_sign_d(-1e-200, -1e-200), 0);  // the product underflows
    EXPECT_EQ(same_sign_d(-1e200, 1e200), -1);    // and overflows
}

}  // namespace
}  // namespace flib
