// The small routines: texts, names and files, elements, matrices.
#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cmath>
#include <ctime>
#include <random>

#include "flib/io/stop_run.h"
#include "flib/text/string.h"
#include "flib/text/string_utility.h"
#include "flib/util/elements.h"
#include "flib/util/file.h"
#include "flib/util/gjf.h"
#include "flib/util/math.h"
#include "flib/util/mod_timer.h"
#include "support/support.h"

namespace flib {
namespace {

using support::ending;
using support::ending_of;

TEST(String, ChangesInPlace) {
    std::string text = "  N A\t[ \xc9";
    del_space(text);
    lowercase(text);
    EXPECT_EQ(text, "na\t[\xc9    ");
    EXPECT_EQ(strlowcase("@AZ`") + string_utility::strlowcase("NFC "), "@az`nfc ");
    for (const auto& [given, word, expected] : {std::tuple{"XYaXYb ", "xY", "a      "},
                                                {"abXYc", "XY", "ab   "},
                                                {"aXYbcd", "XY ", "abcd  "},
                                                {"short ", "longer", "short "},
                                                {"XY ", "xy", "   "},
                                                {"a b", "", "a b"}}) {
        text = given;
        str_delete(text, word);
        EXPECT_EQ(text, expected);
    }
}

TEST(String, LettersDigitsAndWords) {
    for (const std::string given :
         {"Az", "09", "A b", "-1", "1.", " ", "a\t", "@", "[", "`", "{", "/", ":"}) {
        std::string letters = " " + given;
        std::string digits = letters;
        EXPECT_EQ(is_letter(letters), given == "Az") << given;
        EXPECT_EQ(is_number(digits), given == "09") << given;
        EXPECT_EQ(letters + digits, given + " " + given + " ");
    }
    EXPECT_EQ(number_of_words("a bc  d e  "), 4);
    EXPECT_EQ(number_of_words("  a\tb c"), 1);  // as many columns are walked as without margins
}

TEST(File, Lines) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", "a\n\nb");
    EXPECT_EQ(num_file_lines(path + "  "), 3);
    std::vector<line_buffer> lines(7);
    read_lines(path, 3, lines);
    EXPECT_TRUE(lines.size() == 3 && lines[0] == "a" && lines[2] == "b");
    EXPECT_THROW(read_lines(path, 4, lines), io_error);
    EXPECT_EQ(ending_of([] { num_file_lines("/no "); }),
              (ending{1, " Error in opening file '/no' in function num_file_lines, stop!", true}));
}

TEST(File, NamesWithoutDirectoryAndExtension) {
    for (const auto& [name, base, main] : {std::tuple{"/a.b/c.opt.fchk", "c.opt.fchk", "c.opt"},
                                           {".hidden", ".hidden", ""},
                                           {"  d/ a\\b.c", " a\\b.c", " a\\b"},
                                           {"a/ ", "", ""}}) {
        EXPECT_EQ(name_base(name), base);
        EXPECT_EQ(name_main(name), main);
    }
}

TEST(Gjf, SectionsOfTheLastJob) {
    // Of route, title, charge and first atom, and the number of atoms.
    const std::pair<const char*, std::vector<std::int32_t>> cases[] = {
        {"  # a\nb\n  \nt\n\n0 1\nH\nO", {1, 4, 6, 7, 2}},
        {"# a\n\nt\n\n0 1\nH\n\n--Link1--\n# b\n\nt\n\n0 1\nC\nC\n\nH\n", {9, 11, 13, 14, 2}},
        {"# a\n\t\n\n\n\n0 1\n\n", {1, 4, 6, 7, 0}},
        {"# a\n\nt\n0 1\nH\n", {1, 3, 0, 0, 0}},
        {"# a\n\nt\n\n", {1, 3, 5, 6, 0}},
        {"title\n\n", {0, 0, 0, 0, 0}},
    };
    for (const auto& [contents, expected] : cases) {
        const support::scratch_directory scratch;
        std::vector<std::int32_t> got;
        for (const auto locate :
             {get_gjf_route_linenumber, get_gjf_title_linenumber, get_gjf_charge_linenumber,
              get_gjf_atom_linenumber, get_gjf_natom}) {
            locate(scratch.file("f", contents), got.emplace_back(-7));
        }
        EXPECT_EQ(got, expected) << contents;
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
}

TEST(Elements, WholeTable) {
    double weighted_sum = 0;
    std::string symbols;
    for (std::int32_t z = 1; z <= 118; ++z) {
        std::array mass{-1.0};
        nat_to_mass(1, std::array{z}, mass);
        weighted_sum += z * mass[0];
        symbols += element_symbol(z);
        EXPECT_EQ(element_number(element_symbol(z)), z);
    }
    EXPECT_NEAR(weighted_sum, 855609.737519956, 1e-7);
    EXPECT_EQ(symbols,
              "HHeLiBeBCNOFNeNaMgAlSiPSClArKCaScTiVCrMnFeCoNiCuZnGaGeAsSeBrKrRbSrYZrNbMoTcRuRhP"
              "dAgCdInSnSbTeIXeCsBaLaCePrNdPmSmEuGdTbDyHoErTmYbLuHfTaWReOsIrPtAuHgTlPbBiPoAtRnF"
              "rRaAcThPaUNpPuAmCmBkCfEsFmMdNoLrRfDbSgBhHsMtDsRgCnUutFlUupLvUusUuo");
}

TEST(Elements, SymbolsInFields) {
    std::array<fixed_text<2>, 4> symbol;
    const auto end = ending_of([&] { nat_to_symbol(4, std::array{118, 6, 0, -1}, symbol); });
    EXPECT_EQ(end, (ending{0, "Error!\nnat(4) = -1 is out of [1,118]", true}));
    EXPECT_TRUE(symbol[0] == "Uu" && symbol[1] == "C" && symbol[2] == "X" && symbol[3] == "");
    std::array<std::int32_t, 4> nat{7, 7, 7, 7};
    symbol_to_nat(4, symbol, nat);  // of "Uu", "C", "X" and ""
    EXPECT_EQ(nat, (std::array{7, 6, 7, 7}));
    EXPECT_EQ(element_number(" cL") + element_number("Uuox"), 17 + 118);
    std::array mass{-1.0, -2.0, -3.0};
    nat_to_mass(3, std::array{0, -1, 119}, mass);  // of no element
    EXPECT_EQ(mass, (std::array{-1.0, -2.0, -3.0}));
    EXPECT_EQ(element_number("C1") + element_number("Og") + element_number("chlorine"), 0);
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
    EXPECT_EQ(same_sign_d(-1e200, 1e200), -1);
    EXPECT_EQ(same_sign_d(-1, -1), 1);
    EXPECT_EQ(same_sign_d(std::nan(""), 1), 0);
    EXPECT_EQ(same_sign_d(-1e-200, -1e-200), 0);  // it underflows
}

TEST(Matrix, CountsItsElements) {
    EXPECT_EQ(element_count({INT_MAX, INT_MAX, INT_MAX, 0}, "a") + element_count({-1}, "a"), 0U);
    EXPECT_EQ(element_count({INT_MAX, INT_MAX}, "a"), std::size_t{INT_MAX} * INT_MAX);
    const std::initializer_list<std::int32_t> too_many{INT_MAX, INT_MAX, INT_MAX};
    EXPECT_EQ(ending_of([&] { element_count(too_many, "the rows"); }),
              (ending{2, "not enough memory for the rows", false}));
}

}  // namespace
}  // namespace flib
