#include "sgn/states/follow_jobs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <numeric>

#include "flib/io/stop_run.h"
#include "sgn/states/job_set.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;

/// What was followed, a line per job: name, then root and sign per state, or the reason.
std::string summary(const std::vector<sgn::job_result>& results) {
    std::string text;
    for (const sgn::job_result& each : results) {
        text += each.name + ":";
        if (!each.followed) text += " " + each.reason();
        for (std::size_t i = 0; each.followed && i < each.followed->states.size(); ++i) {
            const sgn::followed_state& state = each.followed->states[i];
            text += " " + std::to_string(state.root * state.sign);
        }
        text += "\n";
    }
    return text;
}

TEST(FollowJobs, GivesTheSameWithAnyNumberOfWorkers) {
    const support::scratch_directory scratch;
    const fs::path home = fs::current_path();
    fs::copy(support::data_file("crossing"), scratch.path());
    fs::current_path(scratch.path());
    const std::vector<std::int32_t> wanted{1, 2, 3};
    const sgn::reference_set reference = prepare(sgn::read_job("h2ox_ref.fchk"), wanted);
    const std::vector<std::string> jobs{"h2ox_02yp.fchk", "missing.fchk", "./h2ox_02yp.fchk",
                                        "h2ox_01zp.fchk"};
    for (const std::int32_t workers : {1, 3}) {
        std::vector<std::size_t> told;
        const auto tell = [&](std::size_t done, std::size_t all) {
            told.push_back(10 * done + all);
        };
        EXPECT_EQ(summary(follow_jobs(reference, jobs, {.workers = workers}, tell)),
                  "h2ox_02yp: -1 -3 2\n"
                  "missing: missing.fchk: cannot be opened: No such file or directory\n"
                  "h2ox_01zp: 1 -2 -3\n");
        EXPECT_EQ(told, (std::vector<std::size_t>{13, 23, 33}));
    }
    fs::current_path(home);
}

TEST(FollowJobs, FindsLogAndDumpBesideTheCheckpoint) {
    const support::scratch_directory scratch;
    // Every job in a directory of its own, under one name.
    const auto put = [&](const std::string& directory, const std::string& from) {
        fs::create_directory(scratch.path() / directory);
        for (const char* suffix : {".fchk", ".log", ".cis"}) {
            fs::copy_file(support::data_file("crossing/" + from + suffix),
                          scratch.path() / directory / (std::string("job") + suffix));
        }
        return (scratch.path() / directory / "job.fchk").string();
    };
    const std::string first = put("ref", "h2ox_ref");
    const std::vector<std::string> jobs{put("a", "h2ox_02yp"), put("b", "h2ox_01zp")};
    const std::vector<std::int32_t> wanted{1, 2, 3};
    const sgn::reference_set reference = prepare(sgn::read_job(sgn::files_beside(first)), wanted);
    EXPECT_EQ(summary(follow_jobs(reference, jobs, {.find = sgn::files_beside})),
              "job: -1 -3 2\njob: 1 -2 -3\n");
    // In the working directory all of them would be one job.
    EXPECT_THAT(summary(follow_jobs(reference, jobs, {.find = sgn::files_of})),
                testing::HasSubstr("has the name of"));
}

TEST(FollowJobs, ShowsNamesInPrintableCharacters) {
    const support::working_directory here;
    const auto put = [](const std::string& name, const std::string& from) {
        for (const char* suffix : {".fchk", ".log", ".cis"}) {
            fs::copy_file(support::data_file("crossing/" + from + suffix), name + suffix);
        }
    };
    put("a\x1b", "h2ox_ref");
    put("b\x1b", "h2ox_02yp");
    const sgn::job_set made = sgn::set_of_jobs("a\x1b.fchk", std::vector<std::string>{"b\x1b.fchk"},
                                               2, {.limits = {.mixed_below = 1}});
    EXPECT_THAT(made.mixed, testing::ElementsAre("b\\x1B.fchk: state 2 is mixed: the overlap is "
                                                 "1.00"));
    EXPECT_THAT(made.no_forces, testing::HasSubstr("a\\x1B.fchk: the forces are those of"));
    EXPECT_THAT(text_of(made.near.value()), testing::HasSubstr(" eV away in b\\x1B, less than"));
    sgn::job_result failed;
    failed.checkpoint = "a\x1b.fchk";
    failed.failure = std::make_exception_ptr(std::bad_alloc());
    EXPECT_EQ(failed.reason(), "a\\x1B.fchk: not enough memory");
    failed.failure = std::make_exception_ptr(flib::run_error("is odd"));
    EXPECT_EQ(failed.reason(), "a\\x1B.fchk: is odd");
}

}  // namespace
