// The sign tool as its users run it: files in a directory, arguments, exit status, streams.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using support::contents_of;
using support::data_file;
using support::outcome;
using support::replaced;
using testing::HasSubstr;

/// A directory with the bundled water jobs, or with an ONIOM job whose high layer is atoms 2, 4 and
/// 5 of six.
class jobs {
  public:
    explicit jobs(const std::string& from = EXAMPLES "/water") {
        for (const auto& entry : fs::directory_iterator(from)) {
            fs::copy(entry.path(), path(entry.path().filename().string()));
        }
    }

    fs::path path(std::string_view name) const { return directory_.path() / name; }
    std::vector<std::string> names() const { return directory_.names(); }

    outcome run(std::vector<std::string> arguments) const {
        return support::run({"stigruz", std::move(arguments), directory_.path()});
    }

    /// Runs the tool, which says nothing, and returns the result of `name`.
    std::string result_of(const std::string& name, std::vector<std::string> arguments) const {
        const outcome result = run(std::move(arguments));
        EXPECT_EQ(std::to_string(result.status) + result.output + result.errors, "0") << name;
        return contents_of(path(name + ".sgn"));
    }

    /// Replaces the first `before` of a file by `after`.
    void edit(std::string_view name, std::string_view before, std::string_view after) const {
        std::string text = contents_of(path(name));
        const std::size_t at = text.find(before);
        ASSERT_NE(at, std::string::npos) << before << " in " << name;
        support::write_file(path(name), text.replace(at, before.size(), after));
    }

  private:
    support::scratch_directory directory_;
};

const std::string reference_result = contents_of(data_file("h2o_ref.sgn"));

TEST(Stigruz, GivesEveryDisplacedJobTheReferencesSign) {
    const jobs water;
    // Any number of arguments but two makes a reference run.
    EXPECT_EQ(water.result_of("h2o_ref", {"h2o_ref.fchk"}), reference_result);
    EXPECT_EQ(water.result_of("h2o_ref", {"h2o_ref.fchk", "no_such_file", "h2o_ref.sgn"}),
              reference_result);
    std::string results;
    for (const std::string& file : water.names()) {
        if (!file.starts_with("h2o_0") || !file.ends_with(".fchk")) continue;
        const std::string name = fs::path(file).stem();
        results += "== " + name + '\n' + water.result_of(name, {file, "h2o_ref.sgn"});
    }
    EXPECT_EQ(results, contents_of(data_file("water_results.txt")));
}

/// The log of an ONIOM job as that of a protein: the parameter file at the top, what a PDB file
/// knows of each atom, three layers, and forces as Gaussian 09 prints them.
std::string dressed_as_protein(std::string log) {
    const std::string line = " NonBon 3 1 0 0 0.000 0.000 0.500 0.000 0.000 -1.200\n";
    std::string parameters;
    for (int i = 0; i < 900; ++i) parameters += line;
    log.insert(log.find('\n') + 1, parameters);
    log = replaced(log, "-3.900000 L ", "-3.900000 M    H-HC     2     0.7");
    log = replaced(log, "             Integrated Forces (", "                   Forces (");
    const std::regex symbol("\n ([A-Z][a-z]?) {10,}(-1|0) ");
    return std::regex_replace(log, symbol, "\n $1-$1--0.1(PDBName=$1,ResName=H,ResNum=7) $2 ");
}

TEST(Stigruz, WritesOfAnOniomJobTheHighLayer) {
    for (const bool of_protein : {false, true}) {
        const jobs oniom(data_file("oniom"));
        const std::string expected = contents_of(oniom.path("h2o_oniom_ref.sgn"));
        fs::rename(oniom.path("h2o_oniom_ref.sgn"), oniom.path("ref.sgn"));
        const fs::path log = oniom.path("h2o_oniom_ref.log");
        if (of_protein) support::write_file(log, dressed_as_protein(contents_of(log)));
        EXPECT_EQ(oniom.result_of("h2o_oniom_ref", {"h2o_oniom_ref.fchk"}), expected);
        // Against another phase, at an element that is not the largest.
        oniom.edit("ref.sgn", "17                   5", " 8                   5");
        std::string mapped = expected;
        for (const auto& [from, to] :
             {std::pair{"sign  =                    1", "sign  =                   -1"},
              {"17                   5", " 8                   5"},
              {" 4.3674326187E-01", "-3.8343434638E-01"},
              {" -5.3540000000E-01    1.2300000000E-02   -4.5600000000E-02",
               "  5.3540000000E-01   -1.2300000000E-02    4.5600000000E-02"}}) {
            mapped = replaced(mapped, from, to);
        }
        EXPECT_EQ(oniom.result_of("h2o_oniom_ref", {"h2o_oniom_ref.fchk", "ref.sgn"}), mapped);
    }
}

TEST(Stigruz, SaysBesideAFixedMessageWhatMayHelp) {
    const jobs oniom(data_file("oniom"));
    oniom.edit("h2o_oniom_ref.log", " Ar                    -1",
               " Redundant internal coordinates found in file.\n Ar                    -1");
    EXPECT_THAT(oniom.run({"h2o_oniom_ref.fchk"}).errors,
                testing::MatchesRegex("stigruz: the log lists the atoms without their layers, "
                                      "[^\n]*: give the job its atoms in the input; [^\n]*\n"));
    const jobs water;
    water.edit("h2o_ref.fchk", "functions                  I               22",
               "functions                  I                0");
    const outcome ended = water.run({"h2o_ref.fchk"});
    EXPECT_EQ(std::to_string(ended.status) + ended.output,
              "0  Error!\n  nbasis =                   0\n  Stop!\n");
    const std::string where = "are in the files of the high model's own job\n";
    EXPECT_THAT(ended.errors, HasSubstr(where));
    // A mapped run does not ask for the functions before it misses the orbitals.
    const jobs mapped;
    mapped.result_of("h2o_ref", {"h2o_ref.fchk"});
    mapped.edit("h2o_01xm.fchk", "functions                  I               22",
                "functions                  I                0");
    mapped.edit("h2o_01xm.fchk", "Alpha MO", "Beta MO");
    EXPECT_THAT(mapped.run({"h2o_01xm.fchk", "h2o_ref.sgn"}).errors, HasSubstr(where));
}

TEST(Stigruz, LooksForTheOtherFilesInTheWorkingDirectory) {
    const jobs water;
    water.result_of("h2o_ref", {"h2o_ref.fchk"});
    const std::string expected = water.result_of("h2o_01xm", {"h2o_01xm.fchk", "h2o_ref.sgn"});
    // The coefficients come from the path given; the counts of a reference run and all else from
    // the working directory. Without an extension, too; blanks around the name do not stay.
    fs::create_directory(water.path("else where"));
    for (const auto& [path, name] :
         {std::pair{"else where/a.b.chk", "a.b"}, {"  c.d  .chk", "c.d"}, {"job", "job"}}) {
        fs::copy(water.path("h2o_01xm.fchk"), water.path(path));
        for (const char* suffix : {".log", ".cis"}) {
            fs::copy(water.path("h2o_01xm").concat(suffix), water.path(name).concat(suffix));
        }
        EXPECT_EQ(water.run({path}).errors, "stigruz: " + std::string(name) +
                                                ".fchk: cannot be opened: No such file or "
                                                "directory\n");
        EXPECT_EQ(water.result_of(name, {path, "h2o_ref.sgn"}), expected);
    }
    EXPECT_FALSE(fs::exists(water.path("else where/a.b.sgn")));
    // Nobody asks the checkpoint elsewhere how many there are of anything.
    fs::copy(water.path("h2o_ref.fchk"), water.path("else where"));
    water.edit("else where/h2o_ref.fchk", "atoms                            I                3",
               "atoms                            I                4");
    water.edit("else where/h2o_ref.fchk", "functions                  I               22",
               "functions                  I               23");
    EXPECT_EQ(water.result_of("h2o_ref", {"else where/h2o_ref.fchk"}), reference_result);
}

TEST(Stigruz, JudgesByTheProductOfTheTwoValues) {
    const jobs water;
    water.result_of("h2o_ref", {"h2o_ref.fchk"});
    water.edit("h2o_ref.sgn", "4.3674326187E-01", "0.0000000000E+00");
    const std::string result = water.result_of("h2o_01xm", {"h2o_01xm.fchk", "h2o_ref.sgn"});
    EXPECT_THAT(result, HasSubstr(" Transden_sign  =                    0\n"));
    // What the log printed times zero: its sign stays.
    EXPECT_THAT(result, HasSubstr(" Corrected_tdip =     0.0000000000E+00   -0.0000000000E+00 "
                                  "   0.0000000000E+00\n"));
    EXPECT_THAT(result, HasSubstr(" tden_maxval    =    -4."));
}

/// Whatever is wrong, the status and the message are as stated, and an earlier result stays what it
/// was.
TEST(Stigruz, EndsAsStatedAndLeavesTheEarlierResult) {
    for (const std::vector<std::string>& row : support::table_of("endings.txt")) {
        SCOPED_TRACE(row[0]);
        const bool layers = row[1].starts_with("layers");
        const bool mapped = row[1].ends_with("map");
        const jobs here(layers ? data_file("oniom") : EXAMPLES "/water");
        const std::string reference = layers ? "h2o_oniom_ref" : "h2o_ref";
        const std::string name = mapped && !layers ? "h2o_01xm" : reference;
        here.run({reference + ".fchk"});
        fs::copy(here.path(reference + ".sgn"), here.path("ref.sgn"));
        std::vector<std::string> arguments{name + ".fchk"};
        if (mapped) arguments.emplace_back("ref.sgn");
        const std::string before = here.result_of(name, arguments);
        if (row[4] == "<gone>") {
            fs::remove(here.path(row[2]));
        } else if (row[4] == "<end>") {
            fs::resize_file(here.path(row[2]), contents_of(here.path(row[2])).find(row[3]));
        } else {
            here.edit(row[2], row[3], row[4]);
        }
        const auto names = here.names();

        const outcome ended = here.run(arguments);
        EXPECT_EQ(std::to_string(ended.status), row[5]);
        const std::string& said = ended.status == 2 ? ended.errors : ended.output;
        // Beside the fixed message, which names no file.
        const bool hint = ended.status == 1 && row[2] == "ref.sgn";
        EXPECT_EQ(
            (ended.status == 2 ? ended.output : ended.errors),
            hint ? "stigruz: ref.sgn: is the result file of a reference, but a damaged one\n" : "");
        const std::size_t ellipsis = row[6].find("...");
        EXPECT_EQ(said.substr(0, ellipsis),
                  row[6].substr(0, ellipsis) + (ellipsis == std::string::npos ? "\n" : ""));
        EXPECT_TRUE(ended.status != 2 || said.find('\n') == said.size() - 1) << said;
        EXPECT_EQ(here.names(), names);
        EXPECT_EQ(contents_of(here.path(name + ".sgn")), before);
    }
}

TEST(Stigruz, SaysHowItIsUsed) {
    const jobs water;
    const std::string not_there = "cannot be opened: No such file or directory";
    for (const char* const empty : {"", "   "}) {
        EXPECT_EQ(water.run({"h2o_ref.fchk", empty}).errors, "stigruz: '': " + not_there + '\n');
    }
    const outcome ended = water.run({});
    EXPECT_EQ(std::to_string(ended.status) + ' ' + ended.errors,
              "2 stigruz: .log: " + not_there + " (usage: stigruz CHECKPOINT [REFERENCE])\n");
    // Where an option may have been meant, a line more.
    const std::string usage =
        "stigruz: usage: stigruz CHECKPOINT [REFERENCE.sgn]; there are no options (see man "
        "stigruz)\n";
    for (const std::string option : {"--help", "-h", "--version", "-"}) {
        const outcome told = water.run({option});
        EXPECT_EQ(std::to_string(told.status) + told.output + told.errors,
                  "2stigruz: " + option + ".log: " + not_there + '\n' + usage);
    }
    EXPECT_EQ(water.run({"h2o_ref.fchk", "-h"}).errors, "stigruz: -h: " + not_there + '\n' + usage);
    fs::copy(water.path("h2o_ref.log"), water.path("-h"));
    const outcome wrong = water.run({"h2o_ref.fchk", "-h"});
    EXPECT_EQ(wrong.errors,
              "stigruz: -h: the result file of the reference was expected here, NAME.sgn of its "
              "run\n");
    EXPECT_EQ(std::to_string(wrong.status) + wrong.output, "1Can not find keyword natom stop!\n");
}

}  // namespace
