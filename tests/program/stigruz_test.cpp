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
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// A directory with the bundled water jobs.
class water_jobs {
  public:
    water_jobs() {
        for (const auto& entry : fs::directory_iterator(EXAMPLES "/water")) {
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

    void cut(std::string_view name, std::string_view at) const {
        const std::string text = contents_of(path(name));
        ASSERT_NE(text.find(at), std::string::npos) << at << " in " << name;
        write_file(path(name), text.substr(0, text.find(at)));
    }

    std::vector<std::string> names() const { return directory_.names(); }

  private:
    scratch_directory directory_;
};

constexpr const char* reference_result =
    R"(INFORMATION
 Transden_sign  =                    1
 natom          =                    3
 nmo            =                   22
 mi             =                    4
 ma             =                   17
 mci            =                    4
 NFC            =                    1
 NFV            =                    0
 tden_maxloc    =                   15                   3
 tden_maxval    =     4.3674325520E-01
 Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)
 Number  Symbol   NAT       mass           X           Y           Z
      1    O       8    15.99491460        0.000000    0.000000    0.118000
      2    H       1     1.00782500        0.000000    0.760000   -0.472000
      3    H       1     1.00782500        0.000000   -0.760000   -0.472000
 Ground to excited state transition electric dipole moments (Au)
 Corrected_tdip =    -5.3540000000E-01   -0.0000000000E+00   -0.0000000000E+00
 Center Atomic Forces (Hartrees/Bohr)
      1   -0.0000000000E+00    0.0000000000E+00    8.3903333000E-02
      2   -0.0000000000E+00    5.5140319000E-02   -4.1952551000E-02
      3   -0.0000000000E+00   -5.5140319000E-02   -4.1952551000E-02
)";

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
    EXPECT_EQ(failed.errors, "stigruz: a.b.fchk: can not be opened: No such file or directory\n");
    jobs.run_quietly({"h2o_ref.fchk"});
    jobs.run_quietly({"else where/a.b.chk", "h2o_ref.sgn"});
    EXPECT_TRUE(fs::exists(jobs.path("a.b.sgn")));
    EXPECT_FALSE(fs::exists(jobs.path("else where/a.b.sgn")));
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

// Endings: whatever is wrong, the status and the one line are as stated, and an earlier result
// stays what it was.

/// Everything that goes wrong in one directory after another.
struct trouble {
    const char* what;
    bool mapped;
    int status;
    const char* message;  // the whole of it, but for the newline
    void (*damage)(const water_jobs& job);
};

using job_of = const water_jobs&;

const trouble troubles[] = {
    {"no log", false, 2, "stigruz: h2o_ref.log: can not be opened: No such file or directory",
     [](job_of job) { fs::remove(job.path("h2o_ref.log")); }},
    {"no reference", true, 2, "stigruz: h2o_ref.sgn: can not be opened: No such file or directory",
     [](job_of job) { fs::remove(job.path("h2o_ref.sgn")); }},
    {"an empty log", false, 2, "", [](job_of job) { write_file(job.path("h2o_ref.log"), ""); }},
    {"a log that ends before the forces", false, 1,
     "Can not find keyword Center     Atomic                   Forces (Hartrees/Bohr) stop!",
     [](job_of job) { job.cut("h2o_ref.log", " Center     Atomic                   Forces"); }},
    {"a log without dipoles", false, 1,
     "Can not find keyword Ground to excited state transition electric dipole moments (Au): stop!",
     [](job_of job) { job.edit("h2o_ref.log", "electric dipole moments (Au):", "moments"); }},
    {"a log of another program", false, 1, "  The method has not been implemented, stop!",
     [](job_of job) { write_file(job.path("h2o_ref.log"), "Hello\n"); }},
    {"no atoms", false, 0, "  Error!\n  natom =                   0\n  Stop!",
     [](job_of job) { job.edit("h2o_ref.fchk", "              3", "              0"); }},
    {"more atoms than there are", false, 2,
     "stigruz: h2o_ref.log: line 44: 'Standard' stands where an integer was expected",
     [](job_of job) { job.edit("h2o_ref.fchk", "              3", "         100000"); }},
    {"an element out of range", false, 0, "Error!\nnat(2) = 119 is out of [1,118]",
     [](job_of job) { job.edit("h2o_ref.log", "      2          1 ", "      2        119 "); }},
    {"coordinates of asterisks", false, 2,
     "stigruz: h2o_ref.log: line 50: '0.000000************' stands where a real number was "
     "expected",
     [](job_of job) {
         job.edit("h2o_ref.log", "    0.760000   -0.472000\n ", "************ 0.0\n ");
     }},
    {"a checkpoint cut short", false, 2, "",
     [](job_of job) { job.cut("h2o_ref.fchk", " 2.32933974E-05"); }},
    {"a coefficient with a letter in it", false, 2,
     "stigruz: h2o_ref.fchk: line 62: '8.54134872EX03' stands where a real number was expected "
     "(value 6 of 484)",
     [](job_of job) { job.edit("h2o_ref.fchk", "8.54134872E-03", "8.54134872EX03"); }},
    {"a dump cut short", false, 2, "",
     [](job_of job) { job.cut("h2o_ref.cis", "0.136409605669D-15"); }},
    {"a dump of another program", false, 1, "  The method has not been implemented, stop!",
     [](job_of job) { job.edit("h2o_ref.cis", "dumping", "Dumping"); }},
    {"more basis functions than coefficients", false, 2, "",
     [](job_of job) {
         job.edit("h2o_ref.fchk", "basis functions                  I               22",
                  "basis functions                  I       2000000000");
     }},
    {"an empty density", false, 2,
     "stigruz: the chosen element of the transition density, row 0 and column 0, lies outside "
     "1..22: no element of the density is above zero in magnitude",
     [](job_of job) {
         std::string zeros = contents_of(job.path("h2o_ref.cis"));
         zeros.resize(zeros.find("to right):") + 11);
         for (int i = 0; i < 548; ++i) zeros += " 0.0D0\n";
         write_file(job.path("h2o_ref.cis"), zeros);
     }},
    {"a reference with a record missing", true, 1, "Can not find keyword NFC stop!",
     [](job_of job) { job.edit("h2o_ref.sgn", "NFC", "NFQ"); }},
    {"a reference out of order", true, 1, "Can not find keyword mci stop!",
     [](job_of job) {
         job.edit("h2o_ref.sgn", " mci ", " mc_ ");
         job.edit("h2o_ref.sgn", "INFORMATION", "INFORMATION\n mci            =      4");
     }},
    {"a reference with a joined record", true, 2,
     "stigruz: h2o_ref.sgn: line 3: the line ends where an item was expected",
     [](job_of job) {
         job.edit("h2o_ref.sgn", "natom          =                    3", "natom=3");
     }},
    {"a reference's element out of range", true, 2,
     "stigruz: the chosen element of the transition density, row 23 and column 3, lies outside "
     "1..22: the reference does not fit this job",
     [](job_of job) { job.edit("h2o_ref.sgn", "                 15", "                 23"); }},
    {"a reference of another molecule", true, 2, "",
     [](job_of job) { job.edit("h2o_ref.sgn", "                 22", "                 30"); }},
    {"a reference with other orbital counts", true, 2,
     "stigruz: the transition density can not be built: mi + nfc + ma + nfv = 21 differs from "
     "nbasis (nbasis = 22, nbsuse = 22, mi = 4, nfc = 0, ma = 17, nfv = 0)",
     [](job_of job) {
         job.edit("h2o_ref.sgn", "NFC            =                    1",
                  "NFC            =                    0");
     }},
    {"a reference without roots", true, 2, "",
     [](job_of job) {
         job.edit("h2o_ref.sgn", "mci            =                    4",
                  "mci            =                   -1");
     }},
};

TEST(StigruzFails, AsStatedAndLeavesTheEarlierResult) {
    for (const trouble& now : troubles) {
        SCOPED_TRACE(now.what);
        const water_jobs job;
        job.run({"h2o_ref.fchk"});
        if (now.mapped) job.run({"h2o_01xm.fchk", "h2o_ref.sgn"});
        now.damage(job);
        const auto names = job.names();
        const fs::path earlier = job.path(now.mapped ? "h2o_01xm.sgn" : "h2o_ref.sgn");
        const std::string before = contents_of(earlier);

        const outcome ended =
            now.mapped ? job.run({"h2o_01xm.fchk", "h2o_ref.sgn"}) : job.run({"h2o_ref.fchk"});
        EXPECT_EQ(ended.status, now.status);
        const bool diagnostic = now.status == 2;
        const std::string& said = diagnostic ? ended.errors : ended.output;
        EXPECT_EQ(diagnostic ? ended.output : ended.errors, "");
        if (*now.message != '\0') {
            EXPECT_EQ(said, std::string(now.message) + "\n");
        } else {
            EXPECT_THAT(said, AllOf(StartsWith("stigruz: "), EndsWith("\n")));
            EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
        }
        EXPECT_EQ(job.names(), names);
        EXPECT_EQ(contents_of(earlier), before);
    }
}

TEST(Stigruz, SaysHowItIsUsed) {
    const water_jobs jobs;
    const outcome ended = jobs.run({});
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.errors,
              "stigruz: .log: can not be opened: No such file or directory (usage: stigruz "
              "CHECKPOINT [REFERENCE])\n");
}

}  // namespace
