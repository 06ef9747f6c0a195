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
    const std::string turned = "-0.76> 0.76; 0.76>-0.76";
    const struct {
        std::string changes;
        words options;
        std::string doubts;  // of the changed file and of its partner, by name
        const char* text;    // what people read, in part
    } cases[] = {
        {"", {}, ",", "0.0091  0.0091  1 O +x 0.0100     fine\n"},
        {" 1\n> 0\n", {}, "sign_zero,", "sign 0: the dipole is lost\n"},
        {" 1\n>-1\n", {}, "sign_conflict,", "the sign contradicts the elements"},
        {"4.366>1.366", {}, "small_element,", "small element: 0.313 of the reference's"},
        {"4.366>1.366", {"--min-ratio=0.3"}, ",", " 0.313 "},
        {"4.3660557217>4.3674325520", {"--min-ratio=1"}, ",small_element", " 1.000 "},
        {" 4.3660557217E>-0.0000000000E", {}, "small_element,", "small element: 0.000 of"},
        {"1.4207860000E-03>             INF", {}, "not_finite,", "not finite numbers\n"},
        {" 15 > 16 ", {}, "other_element,", "judged at another element: 16,3 instead of 15,3"},
        {"22\n>23\n;4\n>5\n;7\n>8\n;4\n>6\n;1\n NFV>7\n NFV;0\n>8\n",
         {},
         "other_sizes,",
         "nmo 23 instead of 22, mi 5 instead of 4, ma 18 instead of 17, mci 6 instead of 4, "
         "NFC 7 instead of 1, NFV 8 instead of 0"},
        {"3\n>2\n;\n +3 .*>;\n +3 .*>", {}, "other_sizes,no_partner", "natom 2 instead of 3"},
        {"H( .*) 1.0078>D$1 2.0140",
         {},
         "other_atoms,",
         "atom 2 is D 1 2.014025 instead of H 1 1.007825"},
        {"1.00782500>1.00782700", {}, "other_atoms,", "H 1 1.007827 instead of H 1 1.007825"},
        {"1.00782500>1.00782550", {}, ",", "fine"},
        {"H       1>H       2", {}, "other_atoms,", "atom 2 is H 2 1.007825 instead of H 1"},
        {turned, {}, "turned,no_partner", "turned by 180.00 degrees: the frame was not kept, the"},
        {turned,
         {"--max-rotation=181"},
         "no_partner,no_partner",
         "no file with the opposite displacement (turned by 180.00 degrees)\n"},
        {turned, {"--max-rotation=181", "--no-pairs"}, ",", "3 atoms, 2 H -y 1.5200"},
        {"-5.353> 5.353", {"--max-asymmetry=2"}, "dipole_turned,", "turned by 179.0"},
        {"-5.353> 5.353",
         {"--max-turn=180"},
         "asymmetric_pair,asymmetric_pair",
         "plus.sgn: 1.0708"},
        {"-5.353> 0.535", {"--min-dipole=0.06"}, "asymmetric_pair,asymmetric_pair", "0.5890"},
        {"-5.3530000000E> 6.0000000000E", {"--min-dipole=0.55", "--max-asymmetry=3"}, ",", "fine"},
        {"-5.353> 0.535", {"--max-asymmetry=0.589"}, "dipole_turned,", "fine"},
        {"0.010>0.011", {}, "no_partner,no_partner", "no file with the opposite displacement\n"},
        {"0.010000>0.010004", {}, ",", "1 O +x 0.0100"},
        {"0.010000>0.010006", {}, "no_partner,no_partner", "1 O +x 0.0100"},
        {"0.010(.*)0.118>0.030$010.078", {"--no-pairs"}, ",", "1 O (0.60,0.00,-0.80) 0.0500"},
        {"0.760000>0.760004", {"--no-pairs"}, ",", " 1 O +x 0.0100"},
        {"0.760000>0.760006", {"--no-pairs"}, ",", "2 atoms, 1 O +x 0.0100"},
        {"0.76>0.78", {"--no-pairs"}, ",", "2 atoms, 2 H +y 0.0200"},
        {"0.010>0.000", {}, "not_displaced,no_partner", " none "},
        {"0.010>0.000", {"--no-pairs"}, "not_displaced,", "the geometry is the reference's\n"},
        {" 0.010>-0.010",
         {"--max-asymmetry=1"},
         "no_partner,repeated no_partner",
         "the geometry is that of plus.sgn"},
        {" 0.010>-0.010", {"--no-pairs"}, ",repeated", "the geometry is that of plus.sgn\n"},
        {" 0.010>-0.010", {"--no-pairs", "--max-asymmetry=0.0183"}, ",", "fine"},
    };
    for (const auto& [changes, options, doubts, text] : cases) {
        support::write_file(path("plus.sgn"), changed(changes));
        words line{"ref.sgn", "plus.sgn", "minus.sgn"};
        line.insert(line.begin() + 1, options.begin(), options.end());
        const auto told = run(line);
        EXPECT_EQ(told.status, doubts == "," ? 0 : 1) << text;
        EXPECT_THAT(told.output, HasSubstr(text));
        line.insert(line.end(), "--csv");
        const auto csv = run(line);
        const std::regex last_fields("[^]*,\r\nplus[^\n]*,(.*)\r\nminus.*,(.*)\r\n");
        EXPECT_EQ(std::regex_replace(csv.output, last_fields, "$1,$2"), doubts) << text;
    }
}

TEST_F(SgnCheck, CountsFilesItCannotReadAndGoesOn) {
    const auto is_refused = [&](const std::string& contents, const std::string& why) {
        support::write_file(path("bad.sgn"), contents);
        const auto told = run({"ref.sgn", "plus.sgn", "bad.sgn", "minus.sgn"});
        EXPECT_EQ(told.status, 2);
        EXPECT_THAT(told.errors, testing::MatchesRegex("sgn_check: bad.sgn: " + why + "[^\n]*\n"));
        EXPECT_THAT(told.output,
                    testing::EndsWith("\nOf 4 files 1 cannot be read, the others are fine.\n"));
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
    support::write_file(path("plus.sgn"), changed(" 1\n> 0\n"));
    EXPECT_THAT(run({"ref.sgn", "bad.sgn", "plus.sgn", "absent.sgn"}).output,
                testing::EndsWith("\n1 of 4 files deserve doubt, 2 cannot be read.\n"));
}

TEST_F(SgnCheck, TakesTheReferenceOnceAndNeedsAnotherFile) {
    const auto told = run({"ref.sgn", "./ref.sgn", "plus.sgn", "minus.sgn"});
    EXPECT_EQ(told.status, 0);
    EXPECT_THAT(told.output, testing::EndsWith("\nAll 3 files are fine.\n"));
    const auto alone = run({"ref.sgn", "./ref.sgn"});
    EXPECT_EQ(alone.status, 2);
    EXPECT_EQ(alone.output + alone.errors, "sgn_check: ref.sgn: there is no other file to check\n");
}

TEST_F(SgnCheck, WritesJsonAndCsv) {
    const std::string odd = "o\"d,\n\xFF";
    fs::rename(path("minus.sgn"), path(odd));
    support::write_file(path("plus.sgn"), changed("4.3660557217E-01>NAN;0.010000>0.003000;"
                                                  "0.760000>0.764000"));
    const words line{"ref.sgn", "plus.sgn", odd, "h2o_01xp.sgn", "absent.sgn", "--max-turn", "0.5"};
    const auto with = [&](const char* form) {
        words all = line;
        all.emplace_back(form);
        return run(all).output;
    };
    EXPECT_EQ(with("--csv"),
              "file,sign,row,column,value,ratio,dipole_x,dipole_y,dipole_z,change_x,change_y,"
              "change_z,turn,moved_atoms,atom,symbol,shift_x,shift_y,shift_z,distance,rotation,"
              "partner,asymmetry,sum_rules_chi2,sum_rules_largest,sum_rules_satisfied,findings\r\n"
              "ref.sgn,1,15,3,0.4367432552,,-0.5354,-0,-0,,,,,,,,,,,,,,,,,,\r\n"
              "plus.sgn,1,15,3,,,-0.5353,-0,0.0091,9.999999999998899e-05,0,0.0091,0."
              "9739237362039949,2,2,H,0,0.0040000000000000036,0,0.0040000000000000036,,,,,,,not_"
              "finite dipole_turned no_partner\r\n"
              "\"o\"\"d,\n\xFF\",-1,15,3,-0.43660557217,0.9996847506438606,-0.5353,0,-0.0091,9."
              "999999999998899e-05,0,-0.0091,0.9739237362039949,1,1,O,-0.01,0,0,0.01,0,h2o_01xp."
              "sgn,0.00019999999999997797,,,,dipole_turned\r\n"
              "h2o_01xp.sgn,1,15,3,0.43660557217,0.9996847506438606,-0.5353,-0,0.0091,9."
              "999999999998899e-05,0,0.0091,0.9739237362039949,1,1,O,0.01,0,0,0.01,0,\"o\"\"d,"
              "\n\xFF\",0.00019999999999997797,,,,dipole_turned\r\n");
    EXPECT_EQ(with("--json"), support::contents_of(support::data_file("sgn_check.json")));
}

TEST_F(SgnCheck, UnderstandsItsCommandLine) {
    const struct {
        words line;
        const char* complaint;
    } cases[] = {
        {{"ref.sgn", "plus.sgn", "--jsn"}, "no option '--jsn' (see --help)"},
        {{"ref.sgn", "--max-turn=-1", "plus.sgn"},
         "--max-turn takes a number, 0 or above, not '-1'"},
        {{"ref.sgn", "plus.sgn", "--max-turn"}, "--max-turn needs a value"},
        {{"--json", "ref.sgn", "plus.sgn", "--csv"}, "--json and --csv exclude each other"},
        {{"ref.sgn"},
         "needs a reference and files to check (usage: sgn_check [OPTIONS] REFERENCE.sgn "
         "FILE.sgn...)"},
    };
    for (const auto& [line, complaint] : cases) {
        const auto told = run(line);
        EXPECT_EQ(told.status, 2);
        EXPECT_EQ(told.output + told.errors, std::string("sgn_check: ") + complaint + "\n");
    }
    fs::rename(path("ref.sgn"), path("-ref.sgn"));
    EXPECT_EQ(run({"--no-pairs", "--max-turn", "1", "--", "-ref.sgn", "plus.sgn"}).status, 0);
    EXPECT_EQ(run({"--version"}).output.substr(0, 10), "sgn_check ");
    EXPECT_EQ(run({"-h"}).output, run({"--help"}).output);
}

TEST_F(SgnCheck, FitsATerminalAndColoursItsVerdicts) {
    const int terminal = run({"-qec", "true", "/dev/null"}, "/usr/bin/script").status;
    if (terminal != 0) GTEST_SKIP() << "no terminal to be had";
    support::write_file(path("plus.sgn"), changed("-5.353> 5.353"));
    const auto shown = [&](const std::string& settings) {
        const std::string command = "stty cols 80; " + settings +
                                    " " TOOL_DIRECTORY "/sgn_check ref.sgn plus.sgn minus.sgn";
        return run({"-qec", command, "/dev/null"}, "/usr/bin/script").output;
    };
    EXPECT_EQ(shown("TERM=dumb"),
              "File       Sign  Ratio  Moved (Angstrom)  Verdict\r\n"
              "ref.sgn       1         reference         fine\r\n"
              "plus.sgn      1  1.000  1 O +x 0.0100     dipole turned by 179.0 degrees; dipole\r\n"
              "                                          not symmetric with minus.sgn: 1.0708\r\n"
              "                                          au\r\n"
              "minus.sgn    -1  1.000  1 O -x 0.0100     dipole not symmetric with plus.sgn:\r\n"
              "                                          1.0708 au\r\n"
              "Sum rules: not judged, not all coordinates are displaced.\r\n"
              "2 of 3 files deserve doubt.\r\n");
    EXPECT_THAT(shown("TERM=xterm NO_COLOR="), HasSubstr(" \033[32mfine\033[0m\r\n"));
}

}  // namespace
