// sgn_check as its users run it, and what it says of sets made of the bundled one's result files.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "flib/io/fixed_field.h"
#include "sgn_check/options.h"
#include "sgn_check/report.h"
#include "support/changed_set.h"
#include "support/session.h"

namespace {

namespace fs = std::filesystem;

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
        fs::copy_file(sets::water_directory() / from, scratch.path() / name);
    }
    const std::string plus = support::contents_of(sets::water_directory() / "h2o_01xp.sgn");
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
    fs::copy_file(sets::water_directory() / "h2o_ref.sgn", scratch.path() / "ref.sgn");
    fs::copy_file(sets::water_directory() / "h2o_01xp.sgn", scratch.path() / "h2o_01xp.sgn");
    fs::copy_file(sets::water_directory() / "h2o_01xm.sgn", scratch.path() / odd);
    scratch.file("plus.sgn", changed(support::contents_of(sets::water_directory() / "h2o_01xp.sgn"),
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
        const sets::changed_set set(command.substr(0, bar));
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
