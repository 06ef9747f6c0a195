// Every doubt: planted one at a time, found by both tools, and told in docs/findings.md.
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <set>

#include "flib/io/stop_run.h"
#include "sgn/check/check.h"
#include "sgn/check/report.h"
#include "support/changed_set.h"
#include "support/session.h"

namespace {

using sgn::doubt;

/// The names of all that sgn_check finds, each once.
std::string names_in(const sgn::assessment& judged) {
    std::set<std::string_view> names;
    for (const sgn::finding& each : judged.findings) names.insert(name_of(each.kind));
    for (const sgn::verdict& file : judged.verdicts) {
        for (const sgn::finding& each : file.findings) names.insert(name_of(each.kind));
    }
    EXPECT_EQ(judged.fine(), names.empty());
    std::string text;
    for (const std::string_view each : names) text.append(" ").append(each);
    return text;
}

/// All that sgn_derive finds, and its verdict; or why there is no result.
std::string told_of(const sets::changed_set& set) {
    return support::answer_of("", [&] {
        const sgn::report of = sgn::analyse(set.reference, set.files);
        std::string text;
        for (const sgn::finding& each : of.findings) {
            text.append(name_of(each.kind));
            if (each.job != each.whole_set) text += " " + of.set.jobs[each.job].name;
            text += ": " + each.text + "\n";
        }
        return text + verdict_of(of);
    });
}

TEST(Findings, AreThoseOfTheChangesInBothTools) {
    for (const auto& [changes, expected] : support::session_of("sgn_derive/findings.txt")) {
        const sets::changed_set set(changes);
        const std::string checked = names_in(sgn::check(set.reference, set.files, {}));
        EXPECT_EQ("sgn_check:" + checked + "\n" + told_of(set) + "\n", expected) << "$ " << changes;
    }
}

TEST(Findings, AreFilledOncePerGap) {
    EXPECT_EQ(text_of(doubt::asymmetric_pair, {"a{}.sgn", "0.5"}),
              "dipole not symmetric with a{}.sgn: 0.5 au");
}

TEST(Findings, StandInTheTableAndInItsPage) {
    const std::string page = support::contents_of(EXAMPLES "/../docs/findings.md");
    std::string rows;
    for (const sgn::doubt_row& each : sgn::doubts) {
        EXPECT_EQ(&row_of(each.kind), &each);
        std::string limit;
        if (!std::isnan(each.limit)) {
            limit = nlohmann::json(each.limit).dump();
            if (limit.ends_with(".0")) limit.resize(limit.size() - 2);
            limit.append(" ").append(each.unit);
        }
        for (std::size_t at = 0; (at = limit.find('|', at)) != std::string::npos; at += 2) {
            limit.insert(at, 1, '\\');
        }
        for (const std::string& cell :
             {"`" + std::string(each.name) + "`", std::string(each.words), limit,
              std::string(each.meaning), std::string(each.advice)}) {
            rows.append("| ").append(cell).append(" ");
        }
        rows += "|\n";
    }
    EXPECT_EQ(page.substr(page.find("| `")), rows);
}

}  // namespace
