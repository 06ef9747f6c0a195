#include "sgn/inputs/input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "flib/util/gjf.h"
#include "sgn/inputs/displaced_jobs.h"
#include "support/support.h"

namespace {

using namespace sgn::inputs;
using support::answer_of;
using support::table_of;

std::string text_of(const std::vector<keyword>& keywords) {
    std::string text;
    for (const keyword& each : keywords) {
        text += (text.empty() ? "" : " ") + each.name;
        if (!each.options.empty()) text += "(" + text_of(each.options) + ")";
    }
    return text;
}

std::string text_of(const job_kind& kind) {
    std::string more;
    for (const std::string& each : kind.unknown) more += " unknown " + each;
    for (const std::string& each : kind.outside) more += ", " + each;
    return "root " + std::to_string(kind.root) + (kind.unit == length_unit::bohr ? " bohr" : "") +
           (kind.oniom ? " oniom" : "") + (kind.nosymm ? " nosymm" : "") +
           (kind.force ? " force" : "") + (kind.reads_checkpoint ? " reads" : "") + more;
}

TEST(Route, IsTakenApartAndJudged) {
    const auto rows = table_of("sgn_displace/routes.txt");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const std::string& route = rows[i][0];
        EXPECT_EQ(answer_of("", [&] { return text_of(parse_route(route)); }), rows[i][1]) << route;
        EXPECT_EQ(answer_of("", [&] { return text_of(judge_route(parse_route(route))); }),
                  rows[i][2])
            << route;
    }
}

TEST(Route, IsWrittenWithWhatIsMissing) {
    const auto rows = table_of("sgn_displace/written_routes.txt");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const std::string rest = "\n\nt\n\n0 1\nH 0 0 0\n\n";
        const job_template job = parse_input("x", rows[i][1] + rest);
        const std::string own_checkpoint = "%chk=J.chk\n";
        const std::string input = job.reference("J");
        EXPECT_EQ(support::replaced(input, own_checkpoint, ""), rows[i][2] + rest) << rows[i][0];
        std::string told;
        for (const std::string& line : job.told) told += (told.empty() ? "" : "; ") + line;
        EXPECT_EQ(told, rows[i][3]) << rows[i][0];
    }
}

/// Files that are read stay where they are, wherever the jobs go.
TEST(Input, NamesOtherFilesAsSeenFromTheJobs) {
    const auto rows = table_of("sgn_displace/other_files.txt");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const auto text = [](const std::string& links, const std::string& files) {
            return links + "#p td=read nosymm force\n\nt\n\n0 1\nH 0 0 0\n\n" + files;
        };
        const job_template job = parse_input("x", text(rows[i][1], rows[i][2]), rows[i][0]);
        EXPECT_EQ(support::replaced(job.reference("J"), "%chk=J.chk\n", ""),
                  text(rows[i][3], rows[i][4]))
            << i;
        std::string told;
        for (const std::string& line : job.told) told += (told.empty() ? "" : "; ") + line;
        EXPECT_EQ(told, rows[i][5]) << i;
        // The atom is found behind all that.
        EXPECT_THAT(job.displaced("J", 0, 0, {1, 0}), testing::HasSubstr("\nH 1 0 0\n")) << i;
    }
}

/// Each row puts something else into the place of a text of this input; "..." is its end.
TEST(Input, IsRefusedWithLineAndReason) {
    const std::string whole =
        "%mem=1GB\n# td/6-31g\n\ntitle\n\n0 1\nO 0 0.0 0.0 0.1\nH 0.0 0.7 0.4\n\nrest\n";
    const auto rows = table_of("sgn_displace/refused.txt");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const std::string& from = rows[i][0];
        const std::string text = rows[i][1] == "..."
                                     ? whole.substr(0, whole.find(from) + from.size())
                                     : support::replaced(whole, from, rows[i][1]);
        const auto atoms = [&] { return std::to_string(parse_input("a", text).atoms.size()); };
        EXPECT_EQ(answer_of("a", atoms), rows[i][2]) << from << " > " << rows[i][1];
    }
}

TEST(Input, AtomsStandWhereTheLibraryFindsThem) {
    std::int32_t line = 0;
    flib::get_gjf_charge_linenumber(support::data_file("sgn_displace/h2o.gjf"), line);
    EXPECT_EQ(line, 11);
}

TEST(NameOfSet, IsFitForAFileAndForAShell) {
    EXPECT_EQ(name_of_set("d-ir/A_1.opt+0-z.gjf"), "A_1.opt+0-z");
    EXPECT_EQ(name_of_set("job"), "job");
    for (const char* const unfit : {"-x.gjf", "..x.gjf", ".gjf", "a$b.gjf", "a/.b.gjf", "a b"}) {
        EXPECT_TRUE(support::ending_of([&] { name_of_set(unfit); })) << unfit;
    }
}

}  // namespace
