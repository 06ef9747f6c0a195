// Numbers as they are printed, with which + and - are exact.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sgn::inputs {

/// The number digits / 10^decimals.
struct decimal {
    std::int64_t digits = 0;
    int decimals = 0;

    friend bool operator==(const decimal&, const decimal&) = default;
};

enum class decimal_error { none, not_a_number, too_long };

/// Reads the whole of `text`: an optional sign, digits with at most one point, optionally an
/// exponent (E or D). `value` is left alone unless the result is `none`; `too_long` stands for a
/// number that takes more than 18 digits before and after the point.
decimal_error parse_decimal(std::string_view text, decimal& value);

/// `a` + `b` with the decimals of the longer one, in `sum`; false if that takes too many digits.
[[nodiscard]] bool add(decimal a, decimal b, decimal& sum);

constexpr decimal negative(decimal value) {
    return {-value.digits, value.decimals};
}

/// In fixed-point notation with all its decimals; zero has no sign.
std::string text_of(decimal value);

}  // namespace sgn::inputs
