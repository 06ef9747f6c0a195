#include "flib/io/number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include "flib/io/free_format.h"
#include "flib/io/unit.h"
#include "support/support.h"

namespace flib {
namespace {

/// Each of the blank-separated items as it was read: "?" if it is not a number, "!" if too large.
template <class Value, class Parse>
std::string read_as(std::string_view items, Parse parse) {
    std::istringstream in{std::string(items)};
    std::string results;
    for (std::string item; in >> item;) {
        Value value = 5;
        char text[64];
        const number_error error = parse(item, value);
        EXPECT_TRUE(error == number_error::none || value == 5) << item;
        const auto shown = std::to_chars(text, text + sizeof text, value);
        results += results.empty() ? "" : " ";
        if (error == number_error::none)
            results.append(text, shown.ptr);
        else
            results += error == number_error::too_large ? "!" : "?";
    }
    return results;
}
std::string integers(std::string_view items) {
    return read_as<std::int32_t>(items, parse_integer);
}
std::string reals(std::string_view items) {
    return read_as<double>(items, parse_real);
}

TEST(Integer, Forms) {
    EXPECT_EQ(integers("0 +7 -007 -0 2147483647 -2147483648"), "0 7 -7 0 2147483647 -2147483648");
    EXPECT_EQ(integers("2147483648 -2147483649 +99999999999999999999"), "! ! !");
    EXPECT_EQ(integers("+ - +-1 --1 1. 1e3 12a 0x1 ***** 1,"), "? ? ? ? ? ? ? ? ? ?");
    std::int32_t value = 5;
    EXPECT_EQ(parse_integer("", value), number_error::not_a_number);
}

TEST(Real, Forms) {
    EXPECT_EQ(reals("5 .5 5. +1.5 -0.0 -1.5D+02 1.e1 2Q2 2q-1"), "5 0.5 5 1.5 -0 -150 10 200 0.2");
    EXPECT_EQ(reals("1.23456789-100 .1+1 1-2 2e1 2E1 2d1"), "1.23456789e-100 1 0.01 20 20 20");
    EXPECT_EQ(reals("1-400 -1e-400 4.9D-324 2e-324 3e-310"), "0 -0 5e-324 0 3e-310");
    EXPECT_EQ(reals("0e99999999999999999999 1e-99999999999999999999"), "0 0");
    EXPECT_EQ(reals("inf -Infinity +INF nan -NaN +NAN"), "inf -inf inf nan -nan nan");
    EXPECT_EQ(reals("1.7976931348623157+308 1e309 -1.8D308 1+400 17976931348623159e292"),
              "1.7976931348623157e+308 ! ! ! !");
    EXPECT_EQ(reals(". + -. e5 .e5 1e 1e+ 1+ 1.2.3 1,5 1e5.0 1e5x ++1 +-1 0x1p3"),
              "? ? ? ? ? ? ? ? ? ? ? ? ? ? ?");
    EXPECT_EQ(reals("nan(1) .inf in infinit infinityy 1f5 1ee5 1e++5"), "? ? ? ? ? ? ? ?");
    const std::string zeros(400, '0');
    EXPECT_EQ(reals("0." + zeros + "3e401 3" + zeros + ".0D-400 " + zeros + "1" + zeros), "3 3 !");
    double value = 5;
    EXPECT_EQ(parse_real("", value), number_error::not_a_number);
}

/// Reals in all forms, as the C library reads them.
class real_writer {
  public:
    std::string next() {
        char text[200];
        switch (below(4)) {
            case 0:
                std::snprintf(text, sizeof text, "%.*e", static_cast<int>(below(20)), any());
                return text;
            case 1: {  // digits that just fit 64 bits, or nearly
                const int most = below(2) == 0 ? 60 : 600;
                const int power =
                    static_cast<int>(below(static_cast<std::size_t>(most))) - most * 11 / 20;
                return digits(15 + below(6)) + "e" + std::to_string(power);
            }
            case 2:
                return digits(1 + below(40));
            default: {  // half the way between two neighbours, as it is, rounded or a little beside
                const double near_one = std::ldexp(static_cast<double>(random_() >> 11),
                                                   static_cast<int>(below(120)) - 100);
                const double one = below(2) == 0 ? any() : near_one;
                const long double step =
                    std::nextafter(one, HUGE_VAL) - static_cast<long double>(one);
                const int decimals = below(2) == 0 ? 150 : 13 + static_cast<int>(below(6));
                const int length =
                    std::snprintf(text, sizeof text, "%.*Le", decimals, one + step / 2);
                if (below(3) == 0) *(std::find(text, text + length, 'e') - 1) = '1';
                return text;
            }
        }
    }

    std::size_t below(std::size_t n) { return random_() % n; }

  private:
    /// Up to 1e290, so that no change of its digits makes it too large.
    double any() {
        double value = std::bit_cast<double>(random_());
        while (!(std::abs(value) < 1e290)) value = std::bit_cast<double>(random_());
        return value;
    }

    std::string digits(std::size_t count) {
        std::string text;
        while (text.size() < count) text += static_cast<char>('0' + below(10));
        if (below(3) != 0) text.insert(below(count + 1), ".");
        return (below(3) == 0 ? "-" : "") + text;
    }

    std::mt19937_64 random_{4};
};

TEST(Real, CorrectlyRoundedAloneAndInFiles) {
    constexpr std::size_t count = 300000;
    real_writer writer;
    std::vector<std::uint64_t> expected;
    std::string contents;
    for (std::size_t i = 0; i < count; ++i) {
        std::string item = writer.next();
        const double value = std::strtod(item.c_str(), nullptr);
        expected.push_back(std::bit_cast<std::uint64_t>(value));
        if (const std::size_t e = item.find('e'); e != std::string::npos) {
            const bool has_sign = item[e + 1] == '-' || item[e + 1] == '+';
            if (has_sign && writer.below(8) == 0)
                item.erase(e, 1);
            else
                item[e] = "eEdDqQ"[writer.below(6)];
        }
        double parsed = 5;
        ASSERT_EQ(parse_real(item, parsed), number_error::none) << item;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(parsed), expected.back()) << item;
        constexpr const char* separators[] = {" ", "\n", ",", "\r\n", " , ", "\t", "\n \n", ",\n"};
        contents += item + separators[writer.below(std::size(separators))];
    }
    const support::scratch_directory scratch;
    const input_unit fid(scratch.file("reals", contents));
    std::vector<double> values(count);
    read_items(fid, std::span(values));
    for (std::size_t i = 0; i < count; ++i) {
        ASSERT_EQ(std::bit_cast<std::uint64_t>(values[i]), expected[i]) << i;
    }
}

}  // namespace
}  // namespace flib
