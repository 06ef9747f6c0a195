// sgn_states as its users run it: the smaller bundled set, in which states change places, and
// water.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "flib/util/units.h"
#include "numfreq/sgn_file.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using support::contents_of;
using testing::HasSubstr;
using words = std::vector<std::string>;

/// Every number with six decimals: the last digits of overlaps are those of the machine.
std::string rounded(const std::string& text) {
    static const std::regex real("-?[0-9]+\\.[0-9]+(e-[0-9]+)?|-?[0-9]+e-[0-9]+");
    std::string result;
    std::size_t from = 0;
    for (std::sregex_iterator at(text.begin(), text.end(), real), end; at != end; ++at) {
        char number[40];
        std::snprintf(number, sizeof number, "%.6f", std::stod(at->str()));
        result += text.substr(from, static_cast<std::size_t>(at->position()) - from);
        result += std::string(number) == "-0.000000" ? "0.000000" : number;
        from = static_cast<std::size_t>(at->position() + at->length());
    }
    return result + text.substr(from);
}

class SgnStates : public testing::Test {
  protected:
    SgnStates() { fs::copy(support::data_file("crossing"), scratch_.path()); }

    support::outcome run(const words& arguments, const char* tool = "sgn_states") const {
        return support::run({tool, arguments, scratch_.path()});
    }

    std::string path(const std::string& name) const { return scratch_.path() / name; }

    /// Puts `to` in the place of `from` in a file of the set.
    void change(const std::string& name, const std::string& from, const std::string& to) const {
        support::write_file(path(name), support::replaced(contents_of(path(name)), from, to));
    }

    /// Gives two roots of a job each other's place, in log and dump.
    void exchange_roots(const std::string& name, std::size_t a, std::size_t b) const {
        std::string dump = contents_of(path(name + ".cis"));
        const std::size_t begin = dump.find("read left to right):\n") + 21;
        std::istringstream in(dump.substr(begin));
        std::vector<std::string> values{std::istream_iterator<std::string>(in), {}};
        const auto at = [&](std::size_t i) {
            return values.begin() + static_cast<std::ptrdiff_t>(i);
        };
        const std::size_t block = (values.size() - 4) / 4;
        std::swap(values[a - 1], values[b - 1]);
        std::swap_ranges(at(4 + (a - 1) * block), at(4 + a * block), at(4 + (b - 1) * block));
        dump.resize(begin);
        for (const std::string& value : values) dump += value + '\n';
        support::write_file(path(name + ".cis"), dump);
        std::string log = contents_of(path(name + ".log"));
        const auto row = [&](std::size_t root) {
            const std::size_t table = log.find("transition electric dipole moments (Au)");
            return log.find("\n" + std::string(9, ' ') + std::to_string(root) + "  ", table) + 11;
        };
        std::swap_ranges(log.begin() + static_cast<std::ptrdiff_t>(row(a)),
                         log.begin() + static_cast<std::ptrdiff_t>(log.find('\n', row(a))),
                         log.begin() + static_cast<std::ptrdiff_t>(row(b)));
        support::write_file(path(name + ".log"), log);
    }

    std::vector<std::string> names_of(const std::string& pattern) const {
        std::vector<std::string> found;
        for (const std::string& name : scratch_.names()) {
            if (std::regex_match(name, std::regex(pattern))) found.push_back(name);
        }
        return found;
    }

    support::scratch_directory scratch_;
};

TEST_F(SgnStates, ShowsWhatBecameOfTheStates) {
    const auto told = run({"--states=1-3", "h2ox_ref.fchk", "h2ox_02yp.fchk"});
    EXPECT_EQ(told.errors, "");
    EXPECT_EQ(told.status, 1);
    EXPECT_EQ(
        told.output,
        R"(Job        State  Root  Overlap  Sign       eV  Strength        Corrected dipole (au)  Verdict
h2ox_ref       1                        9.3497    0.0645    -0.5306   0.0000   0.0000  reference
h2ox_ref       2                       11.3804    0.0000     0.0000   0.0000   0.0000  reference
h2ox_ref       3                       11.3868    0.1367     0.0000   0.0000  -0.7000  reference
h2ox_02yp      1     1   0.9998    -1   9.3090    0.0629    -0.5251   0.0000   0.0000  same
h2ox_02yp      2     3   0.9997    -1  11.3353    0.0001     0.0173   0.0000   0.0000  exchanged
h2ox_02yp      3     2   0.9999     1  11.3333    0.1368     0.0000   0.0167  -0.7017  exchanged
1 of 1 job with doubt; states: 1 same, 2 exchanged, 0 mixed, 0 lost.
)");
    const auto clear = run({"--states=1,4", "h2ox_ref.fchk", "h2ox_01zp.fchk", "h2ox_02yp.fchk"});
    EXPECT_EQ(clear.status, 0);
    EXPECT_THAT(clear.output, testing::EndsWith("\n2 jobs: all states the same and clear.\n"));
}

TEST_F(SgnStates, TellsOfMixedAndLostStatesAndOfStigruz) {
    exchange_roots("h2ox_02yp", 1, 4);
    const auto told =
        run({"--mixed-below=0.99965", "--lost-below=0.9995", "h2ox_ref.fchk", "h2ox_02yp.fchk"});
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(
        told.output,
        HasSubstr(
            R"(h2ox_02yp      1     4   0.9998    -1   9.3090    0.0629    -0.5251   0.0000   0.0000  mixed: 1.00 root 4, 0.02 root 3
h2ox_02yp      2                                                                       lost: 1.00 root 3, 0.02 root 4; ask for more roots
h2ox_02yp      3     2   0.9999     1  11.3333    0.1368     0.0000   0.0167  -0.7017  exchanged
h2ox_02yp      4     1   1.0000     1  13.1231    0.0216     0.2591   0.0000   0.0000  exchanged
h2ox_02yp: stigruz takes root 1 with the sign -1 for state 1; the overlap says root 4 with the sign -1
1 of 1 job with doubt; states: 0 same, 2 exchanged, 1 mixed, 1 lost.
)"));
    EXPECT_THAT(run({"--lost-below=2", "h2ox_ref.fchk", "h2ox_ref.fchk"}).output,
                HasSubstr("\nh2ox_ref: stigruz takes root 1 with the sign 1 for state 1; no root "
                          "continues it\n"));
}

TEST_F(SgnStates, WritesJson) {
    const auto told = run({"--json=out.json", "--lost-below=0.9995", "--mixed-below=0.9996",
                           "--states=1,2", "h2ox_ref.fchk", "h2ox_02yp.fchk", "absent.fchk"});
    EXPECT_EQ(told.status, 2);
    EXPECT_EQ(told.errors,
              "sgn_states: absent.fchk: cannot be opened: No such file or directory\n");
    EXPECT_THAT(told.output, HasSubstr("1 of 1 job with doubt"));
    EXPECT_EQ(rounded(contents_of(path("out.json"))),
              contents_of(support::data_file("states.json")));
    const auto shown = run({"--json", "-", "h2ox_ref.fchk", "h2ox_02yp.fchk"});
    EXPECT_EQ(json::parse(shown.output)["jobs"][0]["name"], "h2ox_02yp");
}

TEST_F(SgnStates, WritesCsv) {
    const auto told =
        run({"--csv", "--states", "2", "--mixed-below", "0.999", "--lost-below=0.9995",
             "h2ox_ref.fchk", "h2ox_01zp.fchk", "h2ox_02yp.fchk"});
    EXPECT_EQ(rounded(told.output),
              "job,state,root,overlap,sign,energy,strength,dipole_x,dipole_y,dipole_z,verdict,"
              "overlaps\r\n"
              "h2ox_ref,2,,,,11.380365,0,0,-0,-0,reference,\r\n"
              "h2ox_01zp,2,2,0.999810,-1,11.325844,0,0,-0,-0,same,0.000000 -0.999810 0.000000 "
              "0.000000\r\n"
              "h2ox_02yp,2,,,0,,,,,,lost,-0.017044 0.000000 -0.999729 0.003091\r\n");
}

/// The derivatives of all states from the written files, by central differences.
TEST_F(SgnStates, WritesResultFilesOfEveryState) {
    const words jobs{"h2ox_01zm.fchk", "h2ox_01zp.fchk", "h2ox_02ym.fchk", "h2ox_02yp.fchk"};
    words line{"--write", "h2ox_ref.fchk", "h2ox_ref.fchk"};
    line.insert(line.end(), jobs.begin(), jobs.end());
    const auto told = run(line);
    EXPECT_EQ(told.errors, "");
    EXPECT_THAT(told.output, HasSubstr("20 result files written.\n"));
    EXPECT_EQ(names_of(".*_s[1-4]\\.sgn").size(), 20U);
    std::map<std::string, double> phase;  // of the reference's states
    for (const auto& row : support::table_of("crossing/states.txt")) {
        if (row[0] == "h2ox_ref") phase[row[1]] = std::stod(row[4]);
    }
    const auto dipole = [&](const std::string& name) {
        return numfreq::read_sgn_file(path(name)).corrected_tdip;
    };
    const auto rows = support::table_of("crossing/derivatives.txt");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const auto& [state, atom, axis, dx, dy, dz] =
            std::tie(rows[i][0], rows[i][1], rows[i][2], rows[i][3], rows[i][4], rows[i][5]);
        const std::string stem = "h2ox_0" + atom + axis;
        const auto plus = dipole(stem + "p_s" + state + ".sgn");
        const auto minus = dipole(stem + "m_s" + state + ".sgn");
        const double step = 0.02 / flib::bohr_radius;
        for (std::size_t k = 0; k < 3; ++k) {
            // The dipoles are rounded to four decimals.
            EXPECT_NEAR((plus[k] - minus[k]) / step, phase[state] * std::stod(rows[i][3 + k]),
                        1e-4 / step)
                << stem << ' ' << state;
        }
    }
    // Every tool reads them.
    const auto checked =
        run({"--no-pairs", "h2ox_ref_s3.sgn", "h2ox_01zm_s3.sgn", "h2ox_02yp_s3.sgn"}, "sgn_check");
    EXPECT_EQ(checked.errors, "");
    EXPECT_EQ(checked.status, 0) << checked.output;
}

TEST_F(SgnStates, WritesForTheFirstStateWhatStigruzWrites) {
    fs::copy(EXAMPLES "/water", scratch_.path());
    const words jobs{"h2o_01xm.fchk", "h2o_02yp.fchk", "h2o_03zm.fchk"};
    words line{"--write", "--states=1", "-j", "2", "h2o_ref.fchk"};
    line.insert(line.end(), jobs.begin(), jobs.end());
    EXPECT_EQ(run(line).status, 0);
    EXPECT_EQ(run({"h2o_ref.fchk"}, "stigruz").status, 0);
    EXPECT_EQ(contents_of(path("h2o_ref_s1.sgn")), contents_of(path("h2o_ref.sgn")));
    for (const std::string& checkpoint : jobs) {
        EXPECT_EQ(run({checkpoint, "h2o_ref.sgn"}, "stigruz").status, 0);
        const std::string name = checkpoint.substr(0, checkpoint.find('.'));
        EXPECT_EQ(contents_of(path(name + "_s1.sgn")), contents_of(path(name + ".sgn")));
    }
    EXPECT_EQ(names_of("h2o_.*_s[2-4]\\.sgn"), words{});
}

TEST_F(SgnStates, WritesLostStatesAsWithoutASign) {
    EXPECT_EQ(
        run({"--write", "--states=3", "--lost-below=0.9998", "h2ox_ref.fchk", "h2ox_02yp.fchk"})
            .status,
        1);
    const auto lost = numfreq::read_sgn_file(path("h2ox_02yp_s3.sgn"));
    const auto reference = numfreq::read_sgn_file(path("h2ox_ref_s3.sgn"));
    EXPECT_EQ(lost.parameters.sign, 0);
    EXPECT_EQ(lost.parameters.tden_maxval, 0);
    EXPECT_EQ(lost.corrected_tdip, (std::array<double, 3>{}));
    EXPECT_EQ(lost.parameters.tden_maxloc, reference.parameters.tden_maxloc);
    EXPECT_EQ(reference.corrected_tdip, (std::array{0.0, 0.0, -0.7}));
    EXPECT_EQ(lost.frc[0][2], 0.094387256);
}

TEST_F(SgnStates, ShowsItsProgressOnATerminal) {
    const int terminal = run({"-qec", "true", "/dev/null"}, "/usr/bin/script").status;
    if (terminal != 0) GTEST_SKIP() << "no terminal to be had";
    const std::string command = "TERM=xterm NO_COLOR= " TOOL_DIRECTORY
                                "/sgn_states h2ox_ref.fchk h2ox_02yp.fchk h2ox_01zp.fchk";
    const std::string shown = run({"-qec", command, "/dev/null"}, "/usr/bin/script").output;
    EXPECT_THAT(shown, testing::StartsWith("\r\033[K1 of 2 jobs\r\033[KJob "));
    EXPECT_THAT(shown, HasSubstr(" \033[32msame\033[0m\r\n"));
    EXPECT_THAT(shown, HasSubstr(" \033[1;31mexchanged\033[0m\r\n"));
}

TEST_F(SgnStates, GivesTheSameWithSeveralThreads) {
    fs::copy(EXAMPLES "/water", scratch_.path());
    fs::remove(path("h2o_02xm.cis"));
    words line{"--csv", "h2o_ref.fchk"};
    for (const std::string& name : names_of("h2o_.*\\.fchk")) line.push_back(name);
    const auto alone = run(line);
    EXPECT_EQ(alone.status, 2);
    line.insert(line.begin(), {"-j", "4"});
    const auto together = run(line);
    EXPECT_EQ(together.status, 2);
    EXPECT_EQ(together.output, alone.output);
    EXPECT_EQ(together.errors, alone.errors);
}

TEST_F(SgnStates, NamesJobsItCannotReadAndGoesOn) {
    fs::create_directory(path("there"));
    fs::copy(path("h2ox_02yp.fchk"), path("there"));
    change("h2ox_01zm.log", "roots to seek:     4", "roots to seek:     5");
    const auto told =
        run({"--write", "h2ox_ref.fchk", "h2ox_02yp.fchk", "./h2ox_02yp.fchk",
             "there/h2ox_02yp.fchk", "h2ox_01zm.fchk", "", "h2ox_02ym.log", "h2ox_02ym.fchk"});
    EXPECT_EQ(told.status, 2);
    EXPECT_EQ(
        told.errors,
        "sgn_states: there/h2ox_02yp.fchk: has the name of h2ox_02yp.fchk, and so the same "
        "log and dump\n"
        "sgn_states: h2ox_01zm.log: line 82: 'to' stands where a real number was expected\n"
        "sgn_states: '': cannot be a job: without directory and extension nothing is left as its "
        "name\n"
        "sgn_states: h2ox_02ym.log: is not a formatted checkpoint\n");
    EXPECT_THAT(run({"h2ox_ref.fchk", "absent.fchk"}).output, HasSubstr("\nNo job was read.\n"));
    EXPECT_THAT(told.output,
                HasSubstr("\n1 of 2 jobs with doubt; states: 6 same, 2 exchanged, 0 "
                          "mixed, 0 lost; 4 jobs not read.\n12 result files written.\n"));
    // A directory stands where a result file is to be.
    fs::create_directory(path("h2ox_01zp_s2.sgn"));
    const auto refused = run({"--write", "h2ox_ref.fchk", "h2ox_01zp.fchk", "h2ox_02ym.fchk"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.errors, testing::StartsWith("sgn_states: h2ox_01zp_s2.sgn: "));
    EXPECT_THAT(refused.output,
                HasSubstr("\n1 job: all states the same and clear; 1 job not read.\n9 result "
                          "files written.\n"));
    EXPECT_EQ(names_of("h2ox_01zp_s.\\.sgn"), (words{"h2ox_01zp_s1.sgn", "h2ox_01zp_s2.sgn"}));
}

TEST_F(SgnStates, WritesNothingOverTheResultOfAnotherJob) {
    for (const char* suffix : {".log", ".fchk", ".cis"}) {
        fs::copy(path(std::string("h2ox_02yp") + suffix),
                 path(std::string("h2ox_ref_s4") + suffix));
    }
    const auto refused = run({"--write", "h2ox_ref.fchk", "h2ox_01zm.fchk", "h2ox_ref_s4.fchk"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(
        refused.errors,
        "sgn_states: --write would write h2ox_ref_s4.sgn for h2ox_ref, but that is the result "
        "of another job\n");
    EXPECT_EQ(names_of(".*\\.sgn"), words{});
    EXPECT_EQ(run({"--write", "--states=1-3", "h2ox_ref.fchk", "h2ox_ref_s4.fchk"}).errors, "");
}

TEST_F(SgnStates, UnderstandsItsCommandLine) {
    const struct {
        words arguments;
        const char* complaint;
    } cases[] = {
        {{"h2ox_ref.fchk"}, "needs a reference and jobs to follow it into"},
        {{"--states=5", "h2ox_ref.fchk", "h2ox_01zm.fchk"},
         "--states: there is no state 5, h2ox_ref.fchk has 4"},
        {{"--states=1-x", "h2ox_ref.fchk", "h2ox_01zm.fchk"},
         "--states: expected numbers like 1-3,7, not '1-x'"},
        {{"--mixed-below=-1", "a", "b"}, "--mixed-below takes a number, 0 or above, not '-1'"},
        {{"-j0", "a", "b"}, "--jobs takes a number, 1 or above, not '0'"},
        {{"--jobs=2x", "a", "b"}, "--jobs takes a number, 1 or above, not '2x'"},
        {{"--csv", "--json=-", "a", "b"}, "--csv and --json=- both write to standard output"},
        {{"a.fchk", "h2ox_ref.fchk"}, "a.fchk: cannot be opened: No such file or directory"},
        {{"--json=no/out", "h2ox_ref.fchk", "h2ox_01zp.fchk"}, "no/out: "},
    };
    for (const auto& [arguments, complaint] : cases) {
        const auto told = run(arguments);
        EXPECT_EQ(told.status, 2);
        EXPECT_THAT(told.errors, testing::StartsWith(std::string("sgn_states: ") + complaint));
    }
    // What was found is shown all the same.
    EXPECT_THAT(run({"--json=no/out", "h2ox_ref.fchk", "h2ox_01zp.fchk"}).output,
                HasSubstr("1 job: all states the same and clear.\n"));
    EXPECT_THAT(run({"--help"}).output, HasSubstr("\n  -j, --jobs=N "));
}

}  // namespace
