// The sign tool's short ways to the element it judges by, against the public routines: the same
// element to the last bit, or the same ending, whatever is in the files.
#include "sgn/job/chosen_element.h"

#include <gmock/gmock.h>

#include <random>

#include "support/job.h"
#include "support/support.h"
#include "support/whole_density.h"

namespace {

namespace fs = std::filesystem;
using support::job;

class ChosenElement : public testing::Test {
  protected:
    sgn::density_source write(const job& what, const support::writing& how = {}) const {
        support::write_job(scratch_.path(), "a", what, how);
        const std::int32_t n = what.nbasis();
        return {ffch, fcis, {n, n, what.mi, what.ma, what.nfc, what.nfv}, what.mci};
    }

    /// What both ways come to; a failure of the test if they differ.
    static std::string told(const sgn::density_source& source, const flib::element_location* at) {
        const std::string by_tool = support::told_by_tool(source, at);
        EXPECT_EQ(by_tool, support::told_by([&] { return support::whole_density(source, at); }));
        return by_tool;
    }

    int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

    /// Puts `text` in the place of one number behind the heading.
    void spoil_number(const std::string& path, std::string_view heading, const std::string& text) {
        std::string contents = support::contents_of(path);
        std::size_t at = contents.find('\n', contents.find(heading));
        at += random() % (contents.size() - at);
        const std::size_t from = contents.find_first_not_of(" \n", at);
        if (from == std::string::npos) return;
        const std::size_t to = std::min(contents.find_first_of(" \n", from), contents.size());
        support::write_file(path, contents.replace(from, to - from, text));
    }

    std::mt19937_64 random{32};
    const support::scratch_directory scratch_;
    const std::string ffch = scratch_.path() / "a.fchk";
    const std::string fcis = scratch_.path() / "a.cis";
};

TEST_F(ChosenElement, IsThatOfTheWholeDensity) {
    const char* const numbers[] = {"NaN",   "-inf", "Infinity", "-0.0", "1D+300", "-9.99E-310",
                                   "1e999", "x",    "1.5.5",    "1,,2", "",       "1 2"};
    int returned = 0;
    for (int round = 0; round < 250; ++round) {
        // Coefficients of more than 64 functions come in several parts.
        const int most = round % 25 == 0 ? 90 : 30;
        const job now = support::random_job(random, 1, number(0, 3), number(1, 6),
                                            number(most - 29, most), number(0, 3), number(1, 4));
        support::writing how;
        if (round % 4 == 1) how.end_of_line = "\r\n";
        if (round % 4 == 2) how.per_line = number(1, 7);
        how.layout_told = round % 3 != 0;
        sgn::density_source source = write(now, how);
        for (int i = number(0, 3); i > 0; --i) {
            const bool coefficient = number(0, 1) == 0;
            const std::string& path = coefficient ? ffch : fcis;
            // Half of them numbers, however odd.
            spoil_number(path, coefficient ? "Alpha MO" : "Dump of file",
                         numbers[number(0, number(0, 1) == 0 ? 5 : 11)]);
            if (number(0, 15) == 0) {
                fs::resize_file(path, fs::file_size(path) - random() % 300);
            }
        }
        // Counts as a reference of another job may have them.
        std::int32_t* const counts[] = {
            &source.counts.nbasis, &source.counts.nbsuse, &source.counts.mi, &source.counts.ma,
            &source.counts.nfc,    &source.counts.nfv,    &source.mci};
        constexpr std::int32_t others[] = {-1, 0, 1, 2, 60};
        if (number(0, 3) == 0) *counts[number(0, 6)] = others[number(0, 4)];
        const flib::element_location at{number(0, now.nbasis() + 1), number(1, now.nbasis())};
        SCOPED_TRACE(round);
        returned += told(source, nullptr).starts_with("(") ? 1 : 0;
        returned += told(source, &at).starts_with("(") ? 1 : 0;
    }
    EXPECT_GT(returned, 120);
    EXPECT_LT(returned, 380);
}

TEST_F(ChosenElement, TellsWhatIsWrongInTheOrderOfTheWholeRun) {
    const job now = support::random_job(random, 1, 1, 2, 12, 1, 2);
    sgn::density_source source;
    flib::element_location at;
    const auto spoil = [](const std::string& path, std::string_view behind, std::string_view here,
                          const char* after) {
        std::string text = support::contents_of(path);
        const std::size_t from = text.find(here, text.find(behind) + behind.size());
        support::write_file(path, text.replace(from, here.size(), after));
    };
    // Of two of them, the first is told.
    const struct {
        std::string says;
        std::function<void()> make;
    } faults[] = {
        {"status 0: Error! nbasis = ", [&] { source.counts.nbasis = 0; }},
        {"272 MO coefficients were asked for", [&] { source.counts.nbsuse = 17; }},
        {"a.fchk: cannot be opened", [&] { fs::remove(ffch); }},
        {"status 1: The method has not", [&] { spoil(ffch, "", "basis functions", "functions"); }},
        {"without a line with 'Alpha MO", [&] { spoil(ffch, "", "Alpha MO", "Alpha-MO"); }},
        {"too short to hold 256", [&] { fs::resize_file(ffch, fs::file_size(ffch) - 4000); }},
        {"'1.2.3' stands where", [&] { spoil(ffch, "Alpha MO", "E-01 ", "E-01 1.2.3 "); }},
        {"a.cis: cannot be opened", [&] { fs::remove(fcis); }},
        {"a.cis: line 3: 'e' stands", [&] { spoil(fcis, "right):\n", " ", " e "); }},
        {"a.cis: line 4: '-' stands", [&] { spoil(fcis, "right):\n", "\n", "\n - "); }},
        {"mi + nfc + ma + nfv = 17", [&] { source.counts.nfv = 2; }},
        {"there are 0 amplitudes of 24", [&] { source.mci = 0; }},
        {"lies outside", [&] { at[1] = 17; }},
    };
    for (std::size_t first = 0; first < std::size(faults); ++first) {
        for (std::size_t second = first; second < std::size(faults); ++second) {
            source = write(now);
            at = {1, 1};
            faults[second].make();
            if (second > first) faults[first].make();
            // Without roots none of the dump's numbers is asked for.
            if (source.mci == 0 && faults[first].says.ends_with("stands")) continue;
            SCOPED_TRACE(std::to_string(first) + " and " + std::to_string(second));
            EXPECT_THAT(told(source, &at), testing::HasSubstr(faults[first].says));
            if (first + 1 == std::size(faults)) continue;
            EXPECT_THAT(told(source, nullptr), testing::HasSubstr(faults[first].says));
        }
    }
}

}  // namespace
