// Numbers in fixed columns: read many at a time or one by one, they are the same.
#include "flib/io/detail/columns.h"

#include <gtest/gtest.h>

#include <algorithm>
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

/// Nine or thirteen digits with an exponent of two, `width` characters long.
std::string random_field(std::mt19937_64& random, std::size_t width) {
    const auto below = [&](std::uint64_t n) { return random() % n; };
    const std::size_t length = width == 16 ? 9 : 13;
    std::string digits;
    while (digits.size() < length) digits += static_cast<char>('0' + below(10));
    if (below(8) == 0) digits.replace(1, length, length - 1, "09"[below(2)]);
    if (below(8) == 0) digits.replace(0, 4, "0000");
    int exponent = static_cast<int>(below(100)) * (below(2) == 0 ? 1 : -1);
    if (below(50) == 0) {
        // Times a power of five an odd number of 54 bits: halfway between two doubles.
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
std::string random_lines(std::mt19937_64& random, std::size_t width, std::size_t count,
                         std::vector<double>& values) {
    const char* const oddities[] = {" \n", "\r\n", ",\n", "\n\n", "\n 1.5E-100,+2,\n", " 7\n"};
    std::string text;
    while (values.size() < count) {
        for (int i = 0; i < 5; ++i) {
            std::string next = random_field(random, width);
            text += next;
            values.push_back(std::strtod(next.replace(width - 4, 1, "E").c_str(), nullptr));
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
    for (const std::size_t width : {16, 20, 22}) {
        std::vector<double> expected;
        // Several windows of a file.
        const std::string text = random_lines(random, width, 50000, expected);
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
            EXPECT_EQ(std::memcmp(values.data(), expected.data(), 8 * values.size()), 0) << width;
            line_buffer line;
            EXPECT_TRUE(read_record(fid, line) && line == "next") << width;
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

/// Whether all of the lines of a text are taken by scan_columns(), and how far it goes.
bool taken_at_once(std::string_view text, std::size_t count) {
    std::vector<double> values(count);
    const char* at = text.data();
    const std::size_t taken = scan_columns(at, text.data() + text.size(), values.data(), count);
    EXPECT_EQ(at, text.data() + (taken == count ? text.size() : 0));
    at = text.data();
    EXPECT_EQ(scan_columns(at, text.data() + text.size(), nullptr, count), taken);
    return taken == count;
}

TEST(Columns, TakeWhatIsExactlyInTheirShape) {
#ifdef __x86_64__
    const bool has_instructions =
        __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
#else
    const bool has_instructions = false;
#endif
    if (!has_instructions) GTEST_SKIP() << "this processor reads all numbers one by one";
    std::mt19937_64 random(13);
    for (const std::size_t width : {16, 20, 22}) {
        std::string block;
        for (int i = 0; i < 20; ++i) {
            const std::string number = width == 16 ? "7.12345678E-07" : "0.123456789012D-07";
            const std::string text = (i % 3 == 0 ? "-" : "") + number;
            block += std::string(width - text.size(), ' ') + text + (i % 5 == 4 ? "\n" : "");
        }
        ASSERT_TRUE(taken_at_once(block, 20)) << width;
        // The last newline is there, but not at hand.
        EXPECT_FALSE(taken_at_once(std::string_view(block).substr(0, block.size() - 1), 20));
        EXPECT_FALSE(taken_at_once(block, 19));
        const std::size_t sign = width - (width == 16 ? 15 : 19);
        for (std::size_t at = 0; at < block.size(); ++at) {
            const std::size_t place = at % (5 * width + 1) % width;
            const char before = block[at];
            std::string allowed(1, before);
            if (before >= '0' && before <= '9') allowed = "0123456789";
            if (before == 'E' || before == 'D') allowed = "DE";
            if (before == '-') allowed = place == sign ? " -" : "+-";
            if (before == ' ' && place == sign) allowed = " -";
            for (int tries = 0; tries < 6; ++tries) {
                const char c = " -+.,/0123456789:DEd\t\n\r\x10\xa0\0"[random() % 26];
                std::string changed = block;
                changed[at] = c;
                EXPECT_EQ(taken_at_once(changed, 20), allowed.find(c) != std::string::npos)
                    << at << ": " << c;
                const std::string whole = "1.5\n" + changed + "2.5\n";
                EXPECT_EQ(read_all(whole, 22, true), read_all(whole, 22, false)) << at << ": " << c;
            }
        }
    }
}

}  // namespace
}  // namespace flib
