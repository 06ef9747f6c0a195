// Texts for people and for other programs: tables, lines, numbers, ranges of numbers.
#include <gtest/gtest.h>

#include "common/csv.h"
#include "common/number_ranges.h"
#include "common/table.h"
#include "flib/io/fixed_field.h"
#include "flib/text/shown_text.h"
#include "support/session.h"

namespace {

using tools::paint;

std::string table_at(const std::string& name, const tools::terminal& on) {
    const tools::table rows{
        {{"Name"}, {"Length", true, 1}, {"Kind", false, 2}, {"Words"}},
        {{{name}, {"12.5"}, {"a"}, {"fine", paint::good}},
         {{"é"}, {"1.25", paint::strong}, {"long é"}, {"one two three four five six seven"}}}};
    return table_text(rows, on);
}

std::string ranges_text(const std::string& list, std::int32_t most) {
    const auto ranges = tools::parse_ranges("--atoms", list);
    std::string text;
    for (const std::int32_t number : tools::numbers_in(ranges, most)) {
        text += std::to_string(number) + " ";
    }
    return text + "of " + std::to_string(tools::largest_in(ranges));
}

std::string lines_text(const std::string& text, std::size_t width) {
    std::string all;
    for (const std::string& line : flib::wrapped(text, width)) all += '/' + line;
    return all.substr(1);
}

std::string made(const std::string& routine, const std::string& text) {
    const std::size_t blank = routine.rfind(' ');
    const std::string what = routine.substr(0, blank);
    const int number = std::stoi(routine.substr(blank));
    const auto width = static_cast<std::size_t>(number);
    if (what == "wrapped") return lines_text(text, width);
    if (what == "shortened") return flib::shortened(text, width);
    if (what == "decimal") return flib::decimal(std::stod(text), number);
    if (what == "real") return flib::shortest_real(std::stod(text));
    if (what == "csv") return tools::csv_real(std::stod(text));
    if (what == "csv line") return tools::csv_line(support::words_of(text));
    return support::answer_of("", [&] { return ranges_text(text, number); });
}

TEST(Texts, AreMadeAsTheRowsSay) {
    for (const auto& row : support::table_of("made_texts.txt")) {
        EXPECT_EQ(made(row[0], row[1]), row[2]) << row[0] << " of " << row[1];
    }
}

TEST(Texts, StandInTablesOfAnyWidth) {
    for (const auto& [step, expected] : support::session_of("made_tables.txt")) {
        const auto row = support::fields_of(step, 2);
        tools::terminal on;
        if (row[0] != "0") on.width = std::stoul(row[0]);
        EXPECT_EQ(table_at(row[1], on), expected) << "$ " << step;
    }
}

TEST(Texts, HaveColoursOnlyWhereThereAreSome) {
    const tools::terminal colours{.colours = true};
    const auto all = [](const tools::terminal& on) {
        std::string text;
        for (const paint each :
             {paint::none, paint::good, paint::bad, paint::faint, paint::strong}) {
            text += painted("ab", each, on) + '|';
        }
        return text + painted("", paint::bad, on);
    };
    EXPECT_EQ(all({}), "ab|ab|ab|ab|ab|");
    EXPECT_EQ(all(colours),
              "ab|\033[32mab\033[0m|\033[1;31mab\033[0m|\033[2mab\033[0m|\033[1mab\033[0m|");
    EXPECT_EQ(table_at("x", colours),
              "Name  Length  Kind    Words\n"
              "x       12.5  a       \033[32mfine\033[0m\n"
              "é       \033[1m1.25\033[0m  long é  one two three four five six seven\n");
}

}  // namespace
