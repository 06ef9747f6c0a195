// number_check [MILLIONS]: compares the reading of reals, alone and in blocks of fixed columns,
// with std::from_chars, bit by bit, over random and hard cases; the exit status is 1 if any
// differs.

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

#include "block_check.h"
#include "flib/io/number.h"

namespace {

std::mt19937_64 random_bits(7);

std::int64_t between(std::int64_t low, std::int64_t high) {
    return std::uniform_int_distribution<std::int64_t>(low, high)(random_bits);
}

std::string digits_of(std::uint64_t mantissa, std::int64_t power) {
    return std::to_string(mantissa) + "E" + std::to_string(power);
}

std::string printed(double value, int digits) {
    char text[64];
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, digits).ptr;
    return {text, end};
}

/// Numbers as checkpoints and dumps hold them.
std::string usual() {
    const double value = std::ldexp(static_cast<double>(random_bits()) - 0x1p63,
                                    static_cast<int>(between(-140, -50)));
    return printed(value, between(0, 1) == 0 ? 8 : 11);
}

/// Up to 19 digits with any power of ten, beyond the range of doubles too.
std::string any_digits() {
    return digits_of(random_bits() >> between(1, 63), between(-350, 310));
}

/// As many digits as the text may have of a number halfway between two doubles, or beside it.
std::string near_halfway() {
    const std::uint64_t bits = random_bits() & 0x7fffffffffffffff;
    const double value = std::bit_cast<double>(bits);
    if (!std::isfinite(value)) return "1";
    const long double halfway =
        (static_cast<long double>(value) + std::nextafter(value, INFINITY)) / 2;
    char text[64];
    std::snprintf(text, sizeof text, "%.*Le", static_cast<int>(between(15, 18)), halfway);
    return text;
}

/// Numbers halfway between two doubles, which the digits hold exactly.
std::string halfway() {
    const std::uint64_t odd_54_bits = (random_bits() >> 10) | 0x0020000000000001;
    const std::int64_t power = between(-3, 22);
    std::uint64_t fives = 1;
    for (std::int64_t i = 0; i < std::abs(power); ++i) fives *= 5;
    return power < 0 ? digits_of(odd_54_bits * fives, power)
                     : digits_of((odd_54_bits / fives) | 1, power);
}

/// Whether both readings give the same value or the same refusal; `fast` counts the quick ones.
bool agree(const std::string& text, std::int64_t& fast) {
    double expected = 0;
    const char* const end = text.data() + text.size();
    const bool out_of_range =
        std::from_chars(text.data(), end, expected).ec == std::errc::result_out_of_range;
    double value = 0;
    if (flib::scan_usual_real(text.data(), end, value) == end) {
        ++fast;
    } else {
        const flib::number_error error = flib::parse_real(text, value);
        if (out_of_range) return error == flib::number_error::too_large || value == 0;
        if (error != flib::number_error::none) return false;
    }
    return !out_of_range &&
           std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(expected);
}

}  // namespace

int main(int argc, char** argv) {
    const std::int64_t cases = 1'000'000 * std::int64_t{argc > 1 ? std::atoi(argv[1]) : 10};
    struct source {
        const char* name;
        std::string (*make)();
    };
    bool all_agree = true;
    for (const auto& [name, make] :
         {source{"usual forms", usual}, source{"any digits, any power", any_digits},
          source{"near halfway", near_halfway}, source{"exactly halfway", halfway}}) {
        std::int64_t different = 0;
        std::int64_t fast = 0;
        for (std::int64_t i = 0; i < cases; ++i) {
            const std::string text = make();
            if (agree(text, fast)) continue;
            if (different++ == 0) std::printf("differs: %s\n", text.c_str());
        }
        std::printf("%-22s %lld cases, %lld different, %.2f %% by the fast path\n", name,
                    static_cast<long long>(cases), static_cast<long long>(different),
                    100.0 * static_cast<double>(fast) / static_cast<double>(cases));
        all_agree = all_agree && different == 0;
    }
    all_agree = check_blocks(cases) && all_agree;
    return all_agree ? 0 : 1;
}
