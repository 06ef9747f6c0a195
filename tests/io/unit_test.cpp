#include "flib/io/unit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>

#include "flib/io/atomic_file.h"
#include "flib/io/stop_run.h"
#include "support/support.h"

namespace flib {
namespace {

namespace fs = std::filesystem;
using support::ending_of;
using support::scratch_directory;
using testing::ElementsAre;
using text = std::string;

/// The rest of a scope without the rights of root, with `directory` as its own.
class ordinary_user {
  public:
    explicit ordinary_user(const scratch_directory& directory) : root_(geteuid() == 0) {
        constexpr uid_t nobody = 65534;
        able_ = !root_ ||
                (chown(directory.path().c_str(), nobody, nobody) == 0 && seteuid(nobody) == 0);
    }
    ~ordinary_user() { EXPECT_TRUE(!root_ || seteuid(0) == 0); }
    ordinary_user(const ordinary_user&) = delete;
    ordinary_user& operator=(const ordinary_user&) = delete;
    bool able() const { return able_; }

  private:
    bool root_;
    bool able_ = false;
};

/// All records of a file as buffers of four characters hold them.
text records(const text& contents) {
    const scratch_directory scratch;
    const input_unit fid(scratch.file("f", contents));
    text all;
    text line;
    for (line.assign(4, '?'); read_record(fid, line); line.assign(4, '?')) all += line + "|";
    EXPECT_EQ(line, "????") << "changed at the end of the file";
    return all;
}

TEST(Records, AreLinesWithoutTheirEnds) {
    EXPECT_EQ(records(""), "");
    EXPECT_EQ(records("\n"), "    |");
    EXPECT_EQ(records("a\r\nb\n\nlast"), "a   |b   |    |last|");
    EXPECT_EQ(records("\r\r\na\rbc\nx\r"), "\r   |a\rbc|x\r  |");  // one, before a newline
    EXPECT_EQ(records("abcd\r\nabcde\r\n"), "abcd|abcd|");         // cut before the return
}

TEST(Records, ErrorsNameTheLine) {
    const scratch_directory scratch;
    const text path = scratch.file("f", text(600000, 'x') + "\n\nlast");
    const input_unit fid(path);
    skip_records(fid, 3);
    EXPECT_EQ(ending_of([&] { skip_records(fid, 1); })->text,
              path + ": line 3: the file ends where a further line was expected");
}

TEST(Records, FileCutShortWhileOpen) {
    const scratch_directory scratch;
    const text path = scratch.file("f", text(900000, 'x'));
    const auto fails = [&](const std::function<void(std::int32_t)>& call) {
        fs::resize_file(path, 900000);
        const input_unit fid(path, open_at::end);
        fs::resize_file(path, 10);
        EXPECT_EQ(ending_of([&] { call(fid); })->text,
                  path + ": became shorter while it was being read");
    };
    text line(9, ' ');
    const line_test test = line_test::anywhere("q", line.size());
    fails([](std::int32_t fid) { step_back(fid); });
    fails([](std::int32_t fid) { rewind_unit(fid), skip_records(fid, 1); });
    fails([&](std::int32_t fid) { static_cast<void>(find_backward(fid, test, line)); });
    fails([&](std::int32_t fid) { static_cast<void>(find_last(fid, test, line)); });
}

TEST(Units, AreNumberedFrom100) {
    const scratch_directory scratch;
    const text path = scratch.file("f", "a\n");
    EXPECT_EQ(get_free_fid(), 100);
    open_old(100, path + "   ");  // trailing blanks are not part of a name
    const input_unit second(path);
    EXPECT_EQ(second, 101);
    EXPECT_EQ(get_free_fid(), 102);
    EXPECT_THROW(open_old(100, path), run_error);
    EXPECT_THROW(write_record(100, "x"), run_error);
    close_unit(100);
    EXPECT_FALSE(unit_is_open(100));
    EXPECT_EQ(get_free_fid(), 100);
    EXPECT_THROW(rewind_unit(100), run_error);
    open_replace(1, path);
    EXPECT_THROW(step_back(1), run_error);
    close_unit(1);
    close_unit(1);
}

TEST(Units, OpenRegularReadableFilesOnly) {
    const scratch_directory scratch;
    const text dir = scratch.path().string();
    ASSERT_EQ(mkfifo((dir + "/fifo").c_str(), 0644), 0);
    fs::permissions(scratch.file("secret", "a\n"), fs::perms::none);
    const ordinary_user user(scratch);
    if (!user.able()) GTEST_SKIP() << "can not give up the rights of root";
    for (const auto& [name, reason] : {std::pair{"", "is a directory"},
                                       {"/none", "can not be opened: No such file or directory"},
                                       {"/fifo", "is not a regular file"},
                                       {"/secret", "can not be opened: Permission denied"}}) {
        EXPECT_EQ(ending_of([&] { open_old(100, dir + name); })->text, dir + name + ": " + reason);
        EXPECT_FALSE(unit_is_open(100));
    }
}

TEST(Output, AppearsWholeOnCommit) {
    const scratch_directory scratch;
    const text path = scratch.file("old", "old\n");
    fs::permissions(path, fs::perms(0640));
    fs::create_symlink("old", scratch.path() / "link");
    fs::create_symlink("new", scratch.path() / "dangling");
    for (const char* name : {"link", "dangling"}) {
        open_replace(1, (scratch.path() / name).string() + "  ");
        write_record(1, "a ");
        write_record(1, "");
        EXPECT_THAT(scratch.names(), ElementsAre("dangling", "link", "old"));
        EXPECT_EQ(support::contents_of(path), "old\n");
        if (name == text("link"))
            close_unit(1);  // dropped
        else
            commit_unit(1);
        EXPECT_FALSE(unit_is_open(1));
    }
    EXPECT_EQ(support::contents_of(scratch.path() / "new"), "a \n\n");
    replace_file((scratch.path() / "link").string(), "other");
    EXPECT_EQ(support::contents_of(path), "other");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    EXPECT_TRUE(fs::is_symlink(scratch.path() / "link"));
    EXPECT_TRUE(fs::is_symlink(scratch.path() / "dangling"));
    EXPECT_THAT(scratch.names(), ElementsAre("dangling", "link", "new", "old"));
}

TEST(Output, FailureLeavesTheEarlierFile) {
    const scratch_directory scratch;
    const text dir = scratch.path().string();
    scratch.file("old", "old\n");
    fs::permissions(scratch.file("protected", "old\n"), fs::perms(0444));
    fs::create_symlink("loop", scratch.path() / "loop");
    fs::create_directory(scratch.path() / "taken");
    const ordinary_user user(scratch);
    if (!user.able()) GTEST_SKIP() << "can not give up the rights of root";
    const auto fails = [&](const text& name, const text& reason) {
        const auto end = ending_of([&] { replace_file(dir + name, "new"); });
        ASSERT_TRUE(end) << name;
        EXPECT_EQ(end->text, dir + name + ": can not be written: " + reason);
    };
    fails("/taken", "the name is taken by something else than a file");
    fails("/protected", "Permission denied");
    fails("/none/f", "No such file or directory");
    fails("/loop", "Too many levels of symbolic links");
    fs::permissions(dir, fs::perms(0555));
    fails("/old", "Permission denied");
    fails("/new", "Permission denied");
    fs::permissions(dir, fs::perms(0700));
    EXPECT_THAT(scratch.names(), ElementsAre("loop", "old", "protected", "taken"));
    EXPECT_TRUE(fs::is_empty(dir + "/taken"));
    EXPECT_EQ(support::contents_of(dir + "/protected"), "old\n");
}

TEST(Output, FileThatCanNotBeWrittenToTheEnd) {
    const scratch_directory scratch;
    const text path = scratch.file("old", "old\n");
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{1000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto end = ending_of([&] { replace_file(path, text(2000, 'x')); });
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->text, path + ": can not be written: File too large");
    EXPECT_THAT(scratch.names(), ElementsAre("old"));
    EXPECT_EQ(support::contents_of(path), "old\n");
}

TEST(StopRun, Messages) {
    const auto end = ending_of([] { miss_keyword("natom  "); });
    EXPECT_EQ(end, (support::ending{1, "Can not find keyword natom stop!", true}));
    EXPECT_EQ(printable("a\n\t\r\x1b\x7f\xff\xc3\xa9\xc2\x85\xe2\x82"),
              "a\\n\\t\\x0D\\x1B\\x7F\\xFF\xc3\xa9\\xC2\\x85\\xE2\\x82");
    EXPECT_STREQ(io_error("x\ny", 3, "m").what(), "x\\ny: line 3: m");
}

}  // namespace
}  // namespace flib
