// What the tools write: JSON, numbers, whole files, and the lines in which they end.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <thread>

#include "common/json_text.h"
#include "common/output_file.h"
#include "common/program.h"
#include "flib/io/stop_run.h"
#include "support/support.h"

namespace {

TEST(JsonText, HasRowsOfNumbersOnOneLine) {
    const double none = std::nan("");
    using tools::json_value;
    json_value value;
    value["z\"\x01\xFF"] = "é\n\t\\\x7F\xC3\x28";
    value["rows"] = std::vector<std::vector<double>>{
        {1.0, -0.0, none}, {1e-300, 0.1, -std::numeric_limits<double>::infinity()}};
    value["a"] = {{"empty", json_value::array()}, {"none", nullptr}, {"yes", true}};
    value["mixed"] = json_value::array({1, json_value::object(), "b"});
    EXPECT_EQ(tools::json_text(value), support::contents_of(support::data_file("json_text.json")));
}

/// What `routine` writes to a standard stream.
std::string written_to(int descriptor, const std::function<void()>& routine) {
    const support::scratch_directory scratch;
    const std::string path = scratch.path() / "written";
    const int kept = dup(descriptor);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT, 0600);
    dup2(file, descriptor);
    routine();
    dup2(kept, descriptor);
    close(file);
    close(kept);
    return support::contents_of(path);
}

TEST(Output, IsAWholeFileOrStandardOutput) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("page", "old");
    EXPECT_EQ(written_to(STDOUT_FILENO, [&] { tools::write_result(path, "new\n"); }), "");
    EXPECT_EQ(support::contents_of(path), "new\n");
    EXPECT_EQ(written_to(STDOUT_FILENO, [] { tools::write_result("-", "text\n"); }), "text\n");
    EXPECT_EQ(scratch.names(), std::vector<std::string>{"page"});
    const std::string absent = scratch.path() / "absent/page";
    const auto ending = support::ending_of([&] { tools::write_result(absent, "x"); });
    ASSERT_TRUE(ending);
    EXPECT_EQ(ending->text.find(absent + ": "), 0U) << ending->text;
}

TEST(Output, TakesThePlaceOfWhatKilledRunsLeft) {
    const support::scratch_directory scratch;
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    const std::string left = scratch.file(".page." + std::to_string(child) + "-0", "half");
    std::filesystem::last_write_time(
        left, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    tools::write_result(scratch.path() / "page", "new\n");
    EXPECT_EQ(scratch.names(), std::vector<std::string>{"page"});
}

using arguments = std::span<const std::string_view>;

/// The status of a tool, and what it says to standard error.
std::string ending(const std::function<int(arguments)>& body) {
    char name[] = "/usr/bin/tool";
    char first[] = "a b";
    char second[] = "";
    char* argv[] = {name, first, second, nullptr};
    int status = -1;
    const std::string said =
        written_to(STDERR_FILENO, [&] { status = tools::run_tool("tool", 3, argv, body); });
    return std::to_string(status) + " " + said;
}

TEST(Program, EndsWithOneLineWhateverIsThrown) {
    const auto throwing = [&](const auto& what) {
        return ending([&](arguments) -> int { throw what; });
    };
    EXPECT_EQ(ending([](arguments given) {
                  EXPECT_EQ(std::vector<std::string_view>(given.begin(), given.end()),
                            (std::vector<std::string_view>{"a b", ""}));
                  return 17;
              }),
              "17 ");
    EXPECT_EQ(throwing(flib::io_error("x.sgn", 7, "no")), "2 tool: x.sgn: line 7: no\n");
    EXPECT_EQ(throwing(flib::stop_run{1, {"  Error!", "", " the reason"}}),
              "2 tool: Error! the reason\n");
    EXPECT_EQ(throwing(std::bad_alloc()), "2 tool: not enough memory\n");
    EXPECT_EQ(throwing(std::length_error("vector")), "2 tool: not enough memory\n");
    EXPECT_EQ(throwing(std::runtime_error("odd")), "2 tool: odd\n");
    char* nobody[] = {nullptr};
    EXPECT_EQ(tools::run_tool("tool", 0, nobody,
                              [](arguments given) { return static_cast<int>(given.size()); }),
              0);
}

/// A tool that is interrupted while it writes leaves nothing, and ends by the signal.
TEST(Program, LeavesNothingBehindWhenASignalEndsIt) {
    for (int round = 0; round < 30; ++round) {
        const int number = std::array{SIGHUP, SIGINT, SIGTERM}[static_cast<std::size_t>(round) % 3];
        const support::scratch_directory scratch;
        const pid_t child = fork();
        if (child == 0) {
            std::filesystem::current_path(scratch.path());
            std::signal(number, SIG_DFL);  // it may be ignored here, as below nohup
            // Two threads write until they are stopped.
            ending([](arguments) -> int {
                const auto write = [](const char* name) {
                    const std::string page(1 << 14, 'x');
                    while (true) tools::write_result(name, page);
                };
                const std::jthread other([&] { write("other"); });
                write("page");
                return 0;
            });
            _exit(0);
        }
        for (const char* name : {"other", "page"}) {
            while (!std::filesystem::exists(scratch.path() / name)) usleep(1000);
        }
        usleep(static_cast<useconds_t>(100 * round));
        kill(child, number);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(WIFSIGNALED(status) ? WTERMSIG(status) : 0, number);
        EXPECT_EQ(scratch.names(), (std::vector<std::string>{"other", "page"}));
    }
}

TEST(Program, LosesNoOutputWithoutAWordUnlessNobodyReadsIt) {
    const auto ending_of_writing_to = [](int descriptor) {
        const int kept = dup(STDOUT_FILENO);
        dup2(descriptor, STDOUT_FILENO);
        close(descriptor);
        const std::string end = ending([](arguments) {
            tools::show("text\n");
            return 1;
        });
        dup2(kept, STDOUT_FILENO);
        close(kept);
        return end;
    };
    const int full = open("/dev/full", O_WRONLY);
    if (full < 0) GTEST_SKIP() << "no /dev/full";
    EXPECT_EQ(ending_of_writing_to(full), "2 tool: standard output: No space left on device\n");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    EXPECT_EQ(ending_of_writing_to(ends[1]), "1 ");
}

}  // namespace
