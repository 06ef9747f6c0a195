// What is shown of a file, in every form.
#include <gtest/gtest.h>

#include "common/json_text.h"
#include "qm_file/show.h"
#include "support/support.h"

namespace {

using qm_file::file_report;

/// "summary", "xyz", "json" or the name of a quantity, of a file with the name "edited".
std::string shown(const std::string& what, const file_report& report, const std::string& width) {
    tools::terminal on;
    if (!width.empty()) on.width = std::stoul(width);
    if (what == "summary") return summary(report, on);
    if (what == "xyz") return xyz(report);
    if (what == "json") return tools::json_text(json_of(report));
    for (const qm_file::named_quantity& known : qm_file::named_quantities()) {
        if (known.name == what) return rows_of(report, known, false, on);
        if ("+" + std::string(known.name) == what) return rows_of(report, known, true, on);
    }
    return "no form " + what;
}

TEST(QmFileShows, WhatTheRowsSay) {
    const support::scratch_directory scratch;
    for (const auto& row : support::table_of("qm_file_shown.txt")) {
        std::string text = support::contents_of(support::data_file(row[1]));
        if (row[2] == "END") {
            text.resize(text.find(row[3]));
        } else if (!row[2].empty()) {
            text = support::replaced(text, row[2], row[3]);
        }
        file_report report = qm_file::report_of(scratch.file("edited", text), flib::all_quantities);
        EXPECT_EQ(report.facts.file, scratch.path() / "edited");
        report.facts.file = "edited";
        EXPECT_EQ(shown(row[0], report, row[4]), row[5])
            << row[0] << " of " << row[1] << " with '" << row[3] << "' for '" << row[2] << "'";
    }
}

TEST(QmFileShows, TheFirstSixtyAtoms) {
    file_report report;
    report.facts.kind = {"TAG", "a file", "7", 3};
    report.facts.natom = 62;
    report.facts.numbers = std::vector<std::int32_t>(62, 6);
    const std::string text = summary(report, {});
    EXPECT_NE(text.find("\n      60  C \n  ... and 2 more atoms\n  (elements only)\n"),
              std::string::npos)
        << text;
    report.facts.natom = 60;
    report.facts.numbers->resize(60);
    EXPECT_NE(summary(report, {}).find("\n      60  C \n  (elements only)\n"), std::string::npos);
}

TEST(QmFileShows, NamesAsFarAsThereIsRoom) {
    file_report report;
    report.facts.file = "a/rather/long/name/of/a/directory/h2o_ref.log";
    report.facts.kind = {"TAG", "a file", "7", 3};
    report.facts.geometry.emplace();
    report.facts.geometry->x = {{1.0, -2.0, 3.0}};
    const auto rows = [&](std::optional<std::size_t> width) {
        return rows_of(report, qm_file::named_quantities()[3], true, {false, width});
    };
    EXPECT_EQ(rows({}),
              "a/rather/long/name/of/a/directory/h2o_ref.log:      1      1.000000000000     "
              "-2.000000000000      3.000000000000\n");
    EXPECT_EQ(rows(80).size(), 81U);
    EXPECT_EQ(rows(80).substr(30), ":      1    1.00000000   -2.00000000    3.00000000\n");
    EXPECT_EQ(rows(100).substr(100 - 68),
              ":      1      1.000000000000     -2.000000000000      3.000000000000\n");
}

TEST(QmFileShows, TheProgramsThatAreKnown) {
    EXPECT_EQ(qm_file::known_programs(),
              "CIF, ChemShell, EVC, GAMESS (US), Gaussian, NUMFORCE, NWChem, ORCA, PWscf, Q-Chem, "
              "TURBOMOLE, TeraChem, VASP, WIEN2k");
}

}  // namespace
