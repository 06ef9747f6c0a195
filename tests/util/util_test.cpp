// The small routines: texts, names and files, elements, matrices.
#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cmath>
#include <ctime>
#include <random>

#include "flib/io/stop_run.h"
#include "flib/text/padded_view.h"
#include "flib/text/string.h"
#include "flib/text/string_utility.h"
#include "flib/util/elements.h"
#include "flib/util/file.h"
#include "flib/util/gjf.h"
#include "flib/util/math.h"
#include "flib/util/mod_timer.h"
#include "flib/util/units.h"
#include "support/support.h"

namespace flib {
namespace {

using support::ending;
using support::ending_of;

/// What a routine of this name makes of `text`, as the table tells it.
std::string told_by(const std::string& routine, std::string text, const std::string& more) {
    const auto judged = [&](bool yes) { return (yes ? "yes " : "no ") + text; };
    if (routine == "del_space") return del_space(text), text;
    if (routine == "lowercase") return lowercase(text), text;
    if (routine == "str_delete") return str_delete(text, more), text;
    if (routine == "strlowcase") return string_utility::strlowcase(text);
    if (routine == "is_letter") return judged(is_letter(text));
    if (routine == "is_number") return judged(is_number(text));
    if (routine == "number_of_words") return std::to_string(number_of_words(text));
    if (routine == "after_first") return std::string(after_first(more[0], text));
    if (routine == "name_base") return name_base(text);
    if (routine == "name_main") return name_main(text);
    if (routine == "element_number") return std::to_string(element_number(text));
    return "no such routine";
}

TEST(PaddedView, HoldsNothingBeyondItsColumns) {
    const padded_view line("abcdef", 4);
    EXPECT_FALSE(line.contains("de"));
    EXPECT_TRUE(line.columns(2, 3).equals("bc"));
    EXPECT_FALSE(line.columns(0, 3).contains(" "));
}

TEST(Texts, ByTable) {
    for (const auto& row : support::table_of("texts.txt")) {
        EXPECT_EQ(told_by(row[0], row[1], row[2]), row[3]) << row[0] << " of '" << row[1] << "'";
    }
}

TEST(File, Lines) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", "a\n\nb");
    EXPECT_EQ(num_file_lines(path + "  "), 3);
    std::vector<line_buffer> lines(7);
    const std::string bytes = support::contents_of(path);
    const auto size = static_cast<std::int64_t>(bytes.size());
    EXPECT_EQ(file_contents(path + " ", size), bytes);
    EXPECT_EQ(file_contents(path, size - 1), std::nullopt);
    EXPECT_TRUE(ending_of([] { file_contents("/no", 9); })->text.starts_with("/no: "));
    read_lines(path, 3, lines);
    EXPECT_TRUE(lines.size() == 3 && lines[0] == "a" && lines[1] == "" && lines[2] == "b");
    EXPECT_EQ(ending_of([&] { read_lines(path, 4, lines); })->text,
              path + ": line 3: the file ends where a further line was expected");
    EXPECT_EQ(ending_of([] { num_file_lines("/no "); }),
              (ending{1, " Error in opening file '/no' in function num_file_lines, stop!", true}));
}

TEST(Gjf, SectionsOfTheLastJob) {
    for (const auto& row : support::table_of("gjf.txt")) {
        const support::scratch_directory scratch;
        std::string found;
        for (const auto locate :
             {get_gjf_route_linenumber, get_gjf_title_linenumber, get_gjf_charge_linenumber,
              get_gjf_atom_linenumber, get_gjf_natom}) {
            std::int32_t number = -7;
            locate(scratch.file("f", row[0]), number);
            found += (found.empty() ? "" : " ") + std::to_string(number);
        }
        EXPECT_EQ(found, row[1]) << row[0];
    }
}

TEST(Timer, KnowsNoHours) {
    EXPECT_EQ(seconds_within_hour(0, 1, 250) - seconds_within_hour(59, 58, 500), -3597.25F);
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    const auto whole = static_cast<float>(local.tm_min * 60 + local.tm_sec);
    const float elapsed = timer{-5000}.elapsed_time() - 5000;
    EXPECT_TRUE((elapsed >= whole && elapsed < whole + 60) || elapsed < 60) << elapsed;
    timer started{-5000};
    started.start_timer();
    EXPECT_LT(started.elapsed_time(), 60);
}

TEST(Elements, WholeTable) {
    for (const auto& row : support::table_of("elements.txt")) {
        const std::int32_t z = std::stoi(row[0]);
        std::array mass{-1.0};
        nat_to_mass(1, std::array{z}, mass);
        EXPECT_EQ(element_symbol(z), row[1]);
        EXPECT_EQ(element_number(row[1]), z);
        EXPECT_EQ(mass[0], std::stod(row[2])) << row[1];
    }
}

TEST(Elements, InArrays) {
    std::array<fixed_text<2>, 5> symbol;
    const auto end = ending_of([&] { nat_to_symbol(4, std::array{118, 6, 0, -1}, symbol); });
    EXPECT_EQ(end, (ending{0, "Error!\nnat(4) = -1 is out of [1,118]", true}));
    EXPECT_TRUE(symbol[0] == "Uu" && symbol[1] == "C" && symbol[2] == "X" && symbol[3] == "");
    symbol[4] = "O";
    std::array<std::int32_t, 5> nat{7, 7, 7, 7, 7};
    symbol_to_nat(4, symbol, nat);  // of "Uu", "C", "X" and ""
    EXPECT_EQ(nat, (std::array{7, 6, 7, 7, 7}));
    std::array mass{-1.0, -2.0, -3.0, -4.0, -5.0};
    nat_to_mass(4, std::array{0, -1, 119, 1, 1}, mass);  // three are no elements
    EXPECT_EQ(mass, (std::array{-1.0, -2.0, -3.0, 1.007825037, -5.0}));
}

TEST(Extremum, IsTheFirstOfARowByRowScan) {
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        const auto n = static_cast<std::int32_t>(random() % 40);
        const auto values = random() % 9 + 1;  // the fewer there are, the more are equal
        matrix<double> a(n + 1, n, "a");       // the last row does not take part
        for (double& x : a.view().all()) {
            x = random() % 5 == 0 ? std::nan("") : static_cast<double>(random() % values) - 3;
        }
        element_location expected{0, 0};
        double largest = 0;
        for (std::int32_t k = 0; k < n * n; ++k) {
            const element_location at{k / n + 1, k % n + 1};
            const double magnitude = std::abs(a(at[0], at[1]));
            if (magnitude > largest) expected = at;
            largest = std::fmax(magnitude, largest);
        }
        element_location loc{7, 7};
        mat_abs_maxval_d(n, a.view(), loc);
        ASSERT_EQ(loc, expected) << "round " << round;
    }
}

TEST(SameSign, LooksAtTheProduct) {
    const double factors[][2] = {{-1e200, 1e200}, {-1, -1},          {2, 3},
                                 {0, -1},         {std::nan(""), 1}, {-1e-200, -1e-200}};
    std::vector<std::int32_t> signs;  // the last product underflows
    for (const auto& [a, b] : factors) signs.push_back(same_sign_d(a, b));
    EXPECT_EQ(signs, (std::vector<std::int32_t>{-1, 1, 1, 0, 0, 0}));
}

TEST(Units, AreTheseForAll) {
    EXPECT_EQ(bohr_radius, 0.529177249);
    EXPECT_EQ(hartree_energy, 27.211386245988);
}

TEST(Matrix, CountsItsElements) {
    EXPECT_EQ(element_count({INT_MAX, INT_MAX, INT_MAX, 0}, "a") + element_count({-1}, "a"), 0U);
    EXPECT_EQ(element_count({INT_MAX, INT_MAX}, "a"), std::size_t{INT_MAX} * INT_MAX);
    const std::initializer_list<std::int32_t> too_many{INT_MAX, INT_MAX, INT_MAX};
    EXPECT_EQ(ending_of([&] { element_count(too_many, "the rows"); }),
              (ending{2, "not enough memory for the rows", false}));
    EXPECT_EQ(ending_of([] { matrix<double>(INT_MAX, INT_MAX, "all"); })->text,
              "not enough memory for all");
    EXPECT_EQ(matrix<double>(-2, -3, "none").view().all().size(), 0U);
}

}  // namespace
}  // namespace flib
