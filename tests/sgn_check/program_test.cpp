// sgn_check as its users run it, and what it says of sets made of the bundled one's result files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <regex>
#include <sstream>

#include "flib/io/fixed_field.h"
#include "sgn/result/sgn_file.h"
#include "sgn_check/options.h"
#include "sgn_check/report.h"
#include "support/session.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using sgn::result_file;
using sgn::vec3;

/// The directory with the result files of the bundled set, made once.
const fs::path& bundled() {
    static const support::scratch_directory scratch;
    static const bool made = [] {
        fs::copy(EXAMPLES "/water", scratch.path());
        const auto make = [](const std::vector<std::string>& arguments) {
            return support::run({"stigruz", arguments, scratch.path()}).status == 0;
        };
        bool all = make({"h2o_ref.fchk"});
        for (const std::string& name : scratch.names()) {
            if (name.starts_with("h2o_0") && name.ends_with(".fchk")) {
                all = make({name, "h2o_ref.sgn"}) && all;
            }
        }
        return all;
    }();
    EXPECT_TRUE(made);
    return scratch.path();
}

/// `text`, changed: "PATTERN>TEXT;..." puts texts where the patterns occur first.
std::string changed(std::string text, const std::string& changes) {
    std::istringstream in(changes);
    for (std::string pattern, with; std::getline(in, pattern, '>');) {
        std::getline(in, with, ';');
        text = std::regex_replace(text, std::regex(pattern), with,
                                  std::regex_constants::format_first_only);
    }
    return text;
}

/// "FILE: DOUBT DOUBT; ..." of the lines of CSV that tell doubts.
std::string doubts(const std::string& csv) {
    if (!csv.starts_with("file,")) return {};
    std::string text;
    std::istringstream lines(csv.substr(csv.find("\r\n") + 2));
    for (std::string line; std::getline(lines, line, '\r'); lines.get()) {
        const std::string last = line.substr(line.rfind(',') + 1);
        if (last.empty()) continue;
        text += (text.empty() ? "" : "; ") + line.substr(0, line.find(',')) + ": " + last;
    }
    return text;
}

/// A reference, oxygen moved along +x (this file is changed) and -x, and the former unchanged.
TEST(SgnCheck, SaysWhatStandsBelowEachStep) {
    const bool terminals = support::has_terminals();
    const support::scratch_directory scratch;
    for (const auto& [name, from] : {std::pair{"ref.sgn", "h2o_ref.sgn"},
                                     {"-ref.sgn", "h2o_ref.sgn"},
                                     {"minus.sgn", "h2o_01xm.sgn"},
                                     {"again.sgn", "h2o_01xp.sgn"}}) {
        fs::copy_file(bundled() / from, scratch.path() / name);
    }
    const std::string plus = support::contents_of(bundled() / "h2o_01xp.sgn");
    for (const auto& [step, said] : support::session_of("sgn_check_runs.txt")) {
        const std::vector<std::string> row = support::fields_of(step);
        scratch.file("plus.sgn", changed(plus, row.at(0)));
        support::command line{"sgn_check", support::words_of(row.at(1)), scratch.path()};
        if (line.arguments.at(0) == "TERMINAL") {
            if (!terminals) continue;
            line.terminal = line.arguments[1];
            line.arguments.erase(line.arguments.begin(), line.arguments.begin() + 2);
        }
        const std::string told = support::said_in(support::run(line));
        line.arguments.insert(line.arguments.begin(), "--csv");
        line.terminal.clear();
        fs::remove(scratch.path() / "out.json");
        const std::string found = doubts(support::run(line).output);
        EXPECT_EQ(told + (found.empty() ? "" : "doubts: " + found + "\n"), said) << "$ " << step;
    }
}

TEST(SgnCheck, WritesJsonAndCsv) {
    const support::scratch_directory scratch;
    const std::string odd = "o\"d,\n\xFF";
    fs::copy_file(bundled() / "h2o_ref.sgn", scratch.path() / "ref.sgn");
    fs::copy_file(bundled() / "h2o_01xp.sgn", scratch.path() / "h2o_01xp.sgn");
    fs::copy_file(bundled() / "h2o_01xm.sgn", scratch.path() / odd);
    scratch.file("plus.sgn", changed(support::contents_of(bundled() / "h2o_01xp.sgn"),
                                     "4.3660557362E-01>NAN;0.010000>0.003000;0.760000>0.764000"));
    const auto run = [&](const std::string& form) {
        const auto told = support::run(
            {"sgn_check",
             {"ref.sgn", "plus.sgn", odd, "h2o_01xp.sgn", "absent.sgn", "--max-turn", "0.5", form},
             scratch.path()});
        EXPECT_EQ(told.status, 2);
        return told.output;
    };
    const std::string json = support::contents_of(support::data_file("sgn_check.json"));
    EXPECT_EQ(run("--csv"), support::contents_of(support::data_file("sgn_check.csv")));
    EXPECT_EQ(run("--json=-"), json);
    EXPECT_TRUE(run("--json=out").starts_with("File "));
    EXPECT_EQ(support::contents_of(scratch.path() / "out"), json);
}

vec3 turned(const vec3& v, double degrees, double digits) {
    const double c = std::cos(degrees * 3.14159265358979 / 180);
    const double s = std::sin(degrees * 3.14159265358979 / 180);
    vec3 result{c * v[0] - s * v[1], s * v[0] + c * v[1], v[2]};
    for (double& component : result) component = std::round(component * digits) / digits;
    return result;
}

/// The whole bundled set, "ref" and "01xm" to "03zp".
struct sample {
    result_file reference{};
    std::vector<result_file> files{};

    sample() {
        static const sample unchanged = [] {
            sample set(0);
            const auto read = [](const std::string& name) {
                return result_file{
                    name, sgn::read_sgn_file((bundled() / ("h2o_" + name + ".sgn")).string())};
            };
            set.reference = read("ref");
            for (const char atom : {'1', '2', '3'}) {
                for (const char axis : {'x', 'y', 'z'}) {
                    for (const char side : {'m', 'p'})
                        set.files.push_back(read({'0', atom, axis, side}));
                }
            }
            return set;
        }();
        *this = unchanged;
    }
    explicit sample(int) {}

    /// One step of a row of the table.
    void change(const std::string& step) {
        const std::vector<std::string> words = support::words_of(step);
        const std::string& what = words.at(0);
        const double number = words.size() > 2 ? std::stod(words.back()) : 0;
        if (what == "keep") return files.resize(std::stoul(words[1]));
        if (what == "double" || what == "turning" || what == "turned") {
            for (const double side : {-1.0, 1.0}) add(what, side, std::stod(words[1]));
            return;
        }
        const auto named = std::find_if(files.begin(), files.end(), [&](const result_file& file) {
            return file.name == words.at(1);
        });
        sgn::sgn_contents& file = (named == files.end() ? reference : *named).contents;
        vec3& dipole = file.corrected_tdip;
        if (what == "reverse") {  // what the file says still fits together
            for (double& component : dipole) component = -component;
            file.parameters.sign = -file.parameters.sign;
            file.parameters.tden_maxval = -file.parameters.tden_maxval;
        } else if (what == "dipole") {
            dipole[static_cast<std::size_t>(words[2][0] - 'x')] += number;
        } else if (what == "scale") {
            for (double& component : dipole) component *= number;
        } else if (what == "turn_dipole") {
            dipole = turned(dipole, number, 1e4);
        } else if (what == "turn") {
            for (vec3& atom : file.x) atom = turned(atom, number, 1e6);
        } else if (what == "stand") {
            file.x = reference.contents.x;
            for (vec3& atom : file.x) atom = turned(atom, number, 1e6);
        } else if (what == "sign") {
            file.parameters.sign = static_cast<std::int32_t>(number);
        } else if (what == "value") {
            file.parameters.tden_maxval = number;
        } else if (what == "row") {
            file.parameters.tden_maxloc[0] = static_cast<std::int32_t>(number);
        } else if (what == "nmo") {
            file.parameters.nmo = static_cast<std::int32_t>(number);
        } else if (what == "number") {
            file.nat[2] = static_cast<std::int32_t>(number);
        } else if (what == "force") {
            file.frc[2][1] = number;
        } else {
            throw std::runtime_error("no step " + step);
        }
    }

  private:
    /// A file of another pair, "p" or "m": half as far again as 01xp or 01xm, or turned about the z
    /// axis, with its dipole or without.
    void add(const std::string& what, double side, double number) {
        result_file more = what == "double" ? files[side < 0 ? 0 : 1] : reference;
        more.name = side < 0 ? "m" : "p";
        sgn::sgn_contents& file = more.contents;
        if (what == "double") {
            file.x[0][0] += side * 0.01 * (number - 1);
            for (std::size_t k = 0; k < 3; ++k) {
                const double there = reference.contents.corrected_tdip[k];
                const double change = number * (file.corrected_tdip[k] - there);
                file.corrected_tdip[k] = std::round((there + change) * 1e4) / 1e4;
            }
        } else {
            const double angle = side * number * 3.14159265358979 / 180;
            const auto turn = [&](vec3& v, double digits) {
                v = {std::round((v[0] - angle * v[1]) * digits) / digits,
                     std::round((v[1] + angle * v[0]) * digits) / digits, v[2]};
            };
            for (vec3& atom : file.x) turn(atom, 1e6);
            if (what == "turning") {
                turn(file.corrected_tdip, 1e4);
                for (vec3& force : file.frc) turn(force, 1e9);
            }
        }
        files.push_back(more);
    }
};

/// `text` with six decimals: the last digits of sums are not the same everywhere.
std::string rounded(std::string text) {
    const std::regex real("-?[0-9]+([.][0-9]+(e[-+][0-9]+)?|e[-+][0-9]+)");
    std::string result;
    for (std::smatch found; std::regex_search(text, found, real); text = found.suffix()) {
        result += found.prefix().str() + flib::decimal(std::stod(found.str()), 6);
    }
    return result + text;
}

/// Steps "CHANGES | OPTIONS": changes of the bundled set, and below what is shown, and the doubts.
TEST(SgnCheckSet, IsJudgedAsTheSessionSays) {
    for (const auto& [command, said] : support::session_of("sgn_check_sets.txt")) {
        const std::size_t bar = command.find('|');
        sample set;
        std::istringstream steps(command.substr(0, bar));
        for (std::string step; std::getline(steps, step, ',');) set.change(step);
        const std::vector<std::string> words = support::words_of("r f " + command.substr(bar + 1));
        const auto options =
            sgn_check::parse_options(std::vector<std::string_view>(words.begin(), words.end()));
        const auto judged = sgn::check(set.reference, set.files, options.limits);
        const std::string csv = sgn_check::csv(judged);
        std::string told = sgn_check::table(judged, {}, {});
        if (options.json) {
            told = rounded(sgn_check::json(judged, {}, options.limits));
            told.erase(0, told.find("\"sum_rules\""));
        } else if (options.csv) {
            told = rounded(csv.substr(0, csv.find("01ym")));
            std::erase(told, '\r');
        }
        if (!told.ends_with('\n')) told += '\n';
        const std::string found = doubts(csv);
        EXPECT_EQ(told + "doubts:" + (found.empty() ? "" : " ") + found + "\n", said) << command;
    }
}

}  // namespace
