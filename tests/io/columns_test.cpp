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

/// A number, and the field in which it stands.
struct field {
    std::string text;
    double value;
};

/// Nine or thirteen digits with an exponent of two, `width` characters long.
field random_field(std::mt19937_64& random, int width) {
    const int decimals = width == 16 ? 8 : 12;
    const auto below = [&](std::uint64_t n) { return random() % n; };
    std::string digits;
    for (int i = 0; i <= decimals; ++i) digits += static_cast<char>('0' + below(10));
    if (below(8) == 0) digits.replace(1, digits.size(), digits.size() - 1, "09"[below(2)]);
    if (below(8) == 0) digits.replace(0, 4, "0000");
    char text[40];
    std::snprintf(text, sizeof text, "%s%c.%sE%c%02d", below(2) == 0 ? "-" : "", digits[0],
                  digits.c_str() + 1, "+-"[below(2)], static_cast<int>(below(100)));
    field made{text, std::strtod(text, nullptr)};
    made.text.insert(0, static_cast<std::size_t>(width) - made.text.size(), ' ');
    if (below(2) == 0) made.text[made.text.find('E')] = 'D';
    return made;
}

/// Lines of five numbers, of which one in some thirty ends in another way.
std::string random_lines(std::mt19937_64& random, int width, std::size_t count,
                         std::vector<double>& values) {
    const char* const oddities[] = {" \n", "\r\n", ",\n", "\n\n", "\n 1.5E-100,+2,\n", " 7\n"};
    std::string text;
    while (values.size() < count) {
        for (int i = 0; i < 5; ++i) {
            const field next = random_field(random, width);
            text += next.text;
            values.push_back(next.value);
        }
        const std::string end = random() % 32 == 0 ? oddities[random() % 6] : "\n";
        text += end;
        if (end == oddities[4]) values.insert(values.end(), {1.5e-100, 2});
        if (end == oddities[5]) values.push_back(7);
    }
    return text;
}

/// Allows the vectors or not, as long as it lives.
class with_vectors {
  public:
    explicit with_vectors(bool allowed) { allow_scan_columns(allowed); }
    ~with_vectors() { allow_scan_columns(true); }
    with_vectors(const with_vectors&) = delete;
    with_vectors& operator=(const with_vectors&) = delete;
};

TEST(Columns, AreReadAsSingleNumbersAre) {
    std::mt19937_64 random(12);
    for (const int width : {16, 20, 22}) {
        std::vector<double> expected;
        // Several windows of a file.
        const std::string text = random_lines(random, width, 50000, expected);
        const support::scratch_directory scratch;
        const std::string path = scratch.file("numbers", text + "next\n");
        for (const bool allowed : {true, false}) {
            const with_vectors choice(allowed);
            const input_unit fid(path);
            item_reader reader(fid);
            reader.begin_reals(expected.size());
            std::vector<double> values(expected);
            for (std::size_t at = 0; at < values.size();) {
                const std::size_t part = std::min<std::size_t>(random() % 400, values.size() - at);
                if (random() % 4 == 0) {
                    reader.check_part(part);
                } else {
                    std::fill_n(values.begin() + static_cast<std::ptrdiff_t>(at), part, 0.5);
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

/// The numbers of a text, or as much as there is before the error.
std::string read_all(const std::string& text, std::size_t count, bool allowed) {
    const with_vectors choice(allowed);
    std::vector<double> values(count);
    const auto end = support::ending_of([&] {
        item_reader reader(held_text{"text", 1, text});
        reader.take(std::span(values));
    });
    std::string result(reinterpret_cast<const char*>(values.data()), 8 * values.size());
    return end ? result + end->text : result;
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

bool has_instructions() {
#ifdef __x86_64__
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#else
    return false;
#endif
}

TEST(Columns, TakeWhatIsExactlyInTheirShape) {
    if (!has_instructions()) GTEST_SKIP() << "this processor reads all numbers one by one";
    for (const int width : {16, 20, 22}) {
        std::string block;
        for (int i = 0; i < 20; ++i) {
            const std::string number = width == 16 ? "7.12345678E-07" : "0.123456789012D-07";
            std::string text = (i % 3 == 0 ? "-" : "") + number;
            text.insert(0, static_cast<std::size_t>(width) - text.size(), ' ');
            block += text + (i % 5 == 4 ? "\n" : "");
        }
        ASSERT_TRUE(taken_at_once(block, 20)) << width;
        // The last newline is there, but not at hand.
        EXPECT_FALSE(taken_at_once(std::string_view(block).substr(0, block.size() - 1), 20));
        EXPECT_FALSE(taken_at_once(block, 19));
        const auto sign = static_cast<std::size_t>(width - (width == 16 ? 15 : 19));
        for (std::size_t at = 0; at < block.size(); ++at) {
            const std::size_t column = at % static_cast<std::size_t>(5 * width + 1);
            const std::size_t place = column % static_cast<std::size_t>(width);
            const char before = block[at];
            std::string allowed(1, before);
            if (before >= '0' && before <= '9') allowed = "0123456789";
            if (before == 'E' || before == 'D') allowed = "DE";
            if (before == '-') allowed = place == sign ? " -" : "+-";
            if (before == ' ' && place == sign) allowed = " -";
            for (const char c : std::string_view(" -+.,/0123456789:DEd\t\n\r\x10\xa0\0", 26)) {
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

TEST(Columns, RoundToEvenWhatLiesHalfwayBetweenTwoNumbers) {
    std::mt19937_64 random(14);
    for (const int width : {16, 20, 22}) {
        const int decimals = width == 16 ? 8 : 12;
        std::vector<double> expected;
        std::string block;
        std::uint64_t fives = 1;
        for (int power = 1; power <= 23; ++power) {
            fives *= 5;
            for (int i = 0; i < 100; ++i) {
                // Times a power of five, an odd number of 54 bits.
                const std::uint64_t most = ((std::uint64_t{1} << 54) - 1) / fives;
                const std::uint64_t digits = (most - random() % (most / 2 + 1) - 1) | 1;
                std::string number = std::to_string(digits);
                const std::size_t length = static_cast<std::size_t>(decimals) + 1;
                if (number.size() > length) break;
                number.insert(0, length - number.size(), '0');
                number.insert(1, ".").append("E+").append(std::to_string(power + decimals));
                expected.push_back(std::strtod(number.c_str(), nullptr));
                number.insert(0, static_cast<std::size_t>(width) - number.size(), ' ');
                block += number + (expected.size() % 5 == 0 ? "\n" : "");
            }
        }
        ASSERT_GT(expected.size(), 1000U);
        const std::string found = read_all("1\n" + block, expected.size() + 1, true);
        EXPECT_EQ(std::memcmp(found.data() + 8, expected.data(), 8 * expected.size()), 0) << width;
        EXPECT_EQ(found.size(), 8 * (expected.size() + 1)) << found.substr(found.size() - 80);
    }
}

}  // namespace
}  // namespace flib
