#include "flib/io/free_format.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <sstream>
#include <vector>

#include "flib/io/unit.h"
#include "support/support.h"

namespace flib {
namespace {

/// What a file's reads give, in one line. Of `steps`, i r t take an integer, a real and a text, -
/// drops an item, I R take arrays of three, ; ends a read, H reads a record from which the items
/// that follow are taken, and L reads a record. An error ends it.
std::string taken(std::string_view contents, std::string_view steps) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", contents);
    const input_unit fid(path);
    std::ostringstream shown;
    std::optional<item_reader> reader;
    line_buffer held;
    const auto take = [&](auto& values) {
        reader->take(std::span(values));
        for (const auto value : values) shown << value << ' ';
    };
    const auto step = [&](char what) {
        std::array<std::int32_t, 3> integers{};
        std::array<double, 3> reals{};
        if (what == 'H' || what == 'L') {
            const bool read = read_record(fid, held);
            if (what == 'H')
                reader.emplace(held_record{fid, held.padded()});
            else
                shown << (read ? held.trimmed() : "END") << ' ';
            return;
        }
        if (!reader) reader.emplace(fid);
        if (what == 'I') take(integers);
        if (what == 'R') take(reals);
        if (what == '-') reader->take(discard{1});
        if (what == 'i') reader->take(integers[0]), shown << integers[0] << ' ';
        if (what == 'r') reader->take(reals[0]), shown << reals[0] << ' ';
        if (what == 't') {
            fixed_text<6> text;
            reader->take(text);
            shown << '[' << text.trimmed() << "] ";
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
        {"a,,b ,, c\n", "ttttt", "[a] [] [b] [] [c]"},
        {",a\n", "tt", "[] [a]"},
        {"'a b' /c* 2*3 abcdefgh\n", "ttttt", "['a] [b'] [/c*] [2*3] [abcdef]"},
        {"1 2 3\n4\n5 6\n", "i;ii;L", "1 4 5 END"},
        {"1 2\nx\ny\n", "--;;L", "y"},
        {"1\n2 3\n4\n", "-i;L", "2 4"},
        {"1 2\n3 4 5 x\n6 7.5\n8 x\n9\n", "I;R;L", "1 2 3 6 7.5 8 9"},
        {"1" + far + "2" + far + "\n3 x\n4\n", "rri;L", "1 2 3 4"},
        {far + "\n" + far + "7 " + long_item + " 8\n9\n", "i-i;L", "7 8 9"},
        {long_item + "," + long_item + "\n1\n", "tt;i", "[xxxxxx] [xxxxxx] 1"},
        {"1 2\n3\n", "HiiL", "1 2 3"},
        {"x\n1 2\n3\n", "LHi-i", "x 1 line 2: the line ends where an integer was expected"},
        {"\n3\n", "Ht", "line 1: the line ends where an item was expected"},
        {"1\nabc\n", "LHr", "1 line 2: 'abc'" + no_real},
        {"1\n\n2 x\n", "iii", "1 2 line 3: 'x'" + no_integer},
        {"1,,2\n", "ri", "1 line 1: nothing between two commas" + no_integer},
        {"1,,2\n", "rr", "1 line 1: nothing between two commas" + no_real},
        {"1.5\n", "i", "line 1: '1.5'" + no_integer},
        {"1.5.2 2\n", "r", "line 1: '1.5.2'" + no_real},
        {"\n2147483648\n", "i", "line 2: '2147483648' is too large for an integer"},
        {"1D+999\n", "r", "line 1: '1D+999' is too large for a real number"},
        {"1\n2\n", "iir", "1 2 line 2: the file ends where a real number was expected"},
        {"1 \n", "it", "1 line 1: the file ends where an item was expected"},
        {"", "i", "the file ends where an integer was expected (the file is empty)"},
        {"a\n", "LLi", "a END line 1: the file ended before this read"},
        {"1 2\nx 3\n", "I", "line 2: 'x'" + no_integer + " (value 3 of 3)"},
        {"1 2\n", "I", "line 1: the file is too short to hold 3 values, each an integer"},
        {"a\x1b\xff\n", "i", "line 1: 'a\\x1B\\xFF'" + no_integer},
        {long_item, "i", "line 1: '" + long_item.substr(0, 40) + "...'" + no_integer},
    };
    for (const auto& [contents, steps, expected] : cases) {
        EXPECT_EQ(taken(contents, steps), expected) << contents.substr(0, 40);
    }
}

TEST(FreeFormat, ArrayThatFillsTheFileAndOneThatCanNot) {
    const support::scratch_directory scratch;
    const input_unit fid(scratch.file("f", "1 2 3"));
    std::vector<std::int32_t> values(3);
    read_items(fid, std::span(values));  // no byte to spare
    EXPECT_EQ(values, (std::vector<std::int32_t>{1, 2, 3}));
    rewind_unit(fid);
    values.assign(4, 7);
    EXPECT_TRUE(support::ending_of([&] { read_items(fid, std::span(values)); }));
    EXPECT_EQ(values, std::vector<std::int32_t>(4, 7));
    EXPECT_TRUE(is_past_end(fid));
}

TEST(FreeFormat, ItemOfAText) {
    EXPECT_EQ(item_of(held_text{"name", 4, " a, bc\td "}, 3).trimmed(), "d");
    EXPECT_EQ(support::ending_of([] {
                  item_of(held_text{"name", 4, "a b"}, 3);
              })->text,
              "name: line 4: the line ends where an item was expected");
}

}  // namespace
}  // namespace flib
