// The sign tool when a call to the system fails, when its files change under it, and when it is
// killed: the earlier result or a whole new one, and never a wrong one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hostile/place.h"

namespace {

namespace fs = std::filesystem;
using hostile::place;
using words = std::vector<std::string>;

/// Runs the tool again and again, with the next occurrence of a call struck each time.
void strike(const place& job, const std::string& call, const std::string& how,
            const std::string& endings, const std::string& once) {
    const std::string library = " LD_PRELOAD=" FAULT_LIBRARY " FAULT_MARK=mark FAULT_CALL=" + call;
    int number = 1;
    bool told = false;
    for (;; ++number) {
        job.restore();
        const std::string ended =
            job.run("exec env " + how + library + " FAULT_AT=" + std::to_string(number) +
                    " " PRELOADABLE_TOOL " \"$@\"");
        if (!fs::remove(job.at("mark"))) break;
        EXPECT_THAT(ended, testing::MatchesRegex("(" + endings + ")(: .*)?")) << number;
        told = told || ended.find(once) != std::string::npos;
    }
    EXPECT_TRUE(told) << number << " times called, and never: " << once;
}

class Faults : public testing::TestWithParam<const char*> {};

TEST_P(Faults, OfEachCallInTurn) {
    std::map<std::string, place> jobs;
    jobs.try_emplace("reference");
    jobs.try_emplace("unknown", words{"a.fchk"}, "echo no log of a known kind >a.log");
    jobs.try_emplace("mapped", words{"a.fchk", "ref.sgn"});
    // The log of another job will do: a mapped run takes no counts from it.
    jobs.try_emplace("layers", words{"a.fchk", "ref.sgn"},
                     "cp " TEST_DATA "/gaussian/oniom.log a.log");
    for (const auto& row : support::table_of("faults.txt")) {
        SCOPED_TRACE(row[0] + ": " + row[1]);
        const bool wanted = row[3].find(GetParam()) != std::string::npos;
        if (wanted) strike(jobs.at(GetParam()), row[1], row[2], row[4], row[5]);
    }
}

INSTANTIATE_TEST_SUITE_P(Jobs, Faults, testing::Values("reference", "unknown", "mapped", "layers"));

TEST(Killed, AtAnyMomentLeavesAWholeResult) {
    const place job({"a.fchk", "ref.sgn"});
    const std::string earlier = support::contents_of(job.at("a.sgn"));
    std::mt19937_64 random(5);
    for (int round = 0; round < 300; ++round) {
        job.restore();
        const int moment = std::uniform_int_distribution<int>(10001, 19999)(random);
        // A temporary file may stay behind.
        job.run("timeout -s KILL 0.00" + std::to_string(moment).substr(1) +
                " " PRELOADABLE_TOOL " \"$@\"; rm -f .a.sgn.*");
        EXPECT_THAT(support::contents_of(job.at("a.sgn")),
                    testing::AnyOf(earlier, support::contents_of(job.at("ref.sgn"))));
    }
}

}  // namespace
