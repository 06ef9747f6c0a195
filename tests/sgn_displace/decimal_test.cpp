#include "sgn/inputs/decimal.h"

#include <gtest/gtest.h>

#include "support/support.h"

namespace {

using sgn::inputs::decimal;
using sgn::inputs::decimal_error;

/// The sum of two numbers, or what is wrong with the first.
std::string sum_of(const std::string& number, const std::string& another) {
    constexpr decimal untouched{-77, 7};
    decimal a = untouched, b, sum;
    const decimal_error error = parse_decimal(number, a);
    if (error != decimal_error::none) {
        EXPECT_EQ(a, untouched) << number;
        return error == decimal_error::too_long ? "too long" : "no number";
    }
    EXPECT_EQ(parse_decimal(another, b), decimal_error::none);
    EXPECT_EQ(negative(a), (decimal{-a.digits, a.decimals}));
    return add(a, b, sum) ? text_of(sum) : "no room";
}

TEST(Decimal, IsKeptAsPrintedAndAddedExactly) {
    const auto rows = support::table_of("sgn_displace/decimals.txt");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        EXPECT_EQ(sum_of(rows[i][0], rows[i][1]), rows[i][2]) << rows[i][0] << " + " << rows[i][1];
    }
}

}  // namespace
