// The sign tool as its users run it: files in a directory, arguments, exit status, streams.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using support::contents_of;
using support::outcome;
using support::scratch_directory;
using support::write_file;
using testing::HasSubstr;

/// A directory with the bundled water jobs, or with an ONIOM job whose high layer is atoms 2, 4 and
/// 5 of six.
class water_jobs {
  public:
    explicit water_jobs(const char* from = EXAMPLES "/water") {
        for (const auto& entry : fs::directory_iterator(from)) {
            fs::copy(entry.path(), path(entry.path().filename().string()));
        }
    }

    fs::path path(std::string_view name) const { return directory_.path() / name; }

    outcome run(std::vector<std::string> arguments) const {
        return support::run({"stigruz", std::move(arguments), directory_.path()});
    }

    void run_quietly(std::vector<std::string> arguments) const {
        const outcome result = run(std::move(arguments));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.output + result.errors, "");
    }

    /// Replaces the first `before` of a file by `after`.
    void edit(std::string_view name, std::string_view before, std::string_view after) const {
        std::string text = contents_of(path(name));
        const std::size_t at = text.find(before);
        ASSERT_NE(at, std::string::npos) << before << " in " << name;
        write_file(path(name), text.replace(at, before.size(), after));
    }

    std::vector<std::string> names() const { return directory_.names(); }

  private:
    scratch_directory directory_;
};

constexpr const char* oniom_job = TEST_DATA "/oniom";

const std::string reference_result = contents_of(support::data_file("h2o_ref.sgn"));

TEST(Stigruz, WritesTheReferenceResult) {
    const water_jobs jobs;
    jobs.run_quietly({"h2o_ref.fchk"});
    EXPECT_EQ(contents_of(jobs.path("h2o_ref.sgn")), reference_result);
}

TEST(Stigruz, GivesEveryDisplacedJobTheReferencesSign) {
    const water_jobs jobs;
    jobs.run_quietly({"h2o_ref.fchk"});
    int mapped = 0;
    int reversed = 0;
    for (const std::string& name : jobs.names()) {
        if (!name.starts_with("h2o_0") || !name.ends_with(".fchk")) continue;
        SCOPED_TRACE(name);
        jobs.run_quietly({name, "h2o_ref.sgn"});
        const std::string result = contents_of(jobs.path(name).replace_extension(".sgn"));
        EXPECT_THAT(result,
                    HasSubstr(" tden_maxloc    =                   15                   3\n"));
        const std::string label = " Corrected_tdip = ";
        const double x = std::strtod(result.c_str() + result.find(label) + label.size(), nullptr);
        EXPECT_GE(x, -0.5417);
        EXPECT_LE(x, -0.5291);
        ++mapped;
        if (result.find(" Transden_sign  =                   -1\n") != std::string::npos) {
            ++reversed;
            EXPECT_THAT(result, HasSubstr(" tden_maxval    =    -4."));
        }
    }
    EXPECT_EQ(mapped, 18);
    EXPECT_EQ(reversed, 7);
}

TEST(Stigruz, WritesOfAnOniomJobTheHighLayer) {
    const water_jobs jobs(oniom_job);
    const std::string expected = contents_of(jobs.path("h2o_oniom_ref.sgn"));
    fs::rename(jobs.path("h2o_oniom_ref.sgn"), jobs.path("ref.sgn"));
    jobs.run_quietly({"h2o_oniom_ref.fchk"});
    EXPECT_EQ(contents_of(jobs.path("h2o_oniom_ref.sgn")), expected);
    // Against another phase, at an element that is not the largest.
    jobs.edit("ref.sgn", "17                   5", " 8                   5");
    jobs.run_quietly({"h2o_oniom_ref.fchk", "ref.sgn"});
    std::string mapped = expected;
    for (const auto& [from, to] :
         {std::pair{"sign  =                    1", "sign  =                   -1"},
          {"17                   5", " 8                   5"},
          {" 4.3674325520E-01", "-3.8343434579E-01"},
          {" -5.3540000000E-01    1.2300000000E-02   -4.5600000000E-02",
           "  5.3540000000E-01   -1.2300000000E-02    4.5600000000E-02"}}) {
        mapped = support::replaced(mapped, from, to);
    }
    EXPECT_EQ(contents_of(jobs.path("h2o_oniom_ref.sgn")), mapped);
}

TEST(Stigruz, TakesAnyNumberOfArgumentsButTwoForAReferenceRun) {
    const water_jobs jobs;
    jobs.run_quietly({"h2o_ref.fchk", "no_such_file", "h2o_ref.sgn"});
    EXPECT_EQ(contents_of(jobs.path("h2o_ref.sgn")), reference_result);
}

TEST(Stigruz, LooksForTheOtherFilesInTheWorkingDirectory) {
    const water_jobs jobs;
    // The coefficients come from the path given; the counts of a reference run and all else from
    // the working directory.
    fs::create_directory(jobs.path("else where"));
    fs::rename(jobs.path("h2o_01xm.fchk"), jobs.path("else where/a.b.chk"));
    fs::rename(jobs.path("h2o_01xm.log"), jobs.path("a.b.log"));
    fs::rename(jobs.path("h2o_01xm.cis"), jobs.path("a.b.cis"));
    const outcome failed = jobs.run({"else where/a.b.chk"});
    EXPECT_EQ(failed.status, 2);
    EXPECT_EQ(failed.errors, "stigruz: a.b.fchk: cannot be opened: No such file or directory\n");
    jobs.run_quietly({"h2o_ref.fchk"});
    jobs.run_quietly({"else where/a.b.chk", "h2o_ref.sgn"});
    EXPECT_TRUE(fs::exists(jobs.path("a.b.sgn")));
    EXPECT_FALSE(fs::exists(jobs.path("else where/a.b.sgn")));
    // Nobody asks the checkpoint elsewhere how many there are of anything.
    fs::copy(jobs.path("h2o_ref.fchk"), jobs.path("else where"));
    jobs.edit("else where/h2o_ref.fchk", "atoms                            I                3",
              "atoms                            I                4");
    jobs.edit("else where/h2o_ref.fchk", "functions                  I               22",
              "functions                  I               23");
    jobs.run_quietly({"else where/h2o_ref.fchk"});
    EXPECT_EQ(contents_of(jobs.path("h2o_ref.sgn")), reference_result);
    // Blanks around the name do not stay.
    fs::copy(jobs.path("else where/a.b.chk"), jobs.path("  a.b  .chk"));
    fs::remove(jobs.path("a.b.sgn"));
    jobs.run_quietly({"  a.b  .chk", "h2o_ref.sgn"});
    EXPECT_TRUE(fs::exists(jobs.path("a.b.sgn")));
    // A checkpoint without an extension.
    for (const char* suffix : {".log", ".cis"}) {
        fs::copy(jobs.path("a.b").concat(suffix), jobs.path("job").concat(suffix));
    }
    fs::copy(jobs.path("else where/a.b.chk"), jobs.path("job"));
    jobs.run_quietly({"job", "h2o_ref.sgn"});
    EXPECT_EQ(contents_of(jobs.path("job.sgn")), contents_of(jobs.path("a.b.sgn")));
}

TEST(Stigruz, JudgesByTheProductOfTheTwoValues) {
    const water_jobs jobs;
    jobs.run_quietly({"h2o_ref.fchk"});
    jobs.edit("h2o_ref.sgn", "4.3674325520E-01", "0.0000000000E+00");
    jobs.run_quietly({"h2o_01xm.fchk", "h2o_ref.sgn"});
    const std::string result = contents_of(jobs.path("h2o_01xm.sgn"));
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
        const water_jobs job(layers ? oniom_job : EXAMPLES "/water");
        const bool mapped = row[1].ends_with("map");
        std::vector<std::string> arguments{layers   ? "h2o_oniom_ref.fchk"
                                           : mapped ? "h2o_01xm.fchk"
                                                    : "h2o_ref.fchk"};
        if (!layers) job.run({"h2o_ref.fchk"});
        if (mapped) arguments.push_back(layers ? "ref.sgn" : "h2o_ref.sgn");
        if (layers) fs::copy(job.path("h2o_oniom_ref.sgn"), job.path("ref.sgn"));
        job.run(arguments);
        if (row[4] == "<gone>") {
            fs::remove(job.path(row[2]));
        } else if (row[4] == "<end>") {
            const std::string whole = contents_of(job.path(row[2]));
            write_file(job.path(row[2]), whole.substr(0, whole.find(row[3])));
        } else {
            job.edit(row[2], row[3], row[4]);
        }
        const auto names = job.names();
        const fs::path earlier = job.path(arguments[0]).replace_extension(".sgn");
        const std::string before = contents_of(earlier);

        const outcome ended = job.run(arguments);
        EXPECT_EQ(std::to_string(ended.status), row[5]);
        const std::string& said = ended.status == 2 ? ended.errors : ended.output;
        EXPECT_EQ((ended.status == 2 ? ended.output : ended.errors), "");
        const std::size_t ellipsis = row[6].find("...");
        EXPECT_EQ(said.substr(0, ellipsis),
                  row[6].substr(0, ellipsis) + (ellipsis == std::string::npos ? "\n" : ""));
        EXPECT_TRUE(ended.status != 2 || said.find('\n') == said.size() - 1) << said;
        EXPECT_EQ(job.names(), names);
        EXPECT_EQ(contents_of(earlier), before);
    }
}

TEST(Stigruz, WritesNothingForAnEmptyDensity) {
    const water_jobs job;
    std::string zeros = contents_of(job.path("h2o_ref.cis"));
    zeros.resize(zeros.find("to right):") + 11);
    for (int i = 0; i < 548; ++i) zeros += " 0.0D0\n";
    write_file(job.path("h2o_ref.cis"), zeros);
    EXPECT_EQ(job.run({"h2o_ref.fchk"}).errors,
              "stigruz: the chosen element of the transition density, row 0 and column 0, lies "
              "outside 1..22: no element of the density is above zero in magnitude\n");
    EXPECT_FALSE(fs::exists(job.path("h2o_ref.sgn")));
}

TEST(Stigruz, SaysHowItIsUsed) {
    const water_jobs jobs;
    for (const char* const empty : {"", "   "}) {
        EXPECT_EQ(jobs.run({"h2o_ref.fchk", empty}).errors,
                  "stigruz: '': cannot be opened: No such file or directory\n");
    }
    const outcome ended = jobs.run({});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.errors,
              "stigruz: .log: cannot be opened: No such file or directory (usage: stigruz "
              "CHECKPOINT [REFERENCE])\n");
}

}  // namespace
