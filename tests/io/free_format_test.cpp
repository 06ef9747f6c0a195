#include "flib/io/free_format.h"

#include <gtest/gtest.h>

#include <array>
#include <sstream>

#include "flib/io/unit.h"
#include "support/support.h"

namespace flib {
namespace {

/// What a file's reads give, in one line. Of `steps`, i r t take an integer, a real and a text, R
/// and I take an array of three of them, - drops an item, ; ends a read, L reads a record, and H
/// takes the items that follow from it. An error ends it; behind it "END" tells that the end mark
/// has been passed, which is so still after a step back.
std::string taken(std::string_view contents, std::string_view steps) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", contents);
    const input_unit fid(path);
    std::ostringstream shown;
    std::optional<item_reader> reader;
    line_buffer held;
    std::int32_t integer = 0;
    std::array<double, 3> reals{};
    std::array<std::int32_t, 3> integers{};
    fixed_text<6> text;
    const auto end = support::ending_of([&] {
        for (const char what : steps) {
            if (what == 'L') shown << (read_record(fid, held) ? held.trimmed() : "END") << ' ';
            if (what == 'H') reader.emplace(held_record{fid, held.padded()});
            if (!reader && what != 'L') reader.emplace(fid);
            if (what == '-') reader->take(discard{1});
            if (what == 'i') reader->take(integer), shown << integer << ' ';
            if (what == 'r') reader->take(reals[0]), shown << reals[0] << ' ';
            if (what == 't') reader->take(text), shown << '[' << text.trimmed() << "] ";
            if (what == 'R') {
                reader->take(std::span<double>(reals));
                for (const double real : reals) shown << real << ' ';
            }
            if (what == 'I') {
                reader->take(std::span<std::int32_t>(integers));
                for (const int value : integers) shown << value << ' ';
            }
            if (what == ';') reader->finish(), reader.reset();
        }
    });
    if (end) shown << support::replaced(end->text, path + ": ", "");
    if (end && is_past_end(fid)) {
        step_back(fid);
        shown << (read_record(fid, held) ? " AGAIN" : " END");
    }
    return std::string(trim_right(shown.str()));
}

TEST(FreeFormat, TakesItemsWhereverTheyStand) {
    for (const auto& row : support::table_of("free_format.txt")) {
        EXPECT_EQ(taken(row[1], row[0]), row[2]) << row[1].substr(0, 40);
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
