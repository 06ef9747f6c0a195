#include "flib/io/unit.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "flib/io/atomic_file.h"
#include "flib/io/stop_run.h"
#include "support/support.h"

namespace flib {
namespace {

namespace fs = std::filesystem;
using support::ending_of;
using support::scratch_directory;
using text = std::string;

TEST(Units, AreNumberedFrom100) {
    const auto free_unit = [] {
        std::int32_t fid = -1;
        get_free_fid(fid);
        return fid;
    };
    const scratch_directory scratch;
    const text path = scratch.file("f", "a\n");
    open_old(100, path + "   ");  // trailing blanks are not part of a name
    {
        const input_unit second(path);
        EXPECT_EQ(second, 101);
        EXPECT_EQ(free_unit(), 102);
    }
    EXPECT_EQ(free_unit(), 101);
    EXPECT_THROW(open_old(100, path), run_error);
    EXPECT_THROW(write_record(100, "x"), run_error);
    close_unit(100);
    EXPECT_FALSE(unit_is_open(100));
    EXPECT_EQ(free_unit(), 100);
    EXPECT_THROW(rewind_unit(100), run_error);
    open_replace(1, path);
    EXPECT_THROW(step_back(1), run_error);
    close_unit(1);
    close_unit(1);
    open_replace(1, "/no/f");
    EXPECT_THROW(commit_unit(1), io_error);
    EXPECT_FALSE(unit_is_open(1));
}

TEST(Records, OfAFileCutShortHaveNoNumber) {
    const scratch_directory scratch;
    const text path = scratch.file("f", text(600000, '\n') + "x\n");
    const input_unit fid(path, open_at::end);
    step_back(fid);
    fs::resize_file(path, 10);
    EXPECT_EQ(error_at_last_record(fid, "here").what(), path + ": line 1: here");
    skip_records(fid, 1);
    EXPECT_EQ(error_at_last_record(fid, "here").what(), path + ": here");
    EXPECT_EQ(ending_of([&] { skip_records(fid, 1); })->text,
              path + ": the file ends where a further line was expected");
}

TEST(Units, AreRegularFiles) {
    const scratch_directory scratch;
    const text dir = scratch.path().string();
    ASSERT_EQ(mkfifo((dir + "/fifo").c_str(), 0600), 0);
    for (const auto& [path, reason] : {std::pair{dir, ": is a directory"},
                                       {dir + "/fifo", ": is not a regular file"},
                                       {"/dev/null", ": is not a regular file"}}) {
        EXPECT_EQ(ending_of([&, &name = path] { open_old(100, name); })->text, path + reason);
        EXPECT_FALSE(unit_is_open(100));
    }
}

TEST(Output, ReplacesFiles) {
    const bool root = geteuid() == 0;
    constexpr uid_t nobody = 65534;
    const fs::path home = fs::current_path();
    for (const auto& row : support::table_of("written_files.txt")) {
        const scratch_directory scratch;
        const text dir = fs::canonical(scratch.path()).string();
        fs::current_path(dir);
        EXPECT_EQ(std::system((row[0] + (root ? "; chown -hR 65534 ." : "")).c_str()), 0);
        const auto hidden = [&] {
            const auto names = scratch.names();
            return std::ranges::count(names, '.', [](const text& name) { return name[0]; });
        };
        const auto before = hidden();
        EXPECT_TRUE(!root || seteuid(nobody) == 0);
        const auto end = ending_of([&] { replace_file(row[1], "new\n"); });
        EXPECT_TRUE(!root || seteuid(0) == 0);
        // With the directory at the end, there is one to be replaced.
        const text said = support::replaced((end ? end->text : "done") + dir, dir, "D");
        EXPECT_EQ(said, row[2] + "D") << row[0];
        EXPECT_EQ(std::system(row[3].c_str()), 0) << row[0] << ": " << row[3];
        EXPECT_EQ(hidden(), before) << row[0];
        fs::current_path(home);
    }
}

TEST(Output, AppearsWholeOnCommit) {
    const scratch_directory scratch;
    const text path = scratch.file("old", "old\n");
    for (const bool commit : {false, true}) {
        open_replace(1, path + "  ");
        write_record(1, "a ");
        write_record(1, "");
        EXPECT_EQ(scratch.names(), std::vector<text>{"old"});
        EXPECT_EQ(support::contents_of(path), "old\n");
        commit ? commit_unit(1) : close_unit(1);
        EXPECT_FALSE(unit_is_open(1));
    }
    EXPECT_EQ(scratch.names(), std::vector<text>{"old"});
    EXPECT_EQ(support::contents_of(path), "a \n\n");
}

/// The number of a process that is no more.
text dead_process() {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    return std::to_string(child);
}

TEST(Output, OfDeadProcessesIsCleared) {
    const scratch_directory scratch;
    const text dead = dead_process(), alive = std::to_string(getpid());
    const text wide(220, 'w');
    const auto make = [&](const text& name, int seconds = 100) {
        const auto then = fs::file_time_type::clock::now() - std::chrono::seconds(seconds);
        fs::last_write_time(scratch.file(name, "x"), then);
    };
    std::vector<text> gone, kept;
    for (const auto& row : support::table_of("left_over.txt")) {
        text name = row[0];
        for (const auto& [word, number] : {std::pair{"DEAD", dead}, {"ALIVE", alive}}) {
            const std::size_t at = name.find(word);
            if (at != text::npos) name.replace(at, text(word).size(), number);
        }
        make(name);
        (row[1] == "gone" ? gone : kept).push_back(name);
    }
    // That of another machine's process may be new; and what is no file is not ours.
    make(".a.sgn." + dead + "-2", 20);
    kept.push_back(".a.sgn." + dead + "-2");
    fs::create_directory(scratch.path() / (".a.sgn." + dead + "-3"));
    kept.push_back(".a.sgn." + dead + "-3");
    fs::create_symlink(scratch.path() / "a.sgn", scratch.path() / "link");
    kept.emplace_back("link");
    std::ranges::sort(kept);

    remove_left_over(scratch.path() / "link");
    remove_left_over(scratch.path() / wide);
    EXPECT_EQ(scratch.names(), kept);
    const fs::path home = fs::current_path();
    fs::current_path(scratch.path());
    remove_left_over("b.sgn");
    fs::current_path(home);
    std::erase(kept, ".b.sgn." + dead + "-0");
    EXPECT_EQ(scratch.names(), kept);
    make(gone[0]);
    std::vector<text> asked;
    remove_left_over(scratch.path(), [&](std::string_view name) {
        asked.emplace_back(name);
        return false;
    });
    EXPECT_EQ(std::set<text>(asked.begin(), asked.end()), std::set<text>{"a.sgn"});
    EXPECT_EQ(scratch.names().size(), kept.size() + 1);
    remove_left_over(scratch.path() / "none", [](std::string_view) { return true; });
    remove_left_over(scratch.path() / "none/file");
}

TEST(StopRun, ShowsWhatCanBeShown) {
    for (const auto& row : support::table_of("printable.txt")) {
        text bytes;
        for (std::size_t i = 0; i < row[0].size(); i += 3) {
            bytes += static_cast<char>(std::stoi(row[0].substr(i, 2), nullptr, 16));
        }
        // What stands behind a text is no part of it.
        const text longer = bytes + "\x80\x80\x80";
        EXPECT_EQ(printable(std::string_view(longer).substr(0, bytes.size())), row[1]) << row[0];
    }
}

TEST(StopRun, Messages) {
    const auto end = ending_of([] { miss_keyword("natom  "); });
    EXPECT_EQ(end, (support::ending{1, "Can not find keyword natom stop!", true}));
    EXPECT_EQ(ending_of(stop_not_implemented),
              (support::ending{1, "  The method has not been implemented, stop!", true}));
    EXPECT_STREQ(stop_run(0, {" a b ", "", "  c"}).what(), "a b c");
    EXPECT_EQ(io_error("f", 1, "m").status(), 2);
    EXPECT_STREQ(io_error("x\ny", 3, "m").what(), "x\\ny: line 3: m");
    EXPECT_STREQ(io_error("", 0, "m").what(), "'': m");
    try {
        miss_keyword("NAE=  ");
    } catch (const missing_keyword& missing) {
        EXPECT_EQ(missing.keyword(), "NAE=");
    }
}

TEST(IoError, KeepsWhatItsTextIsMadeOf) {
    const auto parts = [](const io_error& of) {
        return of.file() + '|' + std::to_string(of.line()) + '|' + of.reason() + '|' +
               of.without_file();
    };
    EXPECT_EQ(parts({"x\ny: z", 3, "m: n"}), "x\ny: z|3|m: n|line 3: m: n");
    EXPECT_EQ(parts({"", 0, "m"}), "|0|m|m");
    // A copy is all of it, also as what it is caught as.
    try {
        throw io_error("f", 1, "m");
    } catch (const run_error& error) {
        EXPECT_EQ(parts(dynamic_cast<const io_error&>(error)), "f|1|m|line 1: m");
    }
}

}  // namespace
}  // namespace flib
