#include "flib/io/free_format.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <sstream>

#include "flib/io/unit.h"
#include "support/support.h"

namespace flib {
namespace {

/// What a file's reads give, in one line. Of `steps`, i r t take an integer, a real and a text, R
/// takes an array of three reals, - drops an item, ; ends a read, L reads a record, and H takes
/// the items that follow from it. An error ends it.
std::string taken(std::string_view contents, std::string_view steps) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", contents);
    const input_unit fid(path);
    std::ostringstream shown;
    std::optional<item_reader> reader;
    line_buffer held;
    std::int32_t integer = 0;
    std::array<double, 3> reals{};
    fixed_text<6> text;
    const auto step = [&](char what) {
        if (what == 'L') {
            shown << (read_record(fid, held) ? held.trimmed() : "END") << ' ';
            return;
        }
        if (what == 'H') reader.emplace(held_record{fid, held.padded()});
        if (!reader) reader.emplace(fid);
        if (what == '-') reader->take(discard{1});
        if (what == 'i') reader->take(integer), shown << integer << ' ';
        if (what == 'r') reader->take(reals[0]), shown << reals[0] << ' ';
        if (what == 't') reader->take(text), shown << '[' << text.trimmed() << "] ";
        if (what == 'R') {
            reader->take(std::span<double>(reals));
            for (const double real : reals) shown << real << ' ';
        }
        if (what == ';') {
            reader->finish();
            reader.reset();
        }
    };
    const auto end = support::ending_of([&] {
        for (const char what : steps) step(what);
    });
    if (end) shown << (end->text.starts_with(path) ? end->text.substr(path.size() + 2) : end->text);
    return std::string(trim_right(shown.str()));
}

TEST(FreeFormat, TakesItemsWhereverTheyStand) {
    const std::string far(300000, ' ');
    const std::string long_item(300000, 'x');
    const std::string no_integer = " stands where an integer was expected";
    const std::string no_real = " stands where a real number was expected";
    const struct {
        std::string contents;
        const char* steps;
        std::string expected;
    } cases[] = {
        {"1,2 ,3\t4 ,\t5,6\n", "iiriii", "1 2 3 4 5 6"},
        {"\n \t\n\r\n 1\r\n\r\n,2,\n3\r\n", "iii", "1 2 3"},
        {",a,,b ,, c\n", "tttttt", "[] [a] [] [b] [] [c]"},
        {"'a b' /c* 2*3 abcdefgh\n", "ttttt", "['a] [b'] [/c*] [2*3] [abcdef]"},
        {"1 2 3\n4\n5 6\n", "i;-i;L", "1 5 END"},
        {"1 2\n3 4 5 x\n6 7.5\n8 x\n9\n", "i;R;R;L", "1 3 4 5 6 7.5 8 9"},
        {"1" + far + "2" + far + "\n3 x\n4\n", "rri;L", "1 2 3 4"},
        {far + "\n" + far + "7 " + long_item + " 8\n9\n", "i-i;L", "7 8 9"},
        {long_item + "," + long_item + "\n1\n", "tt;i", "[xxxxxx] [xxxxxx] 1"},
        {"1 2\n3\n", "LHi-i", "1 2 1 line 1: the line ends where an integer was expected"},
        {"1\nabc\n", "LLHr", "1 abc line 2: 'abc'" + no_real},
        {"1\n" + far + "\n2 x\n", "iii", "1 2 line 3: 'x'" + no_integer},
        {"1,,2\n", "ri", "1 line 1: nothing between two commas" + no_integer},
        {"\n2147483648\n", "i", "line 2: '2147483648' is too large for an integer"},
        {"1D+999\n", "r", "line 1: '1D+999' is too large for a real number"},
        {"1\n2\n", "iir", "1 2 line 2: the file ends where a real number was expected"},
        {"", "i", "the file ends where an integer was expected (the file is empty)"},
        {"a\n", "LLi", "a END line 1: the file ended before this read"},
        {"1 2\n3", "R", "1 2 3"},
        {"1 2\nx 3\n", "R", "line 2: 'x'" + no_real + " (value 3 of 3)"},
        {"1 2\n", "R", "line 1: the file is too short to hold 3 values, each a real number"},
        {long_item, "i", "line 1: '" + long_item.substr(0, 40) + "...'" + no_integer},
    };
    for (const auto& [contents, steps, expected] : cases) {
        EXPECT_EQ(taken(contents, steps), expected) << contents.substr(0, 40);
    }
}

TEST(FreeFormat, ItemOfAText) {
    const auto item = [](std::int32_t n) { return item_of(held_text{"name", 4, " a, bc"}, n); };
    EXPECT_EQ(item(2).trimmed(), "bc");
    EXPECT_EQ(support::ending_of([&] { item(3); })->text,
              "name: line 4: the line ends where an item was expected");
}

}  // namespace
}  // namespace flib
