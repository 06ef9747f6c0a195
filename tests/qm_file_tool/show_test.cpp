// What is shown of a file, in every form.
#include <gtest/gtest.h>

#include <algorithm>

#include "common/json_text.h"
#include "qm_file/show.h"
#include "support/session.h"
#include "support/support.h"

namespace {

using qm_file::file_report;

/// "summary", "xyz", "json" or a quantity, whose rows are labelled if a name of the file follows.
std::string shown(const std::string& form, file_report report, const std::string& width) {
    tools::terminal on;
    if (!width.empty()) on.width = std::stoul(width);
    const std::vector<std::string> words = support::words_of(form);
    report.facts.file = words.size() > 1 ? words[1] : "edited";
    if (form == "summary") return summary(report, on);
    if (form == "xyz") return xyz(report);
    if (form == "json") return tools::json_text(json_of(report));
    const auto known = qm_file::named_quantities();
    const auto which = std::ranges::find(known, words[0], &qm_file::named_quantity::name);
    return rows_of(report, *which, words.size() > 1, on);
}

TEST(QmFileShows, WhatTheRowsSay) {
    const support::scratch_directory scratch;
    for (const auto& [line, expected] : support::session_of("qm_file_shown.txt")) {
        const auto row = support::fields_of(line, 5);
        const std::string whole = support::contents_of(support::data_file(row[1]));
        const std::string path = scratch.file("edited", support::edited(whole, row[2], row[3]));
        const file_report report = qm_file::report_of(path, flib::all_quantities);
        EXPECT_EQ(report.facts.file, path);
        EXPECT_EQ(shown(row[0], report, row[4]), expected) << "$ " << line;
    }
}

}  // namespace
