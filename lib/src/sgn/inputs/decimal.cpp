#include "sgn/inputs/decimal.h"

#include <cstddef>

#include "flib/io/number.h"
#include "flib/text/string.h"

namespace sgn::inputs {
namespace {

constexpr int most_digits = 18;

/// Multiplies by ten; false if there is no room for the result.
bool shift(decimal& value) {
    constexpr std::int64_t largest = 100'000'000'000'000'000;  // 10^17
    if (value.digits >= largest || value.digits <= -largest || value.decimals == most_digits) {
        return false;
    }
    value.digits *= 10;
    ++value.decimals;
    return true;
}

}  // namespace

decimal_error parse_decimal(std::string_view text, decimal& value) {
    // The judge of what is a number; nan and inf are none here.
    double real = 0;
    const flib::number_error judged = flib::parse_real(text, real);
    if (judged == flib::number_error::not_a_number) return decimal_error::not_a_number;
    if (text.find_first_of("nNiIqQ") != std::string_view::npos) return decimal_error::not_a_number;

    const bool minus = text.starts_with('-');
    if (minus || text.starts_with('+')) text.remove_prefix(1);
    const std::size_t mantissa = text.find_first_not_of("0123456789.");
    std::int32_t exponent = 0;
    if (mantissa != std::string_view::npos) {
        std::string_view power = text.substr(mantissa);
        if (power.front() != '+' && power.front() != '-') power.remove_prefix(1);
        if (flib::parse_integer(power, exponent) != flib::number_error::none) {
            return decimal_error::too_long;
        }
        text = text.substr(0, mantissa);
    }
    decimal result;
    bool behind_point = false;
    for (const char c : text) {
        if (!flib::is_ascii_digit(c)) {
            behind_point = true;
            continue;
        }
        if (!shift(result)) return decimal_error::too_long;
        if (!behind_point) --result.decimals;
        result.digits += c - '0';
    }
    if (exponent > most_digits || exponent < -most_digits) return decimal_error::too_long;
    result.decimals -= exponent;
    if (result.decimals > most_digits) return decimal_error::too_long;
    while (result.decimals < 0) {
        if (!shift(result)) return decimal_error::too_long;
    }
    value = minus ? negative(result) : result;
    return decimal_error::none;
}

bool add(decimal a, decimal b, decimal& sum) {
    while (a.decimals < b.decimals) {
        if (!shift(a)) return false;
    }
    while (b.decimals < a.decimals) {
        if (!shift(b)) return false;
    }
    sum = {a.digits + b.digits, a.decimals};  // no more than 2 * 10^18
    return true;
}

std::string text_of(decimal value) {
    const bool minus = value.digits < 0;
    std::string text = std::to_string(minus ? -value.digits : value.digits);
    const auto decimals = static_cast<std::size_t>(value.decimals);
    if (text.size() <= decimals) text.insert(0, decimals + 1 - text.size(), '0');
    if (decimals > 0) text.insert(text.size() - decimals, 1, '.');
    if (minus) text.insert(0, 1, '-');
    return text;
}

}  // namespace sgn::inputs
