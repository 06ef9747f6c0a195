#include "flib/io/number.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <string>
#include <system_error>

#include "flib/text/string.h"

namespace flib {
namespace {

bool is_sign(char c) {
    return c == '+' || c == '-';
}

bool is_exponent_letter(char c) {
    const char lower = to_lower(c);
    return lower == 'e' || lower == 'd' || lower == 'q';
}

std::size_t count_digits(std::string_view text) {
    const auto end = std::find_if_not(text.begin(), text.end(), is_ascii_digit);
    return static_cast<std::size_t>(end - text.begin());
}

/// The exponent's digits as a number, held to what no mantissa can make up for.
std::int64_t exponent_value(std::string_view digits, bool negative) {
    constexpr std::int64_t huge = std::int64_t{1} << 60;
    std::int64_t value = 0;
    for (const char c : digits) value = std::min(huge, value * 10 + (c - '0'));
    return negative ? -value : value;
}

/// nan, inf or infinity (without a sign) in any case.
bool parse_special(std::string_view word, double& value) {
    const std::string lower = strlowcase(word.substr(0, 9));
    if (lower == "nan") {
        value = std::numeric_limits<double>::quiet_NaN();
    } else if (lower == "inf" || lower == "infinity") {
        value = std::numeric_limits<double>::infinity();
    } else {
        return false;
    }
    return true;
}

}  // namespace

number_error parse_integer(std::string_view item, std::int32_t& value) {
    const bool signed_item = !item.empty() && is_sign(item.front());
    const std::string_view digits = item.substr(signed_item ? 1 : 0);
    if (digits.empty() || count_digits(digits) != digits.size()) return number_error::not_a_number;
    const std::string_view number = item.front() == '+' ? digits : item;
    std::int32_t parsed = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), parsed);
    if (result.ec != std::errc{}) return number_error::too_large;
    value = parsed;
    return number_error::none;
}

number_error parse_real(std::string_view item, double& value) {
    const bool negative = !item.empty() && item.front() == '-';
    std::string_view rest = item.substr(!item.empty() && is_sign(item.front()) ? 1 : 0);

    const std::string_view whole = rest.substr(0, count_digits(rest));
    rest.remove_prefix(whole.size());
    std::string_view fraction;
    if (!rest.empty() && rest.front() == '.') {
        rest.remove_prefix(1);
        fraction = rest.substr(0, count_digits(rest));
        rest.remove_prefix(fraction.size());
    }
    double parsed = 0;
    if (whole.empty() && fraction.empty()) {
        if (!parse_special(item.substr(item.size() - rest.size()), parsed) ||
            (item.find('.') != std::string_view::npos)) {
            return number_error::not_a_number;
        }
        value = negative ? -parsed : parsed;
        return number_error::none;
    }

    bool negative_exponent = false;
    std::string_view exponent;
    if (!rest.empty()) {
        const bool lettered = is_exponent_letter(rest.front());
        if (lettered) rest.remove_prefix(1);
        const bool exponent_signed = !rest.empty() && is_sign(rest.front());
        if (!lettered && !exponent_signed) return number_error::not_a_number;
        if (exponent_signed) {
            negative_exponent = rest.front() == '-';
            rest.remove_prefix(1);
        }
        exponent = rest;
        if (exponent.empty() || count_digits(exponent) != exponent.size()) {
            return number_error::not_a_number;
        }
    }

    // The one form that std::from_chars reads to the end and without a doubt.
    std::string number(whole);
    if (whole.empty()) number += '0';
    if (!fraction.empty()) number.append(".").append(fraction);
    if (!exponent.empty()) number.append(negative_exponent ? "e-" : "e").append(exponent);
    const auto result = std::from_chars(number.data(), number.data() + number.size(), parsed);
    if (result.ec == std::errc::result_out_of_range) {
        // It does not tell too large from too small, nor gives the value: the place of the first
        // digit that counts does.
        const std::string digits = std::string(whole) + std::string(fraction);
        const std::size_t leading = digits.find_first_not_of('0');
        const std::int64_t place = static_cast<std::int64_t>(whole.size()) -
                                   static_cast<std::int64_t>(leading) +
                                   exponent_value(exponent, negative_exponent);
        if (leading != std::string::npos && place > 0) return number_error::too_large;
        parsed = 0;
    }
    value = negative ? -parsed : parsed;
    return number_error::none;
}

const char* scan_usual_real(const char* begin, const char* end, double& value) {
    // Up to 19 digits fit 64 bits; a mantissa below 2^53 and a power of ten up to 22 are doubles
    // without error, so that their one product or quotient is correctly rounded.
    constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                 1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr std::uint64_t exact_limit = std::uint64_t{1} << 53;
    constexpr int most_digits = 19;

    const char* p = begin;
    const bool negative = p != end && *p == '-';
    if (p != end && is_sign(*p)) ++p;

    std::uint64_t mantissa = 0;
    const auto take_digits = [&] {
        const char* const first = p;
        for (; p != end && is_ascii_digit(*p); ++p) {
            mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
        }
        return p - first;
    };
    std::ptrdiff_t digits = take_digits();
    std::ptrdiff_t power = 0;
    if (p != end && *p == '.') {
        ++p;
        power = -take_digits();
        digits -= power;
    }
    if (digits == 0 || digits > most_digits || mantissa > exact_limit) return nullptr;

    if (p != end && is_exponent_letter(*p)) {
        ++p;
        const bool down = p != end && *p == '-';
        if (p != end && is_sign(*p)) ++p;
        int exponent = 0;
        const char* const first = p;
        for (; p != end && is_ascii_digit(*p) && p - first < 4; ++p) {
            exponent = exponent * 10 + (*p - '0');
        }
        if (p == first) return nullptr;
        power += down ? -exponent : exponent;
    }
    if (power < -22 || power > 22) return nullptr;

    const double exact = static_cast<double>(mantissa);
    const double scaled = power < 0 ? exact / powers[-power] : exact * powers[power];
    value = negative ? -scaled : scaled;
    return p;
}

}  // namespace flib
