#include "flib/io/fixed_field.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

namespace flib {
namespace {

TEST(Fields, RightAlignedOrAsterisks) {
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(text_field("Cl", 4) + text_field("Clx", 2), "  Cl**");
    EXPECT_EQ(integer_field(-17, 5) + integer_field(-1234, 4), "  -17****");
    EXPECT_EQ(fixed_field(-0.0, 8, 3) + fixed_field(-1e-9, 6, 3), "  -0.000-0.000");
    EXPECT_EQ(fixed_field(9999.9996, 8, 3) + fixed_field(0.125, 5, 2), "******** 0.12");
    EXPECT_EQ(fixed_field(std::nan(""), 6, 2) + fixed_field(-inf, 6, 2), "   nan  -inf");
    EXPECT_EQ(scientific_field(inf, 8, 2) + scientific_field(-0.0, 12, 4), "     INF -0.0000E+00");
}

TEST(Fields, AsPrintfWritesThem) {
    std::mt19937_64 random(20);
    for (int i = 0; i < 100000; ++i) {
        // Half of them any bits at all, half of the sizes that are printed.
        const std::uint64_t bits = random();
        const double value = i % 2 == 0 ? std::bit_cast<double>(bits)
                                        : static_cast<double>(static_cast<std::int64_t>(bits)) *
                                              std::pow(10.0, -static_cast<int>(bits % 25));
        char fixed[400];
        char scientific[40];
        const bool fits = std::snprintf(fixed, sizeof fixed, "%15.8f", value) == 15;
        std::snprintf(scientific, sizeof scientific, "%20.10E", value);
        ASSERT_EQ(fixed_field(value, 15, 8), fits ? fixed : "***************");
        ASSERT_EQ(scientific_field(value, 20, 10), scientific);
    }
}

}  // namespace
}  // namespace flib
