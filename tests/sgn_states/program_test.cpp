// sgn_states as its users run it: the smaller bundled set, in which states change places, water,
// and a set with linear dependences.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <regex>

#include "flib/util/units.h"
#include "sgn/result/sgn_file.h"
#include "support/json_difference.h"
#include "support/session.h"

namespace {

namespace fs = std::filesystem;

/// Long numbers with six decimals: the last digits of overlaps are those of the machine.
std::string rounded(const std::string& text) {
    static const std::regex real("-?[0-9]+\\.[0-9]{7,}(e-[0-9]+)?|-?[0-9]+(\\.[0-9]+)?e-[0-9]+");
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

    support::outcome run(const std::vector<std::string>& arguments,
                         const char* tool = "sgn_states") const {
        return support::run({tool, arguments, scratch_.path()});
    }

    support::scratch_directory scratch_;
};

TEST_F(SgnStates, SaysAndWritesThis) {
    fs::copy(EXAMPLES "/water", scratch_.path());
    fs::copy(support::data_file("dependent"), scratch_.path(),
             fs::copy_options::recursive | fs::copy_options::skip_existing);
    support::expect_session("sgn_states/session.txt", scratch_.path(), rounded);
}

/// The derivatives of all states from the written files, by central differences.
TEST_F(SgnStates, WritesFilesThatGiveTheTrueDerivatives) {
    const auto told = run({"--write", "h2ox_ref.fchk", "h2ox_01zm.fchk", "h2ox_01zp.fchk",
                           "h2ox_02ym.fchk", "h2ox_02yp.fchk"});
    EXPECT_THAT(told.output, testing::HasSubstr("20 result files written.\n"));
    std::map<std::string, double> phase;  // of the reference's states
    for (const auto& row : support::table_of("crossing/states.txt")) {
        if (row[0] == "h2ox_ref") phase[row[1]] = std::stod(row[4]);
    }
    const auto rows = support::table_of("crossing/derivatives.txt");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const auto& state = rows[i][0];
        const auto dipole = [&](const std::string& sign) {
            const std::string name = "h2ox_0" + rows[i][1] + rows[i][2] + sign + "_s" + state;
            return sgn::read_sgn_file((scratch_.path() / (name + ".sgn")).string()).corrected_tdip;
        };
        const double step = 0.02 / flib::bohr_radius;
        for (std::size_t k = 0; k < 3; ++k) {
            // The dipoles are rounded to four decimals.
            EXPECT_NEAR((dipole("p")[k] - dipole("m")[k]) / step,
                        phase[state] * std::stod(rows[i][3 + k]), 1e-4 / step)
                << state << ' ' << rows[i][1] << rows[i][2];
        }
    }
}

/// State 2 of the reference is root 3 here, with its phase turned: the third row of the checkpoint
/// times -1.
TEST_F(SgnStates, TellsAllMomentsOfTheContinuingRoot) {
    const std::string checkpoint = (scratch_.path() / "h2ox_02yp.fchk").string();
    const std::string right = support::contents_of(checkpoint);
    const std::vector<std::string> names{"dipole", "velocity_dipole", "magnetic_dipole",
                                         "velocity_quadrupole", "strength"};
    // 2/3 0.416568 0.0172769662^2 (energies have the digits of the dump)
    const auto full = nlohmann::json::parse(R"({
        "dipole": [0.0172769662, 0, 0], "velocity_dipole": [-7.25448061e-3, 0, 0],
        "magnetic_dipole": [0, -2.61527837e-3, -0.159144255],
        "velocity_quadrupole": [0, 0, 0, 0.248494388, 2.16301519e-3, 0],
        "strength": 8.28948e-5, "no_moments": null})");
    const auto printed = nlohmann::json::parse(R"({
        "dipole": [0.0173, 0, 0], "velocity_dipole": null, "magnetic_dipole": null,
        "velocity_quadrupole": null, "strength": 8.31159e-5})");
    struct row {
        const char* from;
        const char* to;
        const char* why;  // there are none
    };
    for (const auto& [from, to, why] :
         {row{"", "", nullptr},
          row{"ETran state values", "Etran state values",
              "h2ox_02yp.fchk: line 158: 'ETran NETS' stands in a file without 'ETran state "
              "values'"},
          row{" -7.55976626E+01 -1.72769662E-02", " -7.55976626E+01 -1.73769662E-02",
              "h2ox_02yp.fchk: has a transition dipole of state 3 that does not round to that of "
              "h2ox_02yp.log: they are not of one run"},
          row{"2.22987683E-01", "2.32987683E-01",
              "h2ox_02yp.fchk: has coordinates that are 0.0053 Angstrom from those of "
              "h2ox_02yp.log: they are not of one run"}}) {
        support::write_file(checkpoint, *from ? support::replaced(right, from, to) : right);
        const auto json = nlohmann::json::parse(
            run({"--json=-", "--states=2", "h2ox_ref.fchk", "h2ox_02yp.fchk"}).output);
        auto expected = why == nullptr ? full : printed;
        if (why != nullptr) expected["no_moments"] = why;
        nlohmann::json told{{"no_moments", json["jobs"][0]["no_moments"]}};
        for (const std::string& name : names) told[name] = json["jobs"][0]["states"][0][name];
        EXPECT_EQ(support::difference(told, expected), "") << to;
        // The same job as the reference, its phase as it is.
        const auto its = nlohmann::json::parse(
            run({"--json=-", "--states=3", "h2ox_02yp.fchk", "h2ox_ref.fchk"}).output);
        for (const std::string& name : names) {
            if (name == "strength") continue;
            for (auto& value : expected[name]) {
                if (value.is_number()) value = -value.get<double>();
            }
        }
        told = {{"no_moments", its["no_moments"]}};
        for (const std::string& name : names) told[name] = its["states"][0][name];
        EXPECT_EQ(support::difference(told, expected), "") << to;
    }
}

TEST_F(SgnStates, TellsAllMomentsInCsv) {
    const auto last_line = [&] {
        const std::string text =
            run({"--csv", "--states=2", "h2ox_ref.fchk", "h2ox_02yp.fchk"}).output;
        const std::string line = text.substr(text.rfind("h2ox_02yp"));
        std::string numbers;  // of the moments, but for those that vanish
        static const std::regex field("[^,\r\n]*(,|\r\n)");
        std::size_t at = 0;
        for (std::sregex_iterator each(line.begin(), line.end(), field), end; each != end;
             ++each, ++at) {
            std::string value = each->str();
            value.erase(value.find_first_of(",\r"));
            const bool moment = (at >= 8 && at < 11) || at >= 15;
            if (!moment) continue;
            const bool vanishes = !value.empty() && std::abs(std::stod(value)) < 1e-9;
            numbers += (numbers.empty() ? "" : ",") + (vanishes ? "0" : value);
        }
        return numbers;
    };
    EXPECT_EQ(last_line(),
              "0.0172769662,0,0,-0.00725448061,0,0,0,-0.00261527837,-0.159144255,"
              "0,0,0,0.248494388,0.00216301519,0");
    const std::string checkpoint = (scratch_.path() / "h2ox_02yp.fchk").string();
    support::write_file(checkpoint, support::replaced(support::contents_of(checkpoint),
                                                      "ETran state values", "Etran state values"));
    EXPECT_EQ(last_line(), "0.0173,0,0" + std::string(12, ','));
}

TEST_F(SgnStates, ColoursVerdictsOnATerminal) {
    const auto on_terminal = [this](const std::string& command) {
        return run({"-qec", command, "/dev/null"}, "/usr/bin/script");
    };
    if (on_terminal("true").status != 0) GTEST_SKIP() << "no terminal to be had";
    const std::string shown =
        on_terminal("TERM=xterm NO_COLOR= " TOOL_DIRECTORY
                    "/sgn_states --states=2 h2ox_ref.fchk h2ox_02yp.fchk h2ox_01zp.fchk")
            .output;
    EXPECT_EQ(support::replaced(shown, "\r\n", "\n"),
              "Job        State  Root  Overlap  Sign        Corrected dipole (au)  Verdict\n"
              "h2ox_ref       2                          0.0000   0.0000   0.0000  reference\n"
              "h2ox_02yp      2     3   0.9997    -1     0.0173   0.0000   0.0000  "
              "\033[1;31mexchanged\033[0m\n"
              "h2ox_01zp      2     2   0.9998    -1     0.0000   0.0000   0.0000  "
              "\033[32msame\033[0m\n"
              "State 2: another state is 0.0020 eV away in h2ox_02yp, less than 0.1 eV in 3 of 3 "
              "jobs; if the two mix, derivatives are not sound.\n"
              "1 of 2 jobs with doubt; states: 1 same, 1 exchanged, 0 mixed, 0 lost.\n");
}

}  // namespace
