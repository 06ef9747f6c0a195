#include "block_check.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "flib/io/detail/columns.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"

namespace {

std::mt19937_64 random_bits(11);

std::int64_t between(std::int64_t low, std::int64_t high) {
    return std::uniform_int_distribution<std::int64_t>(low, high)(random_bits);
}

struct shape {
    const char* name;
    int margin;  // blanks before the first number of a line
    int width;
    int decimals;

    int line_length() const { return margin + 5 * width + 1; }
};

constexpr shape shapes[] = {{"checkpoint", 0, 16, 8},
                            {"dump, 8 decimals", 1, 20, 8},
                            {"20 columns, 12", 0, 20, 12},
                            {"22 columns, 12", 0, 22, 12}};

/// The digits of a number, as an integer, and its exponent.
struct number {
    std::int64_t digits;
    std::int64_t exponent;
};

/// A number halfway between two doubles, exactly: an odd integer of 54 bits times a power of two.
number halfway(const shape& form) {
    const auto limit = static_cast<std::int64_t>(std::pow(10, form.decimals + 1));
    for (;;) {
        const std::int64_t power = between(1, 22);
        const std::int64_t fives = static_cast<std::int64_t>(std::pow(5, power));
        const std::int64_t digits = between(0x20000000000000, 0x3fffffffffffff) / fives | 1;
        if (digits < limit) return {digits, power + form.decimals};
    }
}

number any_number(const shape& form, bool with_halfway) {
    const auto limit = static_cast<std::int64_t>(std::pow(10, form.decimals + 1));
    switch (between(with_halfway ? 0 : 1, 7)) {
        case 0:
            return halfway(form);
        case 1:
            return {between(0, 1) * (limit - 1), between(-99, 99)};
        case 2:
            return {between(0, 9) * limit / 10, between(-99, 99)};
        case 3:
            return {between(0, 99), between(-99, 99)};
        case 4:
            return {between(0, limit / 10), between(-20, 3)};
        default:
            return {between(0, limit - 1), between(-99, 99)};
    }
}

/// A number's field, and the number as std::from_chars reads it.
std::string printed(const shape& form, const number& what, double& value) {
    std::string digits = std::to_string(what.digits);
    digits.insert(0, static_cast<std::size_t>(form.decimals + 1) - digits.size(), '0');
    char exponent[8];
    std::snprintf(exponent, sizeof exponent, "%02d", static_cast<int>(std::abs(what.exponent)));
    const bool down = what.exponent < 0 || (what.exponent == 0 && between(0, 1) == 0);
    std::string text = between(0, 1) == 0 ? "-" : "";
    text.append(digits, 0, 1).append(".").append(digits, 1).append("E");
    text.append(down ? "-" : "").append(exponent);
    std::from_chars(text.data(), text.data() + text.size(), value);
    const std::size_t letter = text.find('E');
    if (!down) text.insert(letter + 1, 1, '+');
    if (between(0, 1) == 0) text[letter] = 'D';
    text.insert(0, static_cast<std::size_t>(form.width) - text.size(), ' ');
    return text;
}

/// What a read of all numbers of a text gives.
struct outcome {
    std::vector<double> values;
    std::string error;

    bool operator==(const outcome& other) const {
        return error == other.error &&
               std::memcmp(values.data(), other.values.data(), values.size() * sizeof(double)) == 0;
    }
};

outcome read(const std::string& text, std::size_t count, bool with_vectors) {
    flib::allow_scan_columns(with_vectors);
    outcome result{std::vector<double>(count), {}};
    try {
        flib::read_items(flib::held_text{"text", 1, text}, std::span(result.values));
    } catch (const flib::io_error& error) {
        result.error = error.what();
    }
    flib::allow_scan_columns(true);
    return result;
}

/// How many of the numbers behind the first line scan_columns() takes, left and taken up again at
/// the next line where it stops.
std::int64_t count_by_vectors(const shape& form, const std::string& text) {
    const char* at = text.data() + form.line_length();
    const char* const end = text.data() + text.size();
    double unused[2000];
    std::int64_t taken = 0;
    while (at < end) {
        const std::size_t more = flib::scan_columns(at, end, unused, std::size(unused));
        taken += static_cast<std::int64_t>(more);
        if (more == 0) at += form.line_length();
    }
    return taken;
}

bool check_numbers(const shape& form, std::int64_t count) {
    constexpr std::size_t block = 2000;
    std::int64_t different = 0;
    std::int64_t done = 0;
    std::int64_t by_vectors = 0;
    while (done < count) {
        outcome expected{std::vector<double>(block), {}};
        std::string text;
        // They stop the vectors, so that most blocks have none.
        const bool with_halfway = between(0, 7) == 0;
        for (std::size_t i = 0; i < block; ++i) {
            if (i % 5 == 0) text.append(static_cast<std::size_t>(form.margin), ' ');
            text += printed(form, any_number(form, with_halfway), expected.values[i]);
            if (i % 5 == 4) text += '\n';
        }
        for (const bool with_vectors : {true, false}) {
            if (read(text, block, with_vectors) == expected) continue;
            if (different++ == 0) std::printf("differs (%d): %s\n", with_vectors, text.c_str());
        }
        by_vectors += count_by_vectors(form, text);
        done += static_cast<std::int64_t>(block);
    }
    std::printf("%-22s %lld numbers in blocks, %lld blocks different, %.2f %% by vectors\n",
                form.name, static_cast<long long>(done), static_cast<long long>(different),
                100.0 * static_cast<double>(by_vectors) / static_cast<double>(done));
    return different == 0;
}

/// Whether `c` may stand in column `column` (0-based) of a line.
bool belongs(const shape& form, int column, char c) {
    if (column == form.line_length() - 1) return c == '\n';
    if (column < form.margin) return c == ' ';
    const std::string_view after_sign =
        form.decimals == 8 ? "0.00000000E+00" : "0.000000000000E+00";
    const int sign = form.width - static_cast<int>(after_sign.size()) - 1;
    const int place = (column - form.margin) % form.width - sign;
    if (place <= 0) return c == ' ' || (place == 0 && c == '-');
    switch (after_sign[static_cast<std::size_t>(place) - 1]) {
        case '0':
            return c >= '0' && c <= '9';
        case 'E':
            return c == 'E' || c == 'D';
        case '+':
            return c == '+' || c == '-';
        default:
            return c == '.';
    }
}

/// Every character of four lines is replaced by every other.
bool check_changes(const shape& form) {
    std::string text;
    for (int i = 0; i < 30; ++i) {
        double unused = 0;
        if (i % 5 == 0) text.append(static_cast<std::size_t>(form.margin), ' ');
        // No change of one character makes it a halfway case.
        text += printed(form, {between(1, 999'999'999), -7}, unused);
        if (i % 5 == 4) text += '\n';
    }
    const auto first = static_cast<std::size_t>(form.line_length());
    const std::size_t behind = 5 * first;
    const auto taken_from = [&](const std::string& block) {
        const char* at = block.data() + first;
        const char* also_at = at;
        double unused[20];
        const std::size_t taken = flib::scan_columns(at, block.data() + behind, unused, 20);
        const std::size_t looked_at =
            flib::scan_columns(also_at, block.data() + behind, nullptr, 20);
        return taken == 20 && looked_at == 20;
    };
    const bool has_vectors = taken_from(text);
    std::int64_t wrong = 0;
    for (std::size_t place = first; place < behind; ++place) {
        for (int c = 0; c < 256; ++c) {
            std::string changed = text;
            changed[place] = static_cast<char>(c);
            const bool fits = belongs(form, static_cast<int>(place % first), changed[place]);
            const bool same = read(changed, 30, true) == read(changed, 30, false);
            if (taken_from(changed) != (fits && has_vectors) || !same) ++wrong;
        }
    }
    std::printf("%-22s every character of a block changed, %lld judged wrongly\n", form.name,
                static_cast<long long>(wrong));
    return wrong == 0;
}

}  // namespace

bool check_blocks(std::int64_t count) {
    bool good = true;
    for (const shape& form : shapes) {
        good = check_numbers(form, count) && good;
        good = check_changes(form) && good;
    }
    return good;
}
