// What reads do at the edges: behind the end of a file, interrupted, without standard streams.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "flib/io/free_format.h"
#include "flib/io/unit.h"
#include "support/support.h"

namespace flib {
namespace {

TEST(Input, StandsBehindTheEndMarkAfterAReadThatNeededMore) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", "1 2\n3\n");
    std::array<double, 4> values{};
    std::int32_t value = 0;
    for (const bool as_array : {false, true}) {
        const input_unit fid(path);
        const auto end = support::ending_of([&] {
            if (as_array) read_items(fid, std::span<double>(values));
            read_items(fid, discard{3}, value);
        });
        ASSERT_TRUE(end);
        EXPECT_TRUE(is_past_end(fid));
        step_back(fid);
        line_buffer line;
        EXPECT_FALSE(read_record(fid, line));
    }
}

TEST(Input, ErrorsOfALineNameTheOneThatASearchEndedWith) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", "a\nb\nc\nd\n");
    const input_unit fid(path);
    line_buffer line;
    EXPECT_TRUE(read_record(fid, line));
    EXPECT_FALSE(find_forward(fid, line_test::anywhere("q", line.size()), line, 2));
    EXPECT_EQ(line.trimmed(), "c");
    std::int32_t value = 0;
    const auto end = support::ending_of([&] {
        read_items(held_record{fid, line.padded()}, value);
    });
    EXPECT_EQ(end->text, path + ": line 3: 'c' stands where an integer was expected");
}

TEST(Input, FilesTakeNoPlaceOfAStandardStream) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", "7\n");
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const int kept = fcntl(stream, F_DUPFD_CLOEXEC, 10);
        close(stream);
        std::int32_t value = 0;
        bool taken = true;
        {
            const input_unit fid(path);
            taken = fcntl(stream, F_GETFD) != -1;
            read_items(fid, value);
        }
        dup2(kept, stream);
        close(kept);
        EXPECT_FALSE(taken) << stream;
        EXPECT_EQ(value, 7);
    }
}

int answer_to = -1;

TEST(Input, IsReadOnAfterASignal) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    answer_to = ends[1];
    const int kept = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 10);
    dup2(ends[0], STDIN_FILENO);
    struct sigaction on_alarm {};
    struct sigaction before {};
    // Without SA_RESTART, the read that waits fails, and only then there is something to read.
    on_alarm.sa_handler = [](int) { static_cast<void>(!write(answer_to, "7 8\n9\n", 6)); };
    sigaction(SIGALRM, &on_alarm, &before);
    const itimerval soon{{0, 0}, {0, 50'000}};
    setitimer(ITIMER_REAL, &soon, nullptr);
    std::int32_t first = 0;
    std::int32_t second = 0;
    const auto end = support::ending_of([&] { read_items(standard_input{}, first, second); });
    sigaction(SIGALRM, &before, nullptr);
    char rest[3] = {};
    EXPECT_EQ(read(STDIN_FILENO, rest, sizeof rest), 2);
    if (kept >= 0) dup2(kept, STDIN_FILENO);
    close(kept);
    close(ends[0]);
    close(ends[1]);
    EXPECT_FALSE(end) << end->text;
    EXPECT_EQ(first, 7);
    EXPECT_EQ(second, 8);
    EXPECT_EQ(std::string(rest), "9\n");
}

}  // namespace
}  // namespace flib
