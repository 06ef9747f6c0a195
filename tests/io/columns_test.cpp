// Numbers in fixed columns: read many at a time or one by one, they are the same.
#include "flib/io/detail/columns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "flib/io/free_format.h"
#include "flib/io/unit.h"
#include "support/support.h"

namespace flib {
namespace {

/// What a line of five numbers holds.
struct line_shape {
    const char* margin;
    std::size_t width;  // of a number
    std::size_t digits;
};

constexpr std::array shapes = {line_shape{"", 16, 9}, line_shape{" ", 20, 9},
                               line_shape{"", 20, 13}, line_shape{"", 22, 13}};

/// A number in its columns, with an exponent of two digits. With `halves`, some lie halfway between
/// two doubles, which takes an exponent above ten.
std::string random_field(std::mt19937_64& random, const line_shape& shape, bool halves) {
    const auto below = [&](std::uint64_t n) { return random() % n; };
    const auto [margin, width, length] = shape;
    std::string digits;
    while (digits.size() < length) digits += static_cast<char>('0' + below(10));
    if (below(8) == 0) digits.replace(1, length, length - 1, "09"[below(2)]);
    if (below(8) == 0) digits.replace(0, 4, "0000");
    int exponent = static_cast<int>(below(halves ? 199 : 110)) - 99;
    if (halves && below(50) == 0) {
        // Times a power of five an odd number of 54 bits.
        const int power = static_cast<int>(below(13)) + 11;
        std::uint64_t most = (std::uint64_t{1} << 54) - 1;
        for (int i = 0; i < power; ++i) most /= 5;
        const std::string half = std::to_string((most - below(most / 2 + 1)) | 1);
        if (half.size() <= length) {
            digits = std::string(length - half.size(), '0') + half;
            exponent = power + static_cast<int>(length) - 1;
        }
    }
    char text[40];
    std::snprintf(text, sizeof text, "%s%c.%s%c%c%02d", below(2) == 0 ? "-" : "", digits[0],
                  digits.c_str() + 1, "DE"[below(2)], exponent < 0 ? '-' : '+', std::abs(exponent));
    return std::string(width - std::strlen(text), ' ') + text;
}

/// Lines of five numbers, of which one in some thirty ends in another way; and the values.
std::string random_lines(std::mt19937_64& random, const line_shape& shape, std::size_t count,
                         std::vector<double>& values) {
    const char* const oddities[] = {" \n", "\r\n", ",\n", "\n\n", "\n 1.5E-100,+2,\n", " 7\n"};
    std::string text;
    while (values.size() < count) {
        text += shape.margin;
        for (int i = 0; i < 5; ++i) {
            std::string next = random_field(random, shape, true);
            text += next;
            values.push_back(std::strtod(next.replace(shape.width - 4, 1, "E").c_str(), nullptr));
        }
        const std::string end = random() % 32 == 0 ? oddities[random() % 6] : "\n";
        text += end;
        if (end == oddities[4]) values.insert(values.end(), {1.5e-100, 2});
        if (end == oddities[5]) values.push_back(7);
    }
    return text;
}

TEST(Columns, AreReadAsSingleNumbersAre) {
    std::mt19937_64 random(12);
    for (const line_shape& shape : shapes) {
        std::vector<double> expected;
        // Several windows of a file.
        const std::string text = random_lines(random, shape, 50000, expected);
        const support::scratch_directory scratch;
        const std::string path = scratch.file("numbers", text + "next\n");
        for (const bool allowed : {false, true}) {
            allow_scan_columns(allowed);
            const input_unit fid(path);
            item_reader reader(fid);
            reader.begin_reals(expected.size());
            std::vector<double> values(expected);
            for (std::size_t at = 0; at < values.size();) {
                const std::size_t part = std::min<std::size_t>(random() % 400, values.size() - at);
                if (random() % 4 == 0) {
                    reader.check_part(part);
                } else {
                    std::fill_n(&values[at], part, 0.5);
                    reader.take_part(std::span(values).subspan(at, part));
                }
                at += part;
            }
            reader.finish();
            EXPECT_EQ(std::memcmp(values.data(), expected.data(), 8 * values.size()), 0)
                << shape.margin << shape.width;
            line_buffer line;
            EXPECT_TRUE(read_record(fid, line) && line == "next");
        }
    }
}

/// The bits of a text's numbers, or of as many as there are before the error, and that.
std::string read_all(const std::string& text, std::size_t count, bool allowed) {
    allow_scan_columns(allowed);
    std::vector<double> values(count);
    const auto end = support::ending_of([&] {
        item_reader reader(held_text{"text", 1, text});
        reader.take(std::span(values));
    });
    allow_scan_columns(true);
    return std::string(reinterpret_cast<const char*>(values.data()), 8 * count) +
           (end ? end->text : "");
}

/// How many numbers scan_columns() takes of a text, with values or without; all or none.
std::size_t taken_at_once(std::string_view text, std::size_t most) {
    std::vector<double> values(most);
    const char* at = text.data();
    const std::size_t taken = scan_columns(at, text.data() + text.size(), values.data(), most);
    EXPECT_EQ(at, text.data() + (taken == 0 ? 0 : text.size()));
    at = text.data();
    EXPECT_EQ(scan_columns(at, text.data() + text.size(), nullptr, most), taken);
    return taken;
}

/// How many numbers of four lines are taken at once: other processors read all one by one.
std::size_t all_at_once() {
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0) return 20;
#endif
    return 0;
}

TEST(Columns, TakeWhatIsExactlyInTheirShape) {
    const std::size_t all = all_at_once();
    std::mt19937_64 random(13);
    for (int round = 0; round < 6000; ++round) {
        const line_shape& shape = shapes[random() % shapes.size()];
        std::string block;
        for (int i = 0; i < 20; ++i) {
            if (i % 5 == 0) block += shape.margin;
            block += random_field(random, shape, false) + (i % 5 == 4 ? "\n" : "");
        }
        ASSERT_EQ(taken_at_once(block, 20), all) << block;
        ASSERT_EQ(taken_at_once(block, 19), 0U);
        // The last newline is there, but not at hand.
        ASSERT_EQ(taken_at_once(std::string_view(block).substr(0, block.size() - 1), 20), 0U);
        const std::size_t at = random() % block.size();
        block[at] = " -+.,/0123456789:DEd\t\n\r\x10\xa0\0"[random() % 26];
        const char* const starts[] = {"1.5\n", "1.5,2.5\n", "\n", "1.5\n\n"};
        const char* const ends[] = {"2.5 3.5\n", ",2.5,3.5\n", "\nx\n"};
        const std::string text = starts[random() % 4] + block + ends[random() % 3];
        ASSERT_EQ(read_all(text, 22, true), read_all(text, 22, false)) << at << " of\n" << block;
    }
}

/// What may stand in a column of a dump's line, by a character that stands for it.
std::string_view allowed_at(std::size_t column) {
    constexpr std::string_view of_number = "     -0.00000000D+00";
    if (column == 101) return "\n";
    if (column == 0) return " ";
    switch (of_number[(column - 1) % 20]) {
        case ' ':
            return " ";
        case '-':
            return " -";
        case '0':
            return "0123456789";
        case 'D':
            return "DE";
        case '+':
            return "+-";
        default:
            return ".";
    }
}

const std::string line_of_dump =
    "      -0.15494406D-05      0.53350403D-08     -0.60206762E-09      0.00000000D+00"
    "     -0.99999999D+99\n";

TEST(Columns, OfDumpsMayHoldNothingElse) {
    const std::string block = line_of_dump + line_of_dump + line_of_dump + line_of_dump;
    for (std::size_t place = 0; place < block.size(); ++place) {
        const std::string_view allowed = allowed_at(place % line_of_dump.size());
        for (const char c : std::string_view(" -+.,/0123456789:DEd\t\n\r\x10\xa0\0", 27)) {
            std::string text = block;
            text[place] = c;
            const bool fits = allowed.find(c) != std::string_view::npos;
            ASSERT_EQ(taken_at_once(text, 20), fits ? all_at_once() : 0) << place << " is " << c;
            text = "0.5\n" + text + "2.5 3.5\n";
            ASSERT_EQ(read_all(text, 22, true), read_all(text, 22, false)) << place << " is " << c;
        }
    }
}

TEST(Columns, OfOtherLinesAreReadOneByOne) {
    const std::string three = line_of_dump + line_of_dump + line_of_dump;
    const std::string words =
        "       0.49406565-322      0.26086666-320      0.00000000D+00      0.13043333-320"
        "      0.00000000D+00\n";
    const std::string not_indented = line_of_dump.substr(1);
    const std::string with_return = line_of_dump.substr(0, 101) + "\r\n";
    for (const std::string& odd :
         {words, not_indented, with_return, " " + line_of_dump, line_of_dump.substr(0, 101) + " \n",
          line_of_dump.substr(0, 81) + "\n",
          line_of_dump.substr(0, 81) + "               0.125\n"}) {
        for (const std::string& block : {odd + three, three + odd}) {
            EXPECT_EQ(taken_at_once(block, 20), 0U) << block;
            const std::string text = "0.5\n" + block + line_of_dump + "2.5\n";
            EXPECT_EQ(read_all(text, 21, true), read_all(text, 21, false)) << block;
        }
    }
}

}  // namespace
}  // namespace flib
