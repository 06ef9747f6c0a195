#include "sgn_displace/decimal.h"

#include <gtest/gtest.h>

namespace {

using sgn_displace::decimal;
using sgn_displace::decimal_error;

std::string read(const char* text) {
    decimal value{-77, 7};
    switch (parse_decimal(text, value)) {
        case decimal_error::none:
            return text_of(value);
        case decimal_error::too_long:
            EXPECT_EQ(value, (decimal{-77, 7}));
            return "too long";
        case decimal_error::not_a_number:
            break;
    }
    EXPECT_EQ(value, (decimal{-77, 7}));
    return "no number";
}

TEST(Decimal, KeepsWhatIsPrinted) {
    const struct {
        const char* text;
        const char* same;
    } cases[] = {
        {"0", "0"},
        {"-12", "-12"},
        {"+0.50", "0.50"},
        {".5", "0.5"},
        {"7.", "7"},
        {"-0.000", "0.000"},
        {"0.000000000000000001", "0.000000000000000001"},
        {"0.0000000000000000001", "too long"},
        {"999999999999999999", "999999999999999999"},
        {"1000000000000000000", "too long"},
        {"-1.25D-02", "-0.0125"},
        {"1.25e1", "12.5"},
        {"125E+3", "125000"},
        {"1-2", "0.01"},
        {"1e18", "too long"},
        {"0e18", "0"},
        {"0e19", "too long"},
        {"1e-18", "0.000000000000000001"},
        {"1e-19", "too long"},
        {"1.5e-18", "too long"},
        {"1e99999999999", "too long"},
        {"1.0Q0", "no number"},
        {"nan", "no number"},
        {"inf", "no number"},
        {"R1", "no number"},
        {"", "no number"},
        {"1.2.3", "no number"},
        {"-", "no number"},
    };
    for (const auto& [text, same] : cases) EXPECT_EQ(read(text), same) << text;
}

TEST(Decimal, AddsExactly) {
    const struct {
        decimal a, b;
        const char* sum;  // "-": none
    } cases[] = {
        {{118000, 6}, {1, 2}, "0.128000"},
        {{5, 1}, {-1, 2}, "0.49"},
        {{-5, 3}, {1, 2}, "0.005"},
        {{5, 3}, {-1, 2}, "-0.005"},
        {{1, 2}, {-1, 2}, "0.00"},
        {{999'999'999'999'999'999, 18}, {1, 18}, "1.000000000000000000"},
        {{1, 0}, {1, 17}, "1.00000000000000001"},
        {{1, 0}, {1, 18}, "-"},
        {{1, 18}, {-1, 0}, "-"},
        {{-1, 18}, {-1, 0}, "-"},
    };
    for (const auto& [a, b, sum] : cases) {
        decimal result;
        EXPECT_EQ(add(a, b, result) ? text_of(result) : "-", sum) << text_of(a);
    }
    EXPECT_EQ(sgn_displace::negative({12, 3}), (decimal{-12, 3}));
}

}  // namespace
