#include "flib/io/number.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <system_error>

#include "flib/io/detail/powers_of_ten.h"
#include "flib/text/string.h"

namespace flib {
namespace {

bool is_sign(char c) {
    return c == '+' || c == '-';
}

bool is_exponent_letter(char c) {
    const int lower = c | ('a' - 'A');
    return lower == 'e' || lower == 'd' || lower == 'q';
}

std::size_t count_digits(std::string_view text) {
    const auto end = std::find_if_not(text.begin(), text.end(), is_ascii_digit);
    return static_cast<std::size_t>(end - text.begin());
}

/// The exponent's digits as a number, held to what no mantissa can make up for.
std::int64_t exponent_value(std::string_view digits, bool negative) {
    // Ten times it still fits 64 bits.
    constexpr std::int64_t huge = std::int64_t{1} << 59;
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

/// 10^q as `mantissa` x 2^`exponent`; the truth is less than 1 + 2^-50 units of the mantissa above.
struct power_of_ten {
    std::uint64_t mantissa;  // its highest bit is set
    std::int32_t exponent;
};

/// With a factor of up to 19 digits, these powers give neither a subnormal nor an overflow.
constexpr std::int32_t lowest_power = -307;
constexpr std::int32_t highest_power = 288;

constexpr auto powers_of_ten = [] {
    std::array<power_of_ten, highest_power - lowest_power + 1> powers{};
    const auto keep = [&](int q, uint128 value, int exponent) {
        powers[static_cast<std::size_t>(q - lowest_power)] = {
            static_cast<std::uint64_t>(value >> 64), exponent + 64};
    };
    for_powers_of_ten(lowest_power, -1, keep);
    for_powers_of_ten(highest_power, 1, keep);
    return powers;
}();

/// `factor` x 10^`power`, correctly rounded; false if the leading 64 bits of the product do not
/// decide how to round. `factor` must not be 0.
bool scale(std::uint64_t factor, std::int32_t power, double& value) {
    const power_of_ten& p = powers_of_ten[static_cast<std::size_t>(power - lowest_power)];
    const int shift = std::countl_zero(factor);
    const uint128 product = uint128{factor << shift} * p.mantissa;
    // Of the upper half's 63 or 64 bits, a double keeps 53. The truth lies above that half by less
    // than one unit for the lower half and 1 + 2^-50 for the power of ten.
    const auto upper = static_cast<std::uint64_t>(product >> 64);
    const int dropped = 10 + static_cast<int>(upper >> 63);
    const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
    const std::uint64_t rest = upper & (2 * half - 1);
    if (half - rest <= 3) return false;  // a difference below zero is a large one
    const std::uint64_t mantissa = ((upper >> (dropped - 1)) + 1) / 2;
    // The mantissa's highest bit, or its overflow to 2^53, adds to the exponent's field.
    constexpr int mantissa_bits = 52;
    constexpr int bias = 1023;
    const int exponent = dropped + 64 + p.exponent - shift + mantissa_bits + bias - 1;
    value =
        std::bit_cast<double>((static_cast<std::uint64_t>(exponent) << mantissa_bits) + mantissa);
    return true;
}

/// `factor` x 10^`power`, correctly rounded; false unless both are doubles without error, so that
/// their one product or quotient is.
[[gnu::noinline]] bool scale_exactly(std::uint64_t factor, std::ptrdiff_t power, double& value) {
    static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr std::uint64_t exact_limit = std::uint64_t{1} << 53;
    if (factor > exact_limit || power < -22 || power > 22) return false;
    const auto exact = static_cast<double>(factor);
    value = power < 0 ? exact / powers[-power] : exact * powers[power];
    return true;
}

/// Appends the digits at `p` to `number`, eight at a time; of more than 24, only the first.
const char* append_digits(const char* p, std::uint64_t& number) {
    constexpr std::uint64_t each = 0x0101010101010101;
    static constexpr std::uint64_t powers[] = {1,       10,        100,        1'000,      10'000,
                                               100'000, 1'000'000, 10'000'000, 100'000'000};
    for (int step = 0; step < 3; ++step) {
        std::uint64_t text = 0;
        std::memcpy(&text, p, sizeof text);
        if constexpr (std::endian::native == std::endian::big) text = __builtin_bswap64(text);
        text ^= '0' * each;
        // Nothing but a digit leaves a byte below 10, so that the sum stays below 128.
        const std::uint64_t others = ((text + 118 * each) | text) & 128 * each;
        const int digits = others == 0 ? 8 : std::countr_zero(others) / 8;
        if (digits == 0) break;
        // Leading zeros make them eight; then neighbours are joined to pairs, pairs to fours,
        // fours to the number.
        text <<= 64 - 8 * digits;
        text = text * (1 + (10 << 8)) >> 8 & 0x00ff00ff00ff00ff;
        text = text * (1 + (100 << 16)) >> 16 & 0x0000ffff0000ffff;
        text = text * (1 + (std::uint64_t{10'000} << 32)) >> 32;
        number = number * powers[digits] + text;
        p += digits;
        if (digits < 8) break;
    }
    return p;
}

/// scan_usual_real() where some sixty characters can be looked at.
const char* scan_within_reach(const char* p, double& value) {
    // Neither sign nor size of the numbers follows a pattern, so there is no branch on them.
    constexpr int most_digits = 19;  // they fit 64 bits
    const bool negative = *p == '-';
    p += static_cast<int>(negative) | static_cast<int>(*p == '+');

    std::uint64_t mantissa = 0;
    const char* const whole = p;
    while (is_ascii_digit(*p) && p - whole <= most_digits) {
        mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p++ - '0');
    }
    std::ptrdiff_t digits = p - whole;
    std::ptrdiff_t power = 0;
    if (*p == '.') {
        const char* const fraction = ++p;
        p = append_digits(p, mantissa);
        power = fraction - p;
        digits -= power;
    }
    if (digits == 0 || digits > most_digits) return nullptr;

    if (is_exponent_letter(*p)) {
        ++p;
        const bool down = *p == '-';
        p += static_cast<int>(down) | static_cast<int>(*p == '+');
        int exponent = 0;
        const char* const first = p;
        for (; is_ascii_digit(*p) && p - first < 4; ++p) exponent = exponent * 10 + (*p - '0');
        if (p == first) return nullptr;
        power += down ? -exponent : exponent;
    }

    double magnitude = 0;
    if (mantissa != 0) {
        if (power < lowest_power || power > highest_power) return nullptr;
        if (!scale(mantissa, static_cast<std::int32_t>(power), magnitude) &&
            !scale_exactly(mantissa, power, magnitude)) {
            return nullptr;
        }
    }
    value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) |
                                  static_cast<std::uint64_t>(negative) << 63);
    return p;
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
    double usual = 0;
    if (scan_usual_real(item.data(), item.data() + item.size(), usual) ==
            item.data() + item.size() &&
        !item.empty()) {
        value = usual;
        return number_error::none;
    }
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
        const char sign = rest.empty() ? ' ' : rest.front();
        if (!lettered && !is_sign(sign)) return number_error::not_a_number;
        negative_exponent = sign == '-';
        if (is_sign(sign)) rest.remove_prefix(1);
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
    // So far a scan may look; text that ends earlier is scanned in a copy with zeros behind it, so
    // that the scan itself need not mind the end.
    constexpr std::ptrdiff_t reach = 64;
    if (end - begin >= reach) return scan_within_reach(begin, value);
    char copy[reach + 1] = {};
    std::copy(begin, end, copy);
    const char* const behind = scan_within_reach(copy, value);
    return behind == nullptr ? nullptr : begin + (behind - copy);
}

}  // namespace flib
