// sgn_check as its users run it, on result files of the bundled set.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using words = std::vector<std::string>;

/// A directory with good result files: the reference, and oxygen moved along +x and -x.
class SgnCheck : public testing::Test {
  protected:
    SgnCheck() {
        fs::copy(EXAMPLES "/water", scratch_.path());
        run({"h2o_ref.fchk"}, "stigruz");
        run({"h2o_01xp.fchk", "h2o_ref.sgn"}, "stigruz");
        run({"h2o_01xm.fchk", "h2o_ref.sgn"}, "stigruz");
        fs::rename(path("h2o_ref.sgn"), path("ref.sgn"));
        fs::copy_file(path("h2o_01xp.sgn"), path("plus.sgn"));
        fs::rename(path("h2o_01xm.sgn"), path("minus.sgn"));
    }

    support::outcome run(const words& arguments, const char* tool = "sgn_check") const {
        return support::run({tool, arguments, scratch_.path()});
    }

    /// The file of +x, changed: "PATTERN>TEXT;..." puts texts where the patterns occur first.
    std::string changed(const std::string& changes) const {
        std::string text = support::contents_of(path("h2o_01xp.sgn"));
        std::istringstream in(changes);
        for (std::string pattern, with; std::getline(in, pattern, '>');) {
            std::getline(in, with, ';');
            text = std::regex_replace(text, std::regex(pattern), with,
                                      std::regex_constants::format_first_only);
        }
        return text;
    }

    std::string path(const std::string& name) const { return scratch_.path() / name; }

    support::scratch_directory scratch_;
};

TEST_F(SgnCheck, TellsWhatDeservesDoubt) {
    const struct {
        const char* changes;
        const char* option;  // "--": none
        std::string doubts;  // of the changed file and of its partner, by name
        const char* text;    // what people read, in part
    } cases[] = {
        {"", "--", ",", "0.0091  0.0091  1 O +x 0.0100         fine\n"},
        {" 1\n> 0\n", "--", "sign_zero,", "sign 0: the dipole is lost\n"},
        {" 1\n>-1\n", "--", "sign_conflict,", "the sign contradicts the elements"},
        {"4.366>1.366", "--", "small_element,", "small element: 0.313 of the reference's"},
        {"4.366>1.366", "--min-ratio=0.3", ",", " 0.313 "},
        {"1.4207860000E-03>             INF", "--", "not_finite,", "not finite numbers\n"},
        {" 15 > 16 ", "--", "other_element,", "judged at another element: 16,3 instead of 15,3"},
        {"22\n>23\n;4\n>5\n;7\n>8\n;4\n>6\n;1\n NFV>7\n NFV;0\n>8\n", "--", "other_sizes,",
         "nmo 23 instead of 22, mi 5 instead of 4, ma 18 instead of 17, mci 6 instead of 4, "
         "NFC 7 instead of 1, NFV 8 instead of 0"},
        {"3\n>2\n;\n +3 .*>;\n +3 .*>", "--", "other_sizes,no_partner", "natom 2 instead of 3"},
        {"H( .*) 1.0078>D$1 2.0140", "--", "other_atoms,", "2 is D 1 2.0140 instead of H 1 1.0078"},
        {"-0.76> 0.76; 0.76>-0.76", "--", "turned,no_partner", "molecule turned by 180.00 degrees"},
        {"-0.76> 0.76; 0.76>-0.76", "--max-rotation=181", "no_partner,no_partner", "opposite"},
        {"-5.353> 5.353", "--max-asymmetry=2", "dipole_turned,", "turned by 179.0"},
        {"-5.353> 5.353", "--max-turn=180", "asymmetric_pair,asymmetric_pair", "plus.sgn: 1.0708"},
        {"-5.353> 0.535", "--min-dipole=0.06", "asymmetric_pair,asymmetric_pair", "0.5890"},
        {"0.010>0.011", "--", "no_partner,no_partner", "no file with the opposite displacement"},
        {"0.010(.*)0.118>0.030$010.078", "--no-pairs", ",", "1 O (0.60,0.00,-0.80) 0.0500"},
        {"0.76>0.78", "--no-pairs", ",", "2 atoms, 2 H +y 0.0200"},
        {"0.010>0.000", "--", ",no_partner", " none "},
    };
    for (const auto& [changes, option, doubts, text] : cases) {
        support::write_file(path("plus.sgn"), changed(changes));
        const auto told = run({option, "ref.sgn", "plus.sgn", "minus.sgn"});
        EXPECT_EQ(told.status, doubts == "," ? 0 : 1);
        EXPECT_THAT(told.output, HasSubstr(text));
        const auto csv = run({"--csv", option, "ref.sgn", "plus.sgn", "minus.sgn"});
        const std::regex last_fields("[^]*,\r\nplus[^\n]*,(.*)\r\nminus.*,(.*)\r\n");
        EXPECT_EQ(std::regex_replace(csv.output, last_fields, "$1,$2"), doubts) << text;
    }
}

TEST_F(SgnCheck, NamesFilesItCanNotReadAndGoesOn) {
    const auto is_refused = [&](const std::string& contents, const std::string& why) {
        support::write_file(path("bad.sgn"), contents);
        const auto told = run({"ref.sgn", "plus.sgn", "bad.sgn", "minus.sgn"});
        EXPECT_EQ(told.status, 2);
        EXPECT_THAT(told.errors, testing::MatchesRegex("sgn_check: bad.sgn: " + why + "[^\n]*\n"));
        EXPECT_THAT(told.output, HasSubstr("All 3 files are fine."));
    };
    const std::string good = changed("");
    for (std::size_t i = 0; i + 1 < good.size(); i += 17) is_refused(good.substr(0, i), "");
    is_refused(good + good, "line 23: there is more");
    is_refused(changed("1\n>7\n"), "line 2: ");
    is_refused(changed("    0.010000>************"), "line 14: ");
    is_refused(changed(" 2    H> 3    H"), "line 15: expected atom 2");
    is_refused(changed("   3\n>1999\n"), "line 17: ");
    is_refused(changed("Number>Nr    "), "line 13: expected 'Number  Symbol");
    EXPECT_EQ(run({"bad.sgn", "plus.sgn"}).output, "");
}

TEST_F(SgnCheck, WritesJsonAndCsv) {
    if (!fs::exists("/usr/bin/python3")) GTEST_SKIP() << "no independent parser";
    const std::string odd = "o\"d,\n\xFF";
    fs::rename(path("minus.sgn"), path(odd));
    support::write_file(path("plus.sgn"), changed("4.3660557217E-01>NAN"));
    EXPECT_THAT(run({"--csv", "ref.sgn", "plus.sgn", odd}).output,
                HasSubstr("\r\n\"o\"\"d,\n\xFF\",-1,15,3,-0.43660557217,0.9996"));
    const auto told = run({"--json", "ref.sgn", "plus.sgn", odd, "absent.sgn"});
    support::write_file(path("told"), told.output);
    const auto json = run({"-m", "json.tool", "--compact", "told"}, "/usr/bin/python3");
    for (const char* part :
         {R"("value":null,"dipole":[-0.5353,-0.0,0.0091],"ratio":null)",
          R"(0.01},"rotation":null,"partner":"o\"d,\n\ufffd","asymmetry":0.0001)",
          R"("findings":[]}],"unreadable":[{"file":"absent.sgn")"}) {
        EXPECT_THAT(json.output, HasSubstr(part));
    }
}

TEST_F(SgnCheck, UnderstandsItsCommandLine) {
    for (const auto& [option, complaint] : {std::pair{"--jsn", "no option '--jsn'"},
                                            {"--max-turn=-1", "--max-turn takes a number"},
                                            {"--max-turn", "--max-turn needs a value"}}) {
        const auto told = run({"ref.sgn", "plus.sgn", option});
        EXPECT_EQ(told.status, 2);
        EXPECT_THAT(told.errors, HasSubstr(std::string("sgn_check: ") + complaint));
    }
    fs::rename(path("ref.sgn"), path("-ref.sgn"));
    EXPECT_EQ(run({"--no-pairs", "--max-turn", "1", "--", "-ref.sgn", "plus.sgn"}).status, 0);
}

TEST_F(SgnCheck, ColoursItsVerdictsOnATerminal) {
    const int terminal = run({"-qec", "true", "/dev/null"}, "/usr/bin/script").status;
    if (terminal != 0) GTEST_SKIP() << "no terminal to be had";
    for (const std::string settings : {"TERM=xterm NO_COLOR=", "TERM=xterm NO_COLOR=1"}) {
        const std::string command = settings + " " TOOL_DIRECTORY "/sgn_check ref.sgn plus.sgn";
        const std::string shown = run({"-qec", command, "/dev/null"}, "/usr/bin/script").output;
        const bool coloured = shown.find(" \033[32mfine\033[0m\r\n") != std::string::npos;
        EXPECT_EQ(coloured, settings.ends_with("=")) << shown;
    }
}

}  // namespace
