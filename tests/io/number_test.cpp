// Numbers as texts: read, and written into fields.
#include "flib/io/number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>
#include <vector>

#include "flib/io/fixed_field.h"
#include "flib/io/free_format.h"
#include "flib/io/unit.h"
#include "support/support.h"

namespace flib {
namespace {

/// Each of the blank-separated items as it was read: "?" if it is not a number, "!" if too large.
template <class Value>
std::string read_as(std::string_view items, number_error (*parse)(std::string_view, Value&)) {
    std::istringstream in{std::string(items)};
    std::string results;
    for (std::string item; in >> item;) {
        Value value = 5;
        char text[64];
        const number_error error = parse(item, value);
        EXPECT_TRUE(error == number_error::none || value == 5) << item;
        const auto shown = std::to_chars(text, text + sizeof text, value);
        const char* failure = error == number_error::too_large ? "!" : "?";
        results += results.empty() ? "" : " ";
        results += error == number_error::none ? std::string(text, shown.ptr) : failure;
    }
    return results;
}

TEST(Number, Forms) {
    for (const auto& row : support::table_of("numbers.txt")) {
        const bool whole = row[0] == "integer";
        EXPECT_EQ(whole ? read_as(row[1], parse_integer) : read_as(row[1], parse_real), row[2]);
    }
}

/// A real as the C library reads it: with about as many digits as 64 bits hold, or any number of
/// them; half of these lie half the way between two doubles, but for their rounding.
std::string random_real(std::mt19937_64& random) {
    const auto below = [&](int n) { return static_cast<int>(random() % std::uint64_t(n)); };
    if (below(3) == 0) {
        std::string digits = std::to_string(random()).substr(0, std::size_t(15 + below(6)));
        if (below(3) != 0) digits.insert(random() % digits.size(), 1, '.');
        return digits + "e" + std::to_string(below(2) == 0 ? below(60) - 33 : below(600) - 330);
    }
    double value = std::ldexp(static_cast<double>(random() >> 11), below(120) - 100);
    // Up to 1e290, so that no change of its digits makes it too large.
    for (bool any = below(2) == 0; any; any = !(std::abs(value) < 1e290)) {
        value = std::bit_cast<double>(random());
    }
    const long double step = std::nextafter(value, HUGE_VAL) - static_cast<long double>(value);
    const int decimals = below(3) == 0 ? 150 : below(20);
    char text[200];
    const int length = std::snprintf(text, sizeof text, "%.*Le", decimals,
                                     below(2) == 0 ? value : value + step / 2);
    if (below(4) == 0) *(std::find(text, text + length, 'e') - 1) = '1';
    return text;
}

TEST(Number, CorrectlyRoundedAloneAndInFiles) {
    constexpr std::size_t count = 100000;
    constexpr const char* separators[] = {" ", "\n", ",", "\r\n", " , ", "\t", "\n \n", ",\n"};
    std::mt19937_64 random(4);
    std::vector<double> expected;
    std::string contents;
    for (std::size_t i = 0; i < count; ++i) {
        std::string item = random_real(random);
        expected.push_back(std::strtod(item.c_str(), nullptr));
        const std::size_t e = item.find('e');
        item[e] = "eEdDqQ"[random() % 6];
        if ((item[e + 1] == '-' || item[e + 1] == '+') && random() % 8 == 0) item.erase(e, 1);
        double parsed = 5;
        ASSERT_EQ(parse_real(item, parsed), number_error::none) << item;
        ASSERT_EQ(parsed, expected[i]) << item;
        contents += item + separators[random() % std::size(separators)];
    }
    const support::scratch_directory scratch;
    const input_unit fid(scratch.file("reals", contents));
    std::vector<double> values(count);
    read_items(fid, std::span(values));
    EXPECT_EQ(values, expected);
}

/// A field of some width, with decimals or digits.
std::string field(const std::string& kind, const std::string& value, int width, int more) {
    if (kind == "text") return text_field(value, width);
    if (kind == "integer") return integer_field(std::stoll(value), width);
    if (kind == "hexadecimal") return hexadecimal(std::stoull(value, nullptr, 16), width);
    const double real = std::strtod(value.c_str(), nullptr);
    if (kind == "fixed") return fixed_field(real, width, more);
    if (kind == "scientific") return scientific_field(real, width, more);
    return kind == "shortest" ? shortest_real(real) : significant(real, more);
}

TEST(Fields, RightAlignedOrAsterisks) {
    for (const auto& row : support::table_of("fields.txt")) {
        const int more = std::stoi(row[3]);
        EXPECT_EQ("[" + field(row[0], row[1], std::stoi(row[2]), more) + "]", row[4]) << row[1];
    }
}

}  // namespace
}  // namespace flib
