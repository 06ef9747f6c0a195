// sgn_check as its users run it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "sample.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using support::outcome;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A directory with good result files: ref.sgn, plus.sgn and minus.sgn.
class SgnCheck : public testing::Test {
  protected:
    SgnCheck() {
        sample::write(sample::water(path("ref.sgn")));
        sample::write(sample::water(path("plus.sgn"), {0.01, 0, 0.118}));
        sample::write(sample::water(path("minus.sgn"), {-0.01, 0, 0.118}));
    }

    std::string path(const std::string& name) const { return scratch_.path() / name; }

    outcome run(std::vector<std::string> arguments) const {
        return support::run({"sgn_check", std::move(arguments), scratch_.path()});
    }

    /// Replaces `old_text` in a file, from its first place on or with all behind it.
    void edit(const std::string& name, const std::string& old_text, const std::string& new_text,
              bool cut = false) const {
        std::string text = support::contents_of(path(name));
        const std::size_t at = text.find(old_text);
        ASSERT_NE(at, std::string::npos) << old_text;
        text.replace(at, cut ? std::string::npos : old_text.size(), new_text);
        support::write_file(path(name), text);
    }

  private:
    support::scratch_directory scratch_;
};

TEST_F(SgnCheck, FindsTheBundledSetFine) {
    const support::scratch_directory work;
    std::vector<std::string> checkpoints;
    for (const auto& entry : fs::directory_iterator(EXAMPLES "/water")) {
        const fs::path name = entry.path().filename();
        fs::create_symlink(entry.path(), work.path() / name);
        if (name.extension() == ".fchk" && name != "h2o_ref.fchk") checkpoints.push_back(name);
    }
    ASSERT_EQ(support::run({"stigruz", {"h2o_ref.fchk"}, work.path()}).status, 0);
    std::vector<std::string> arguments{"h2o_ref.sgn"};
    for (const std::string& name : checkpoints) {
        ASSERT_EQ(support::run({"stigruz", {name, "h2o_ref.sgn"}, work.path()}).status, 0);
        arguments.push_back(fs::path(name).replace_extension(".sgn"));
    }
    ASSERT_EQ(arguments.size(), 19U);
    const outcome told = support::run({"sgn_check", arguments, work.path()});
    EXPECT_EQ(told.status, 0);
    EXPECT_EQ(told.errors, "");
    EXPECT_THAT(told.output, AllOf(HasSubstr("All 19 files are fine."), Not(HasSubstr("\033")),
                                   HasSubstr("0.980    -0.5291   0.0000   0.0000  0.0063  1 O +z "
                                             "0.0100         fine\n")));
}

TEST_F(SgnCheck, TellsEveryDoubtOfAFile) {
    edit("plus.sgn", "Transden_sign  =                    1",
         "Transden_sign  =                    0");
    edit("plus.sgn", "4.3670000000E-01", "4.3670000000E-09");
    edit("plus.sgn", "1.00782500", "2.01400000");
    const outcome told = run({"ref.sgn", "plus.sgn", "minus.sgn"});
    EXPECT_EQ(told.status, 1);
    EXPECT_EQ(told.errors, "");
    EXPECT_THAT(told.output,
                AllOf(HasSubstr("sign 0: the dipole is lost; atom 2 is H 1 2.0140 instead of "
                                "H 1 1.0078; small element: 0.000 of the reference's\n"),
                      HasSubstr("1 of 3 files deserve doubt.")));
    EXPECT_EQ(run({"--min-ratio", "0", "ref.sgn", "plus.sgn", "minus.sgn"}).status, 1);
    EXPECT_EQ(run({"ref.sgn", "minus.sgn"}).status, 1);
    EXPECT_EQ(run({"--no-pairs", "ref.sgn", "minus.sgn"}).status, 0);
    EXPECT_EQ(run({"--no-pairs", "--min-ratio=1.01", "ref.sgn", "minus.sgn"}).status, 1);
}

TEST_F(SgnCheck, NamesFilesItCanNotReadAndGoesOn) {
    struct damage {
        std::string old_text;
        std::string new_text;
        bool cut;
        std::string complaint;
    };
    const damage damages[] = {
        {"INFORMATION", " Entering Gaussian System", false, "bad.sgn: is not a result file"},
        {"INFORMATION", "", true, "bad.sgn: is not a result file"},
        {" nmo  ", " nmp  ", false, "bad.sgn: Can not find keyword nmo stop!"},
        {"=                    1\n", "=                    7\n", false, "bad.sgn: line 2: "},
        {"0.01000", "0.01x00", false, "bad.sgn: line 14: "},
        {"    0.010000", "************", false, "bad.sgn: line 14: "},
        {"      2    H", "      3    H", false, "bad.sgn: line 15: expected atom 2"},
        {" Center Atomic Forces", "", true, "bad.sgn: "},
        {"-4.2000000000E-02", "-4.2000000000E-0", true, "bad.sgn: line 21: the line is cut short"},
        {"natom          =                    3", "natom          =           2000000000", false,
         "bad.sgn: line 17: "},
        {" Number  Symbol", " Nr      Symbol", false, "bad.sgn: line 13: expected 'Number  Symbol"},
    };
    const std::string good = support::contents_of(path("plus.sgn"));
    for (const damage& what : damages) {
        support::write_file(path("bad.sgn"), good);
        edit("bad.sgn", what.old_text, what.new_text, what.cut);
        const outcome told = run({"ref.sgn", "plus.sgn", "bad.sgn", "minus.sgn"});
        EXPECT_EQ(told.status, 2);
        EXPECT_THAT(told.errors, StartsWith("sgn_check: " + what.complaint));
        EXPECT_EQ(std::count(told.errors.begin(), told.errors.end(), '\n'), 1);
        EXPECT_THAT(told.output, HasSubstr("All 3 files are fine."));
    }
    support::write_file(path("bad.sgn"), good + good);
    for (const char* name : {"bad.sgn", "absent.sgn", "."}) {
        EXPECT_THAT(run({"ref.sgn", name}).errors, StartsWith(std::string("sgn_check: ") + name));
        const outcome told = run({name, "plus.sgn"});
        EXPECT_EQ(told.status, 2);
        EXPECT_EQ(told.output, "");
    }
    support::write_file(path("bad.sgn"), "");
    EXPECT_EQ(run({"ref.sgn", "bad.sgn"}).status, 2);
}

TEST_F(SgnCheck, WritesJson) {
    edit("plus.sgn", "4.3670000000E-01", "             NAN");
    const std::string odd = "od\"d\n\xFF.sgn";
    fs::copy_file(path("minus.sgn"), path(odd));
    const outcome told = run({"--json", "ref.sgn", "plus.sgn", odd, "absent.sgn"});
    EXPECT_EQ(told.status, 2);
    if (!fs::exists("/usr/bin/python3")) GTEST_SKIP() << "no independent parser";
    support::write_file(path("told.json"), told.output);
    const std::string program =
        "import json; d = json.load(open('told.json')); plus, odd = d['files']; print("
        "d['reference']['value'], plus['value'], plus['fine'], plus['findings'][0]['doubt'], "
        "plus['displacement']['distance'], plus['partner'] == odd['file'], "
        "[ord(c) for c in odd['file'][2:6]], d['unreadable'][0]['file'], "
        "d['thresholds']['min_ratio'])";
    const outcome parsed = support::run(
        {"/usr/bin/python3", {"-c", program}, fs::path(path("told.json")).parent_path()});
    EXPECT_EQ(parsed.output,
              "0.4367 None False not_finite 0.01 True [34, 100, 10, 65533] absent.sgn 0.5\n");
}

TEST_F(SgnCheck, WritesCsv) {
    fs::rename(path("plus.sgn"), path("a \"b\".sgn"));
    const outcome told = run({"--csv", "ref.sgn", "a \"b\".sgn", "minus.sgn"});
    EXPECT_EQ(told.status, 0);
    std::istringstream lines(told.output);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_EQ(std::count(line.begin(), line.end(), ','), 23) << line;
        EXPECT_TRUE(line.ends_with('\r'));
    }
    EXPECT_EQ(count, 4);
    EXPECT_THAT(
        told.output,
        HasSubstr("\r\n\"a \"\"b\"\".sgn\",1,15,3,0.4367,1,-0.5354,0,0,0,0,0,0,1,1,O,0.01,0,"
                  "0,0.01,0,minus.sgn,0,\r\n"));
}

TEST_F(SgnCheck, UnderstandsItsCommandLine) {
    EXPECT_THAT(run({"--help"}).output, StartsWith("usage: sgn_check [OPTIONS]"));
    EXPECT_THAT(run({"--version"}).output, testing::MatchesRegex("sgn_check [0-9.]+\n"));
    const std::vector<std::pair<std::vector<std::string>, std::string>> wrong{
        {{}, "needs a reference"},
        {{"ref.sgn"}, "needs a reference"},
        {{"--jsn", "ref.sgn", "plus.sgn"}, "no option '--jsn'"},
        {{"--max-turn", "wide", "ref.sgn", "plus.sgn"}, "--max-turn takes a number"},
        {{"--max-turn=-1", "ref.sgn", "plus.sgn"}, "--max-turn takes a number"},
        {{"ref.sgn", "plus.sgn", "--max-turn"}, "--max-turn needs a value"},
        {{"--json", "--csv", "ref.sgn", "plus.sgn"}, "--json and --csv exclude"},
    };
    for (const auto& [arguments, complaint] : wrong) {
        const outcome told = run(arguments);
        EXPECT_EQ(told.status, 2);
        EXPECT_EQ(told.output, "");
        EXPECT_THAT(told.errors, StartsWith("sgn_check: " + complaint));
    }
    fs::copy_file(path("ref.sgn"), path("-ref.sgn"));
    EXPECT_EQ(run({"--", "-ref.sgn", "ref.sgn"}).status, 0);
}

}  // namespace
