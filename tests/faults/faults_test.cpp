// The sign tool when a call to the system fails, when its files change under it, and when it is
// killed: the earlier result or a whole new one, and never a wrong one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <random>

#include "support/job.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using support::contents_of;
using support::outcome;

/// A job with an earlier result, run again and again.
class victim {
  public:
    explicit victim(bool mapped) {
        std::mt19937_64 random(11);
        support::write_job(at(""), "a", support::random_job(random, 3, 1, 2, 3, 1, 1));
        run({});
        fs::rename(at("a.sgn"), at("ref.sgn"));
        if (mapped) arguments_.push_back("ref.sgn");
        undisturbed();
    }

    fs::path at(std::string_view name) const { return directory_.path() / name; }

    /// Takes the ending of a run without faults for the right one.
    void undisturbed() { expected_ = run({}); }

    /// Runs the tool with fault number `number` of a call; false if it is called less often.
    bool strike(std::string_view call, int number, std::vector<std::string> settings) {
        settings.push_back("LD_PRELOAD=" FAULT_LIBRARY);
        settings.push_back(std::string("FAULT_CALL=").append(call));
        settings.push_back("FAULT_AT=" + std::to_string(number));
        settings.push_back("FAULT_MARK=" + at("mark").string());
        ended_ = run(settings);
        return fs::remove(at("mark"));
    }

    /// Whether the last run ended as it does without faults.
    bool unaffected() const {
        return ended_.status == expected_.status && ended_.output == expected_.output &&
               ended_.errors == expected_.errors && result_ == right_result_;
    }

    /// The last run was not affected, or it ended with a diagnostic and changed nothing.
    void expect_all_or_nothing() const {
        EXPECT_THAT(names(), testing::ElementsAre("a.cis", "a.fchk", "a.log", "a.sgn", "ref.sgn"));
        if (unaffected()) return;
        EXPECT_EQ(ended_.status, 2);
        EXPECT_EQ(ended_.output, "");
        EXPECT_THAT(ended_.errors, testing::MatchesRegex("stigruz: [^\n]+\n"));
        EXPECT_EQ(result_, earlier);
    }

    void expect_no_result() const {
        EXPECT_THAT(ended_.errors + ended_.output, testing::EndsWith("\n"));
        EXPECT_GE(ended_.status, 0);
        EXPECT_EQ(result_, earlier);
    }

    /// Runs the tool for so many microseconds.
    void kill_after(int microseconds) {
        char moment[16];
        std::snprintf(moment, sizeof moment, "0.%06d", microseconds);
        run({}, {"timeout", "-s", "KILL", moment});
        EXPECT_THAT(result_, testing::AnyOf(earlier, right_result_));
    }

    std::vector<std::string> names() const { return directory_.names(); }

  private:
    outcome run(std::vector<std::string> command, const std::vector<std::string>& runner = {}) {
        support::write_file(at("a.sgn"), earlier);
        command.insert(command.end(), runner.begin(), runner.end());
        command.push_back(PRELOADABLE_TOOL);
        command.insert(command.end(), arguments_.begin(), arguments_.end());
        outcome ended = support::run({"/usr/bin/env", command, directory_.path()});
        result_ = contents_of(at("a.sgn"));
        if (command.front() == PRELOADABLE_TOOL) right_result_ = result_;
        return ended;
    }

    const std::string earlier = "an earlier result\n";
    support::scratch_directory directory_;
    std::vector<std::string> arguments_{"a.fchk"};
    outcome expected_;
    outcome ended_;
    std::string result_;
    std::string right_result_;
};

enum class effect { none, ends_run, depends };

struct fault {
    const char* call;
    int error;  // 0: it does only half of what it is asked to do
    effect what;
};

// A close matters only where something was written; without its first allocation the run-time
// library merely has no memory put by for exceptions.
const fault faults[] = {
    {"malloc", ENOMEM, effect::depends}, {"calloc", ENOMEM, effect::ends_run},
    {"open", EMFILE, effect::ends_run},  {"fstat", EIO, effect::ends_run},
    {"stat", EIO, effect::ends_run},     {"pread", EIO, effect::ends_run},
    {"pread", EINTR, effect::none},      {"pread", 0, effect::none},
    {"write", ENOSPC, effect::ends_run}, {"write", EINTR, effect::none},
    {"write", 0, effect::none},          {"fsync", EIO, effect::ends_run},
    {"close", EIO, effect::depends},     {"rename", EIO, effect::ends_run},
};

TEST(Faults, EachCallFailsOnce) {
    for (const bool mapped : {false, true}) {
        victim job(mapped);
        for (const auto& [call, error, what] : faults) {
            std::vector<std::string> settings;
            if (error != 0) settings.push_back("FAULT_ERRNO=" + std::to_string(error));
            int number = 1;
            for (; job.strike(call, number, settings); ++number) {
                SCOPED_TRACE(std::string(call) + " " + std::to_string(number));
                job.expect_all_or_nothing();
                EXPECT_TRUE(what == effect::depends || job.unaffected() == (what == effect::none));
            }
            EXPECT_GT(number, 1) << call << " is never called";
        }
    }
}

TEST(Faults, NoMemoryIsLeftFromSomePointOn) {
    for (const char* const log : {"", "no log of a known kind\n"}) {
        victim job(false);
        if (*log != '\0') support::write_file(job.at("a.log"), log);
        job.undisturbed();
        const std::string error = "FAULT_ERRNO=" + std::to_string(ENOMEM);
        for (int number = 1; job.strike("malloc", number, {"FAULT_LASTING=1", error}); ++number) {
            SCOPED_TRACE(number);
            job.expect_all_or_nothing();
        }
    }
}

TEST(Faults, FilesChangeWhileTheyAreRead) {
    const support::scratch_directory store;
    for (const bool layers : {false, true}) {
        victim job(true);
        // The log of another job will do: a mapped run takes no counts from it.
        if (layers)
            fs::copy(support::data_file("gaussian/oniom.log"), job.at("a.log"),
                     fs::copy_options::overwrite_existing);
        job.undisturbed();
        for (const char* const file : {"a.log", "a.fchk", "a.cis"}) {
            const std::string original = contents_of(job.at(file));
            // The last makes way for a log with one high-layer atom less.
            for (const char* const action :
                 {"truncate -s 500 $f", "echo more >>$f", "sed 's/ H $/ L /' $f >new; mv new $f"}) {
                const std::string setting =
                    std::string("FAULT_ACTION=f=").append(file).append("; ").append(action);
                for (int number = 1; job.strike("open", number, {setting}); ++number) {
                    SCOPED_TRACE(setting + " " + std::to_string(number));
                    if (!job.unaffected()) job.expect_no_result();
                    support::write_file(job.at(file), original);
                }
            }
        }
    }
}

TEST(Faults, KilledAtAnyMomentLeavesAWholeResult) {
    victim job(true);
    std::mt19937_64 random(5);
    for (int round = 0; round < 300; ++round) {
        job.kill_after(std::uniform_int_distribution<int>(1, 9999)(random));
        // A temporary file may stay behind.
        for (const std::string& name : job.names()) {
            if (name.starts_with(".")) fs::remove(job.at(name));
        }
    }
}

}  // namespace
