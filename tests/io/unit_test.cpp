#include "flib/io/unit.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>

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

TEST(Units, AreNumberedFrom100) {
    const auto free_unit = [] {
        std::int32_t fid = -1;
        get_free_fid(fid);
        return fid;
    };
    const scratch_directory scratch;
    const text path = scratch.file("f", "a\n");
    open_old(100, path + "   ");  // trailing blanks are not part of a name
    EXPECT_EQ(input_unit(path), 101);
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
    for (const auto& [path, reason] : {std::pair{dir, "is a directory"},
                                       {dir + "/fifo", "is not a regular file"},
                                       {"/dev/null", "is not a regular file"}}) {
        EXPECT_EQ(ending_of([&, &name = path] { open_old(100, name); })->text,
                  path + ": " + reason);
        EXPECT_FALSE(unit_is_open(100));
        if (path == "/dev/null") continue;
        EXPECT_EQ(ending_of([&, &name = path] { replace_file(name, "new"); })->text,
                  path + ": cannot be written: the name is taken by something else than a file");
    }
    EXPECT_EQ(scratch.names(), std::vector<text>{"fifo"});
    EXPECT_TRUE(fs::is_fifo(dir + "/fifo"));
}

TEST(Output, NeedsRights) {
    const scratch_directory scratch;
    const text dir = fs::canonical(scratch.path()).string() + "/";
    fs::permissions(scratch.file("protected", "old\n"), fs::perms(0444));
    const bool root = geteuid() == 0;
    constexpr uid_t nobody = 65534;
    if (root && (chown(dir.c_str(), nobody, nobody) != 0 || seteuid(nobody) != 0)) {
        GTEST_SKIP() << "cannot give up the rights of root";
    }
    // Where the directory is to blame, it is named, in full and of the file behind a link.
    fs::create_directory(dir + "loc\tked");
    fs::create_symlink("loc\tked/new", dir + "link");
    fs::create_symlink("no/new", dir + "astray");
    fs::permissions(dir + "loc\tked", fs::perms(0555));
    const text locked = "cannot be written into the directory '" + dir + "loc\\tked': ";
    const fs::path home = fs::current_path();
    fs::current_path(dir + "loc\tked");
    for (const auto& [name, said] :
         {std::pair{dir + "protected", dir + "protected: cannot be written: Permission denied"},
          {dir + "link", dir + "loc\\tked/new: " + locked + "Permission denied"},
          {"new", "new: " + locked + "Permission denied"},
          {dir + "astray", dir + "no/new: cannot be written into the directory '" + dir +
                               "no/': No such file or directory"},
          {dir + "protected/x", dir + "protected/x: cannot be written into the directory '" + dir +
                                    "protected/': Not a directory"}}) {
        EXPECT_EQ(ending_of([&, &path = name] { replace_file(path, "new"); })->text, said);
    }
    EXPECT_EQ(support::contents_of(dir + "protected"), "old\n");
    // First the rights: nobody may enter the directory that the tests started in.
    EXPECT_TRUE(!root || seteuid(0) == 0);
    fs::current_path(home);
}

TEST(Output, AppearsWholeOnCommit) {
    const scratch_directory scratch;
    const text path = scratch.file("old", "old\n");
    fs::permissions(path, fs::perms(0640));
    fs::create_symlink("old", scratch.path() / "link");
    for (const bool commit : {false, true}) {
        open_replace(1, (scratch.path() / "link").string() + "  ");
        write_record(1, "a ");
        write_record(1, "");
        EXPECT_THAT(scratch.names(), ElementsAre("link", "old"));
        EXPECT_EQ(support::contents_of(path), "old\n");
        commit ? commit_unit(1) : close_unit(1);
        EXPECT_FALSE(unit_is_open(1));
    }
    EXPECT_THAT(scratch.names(), ElementsAre("link", "old"));
    EXPECT_EQ(support::contents_of(path), "a \n\n");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    EXPECT_TRUE(fs::is_symlink(scratch.path() / "link"));
}

TEST(Output, LeavesWhatStandsBesideIt) {
    const scratch_directory scratch;
    const text dir = scratch.path().string() + "/";
    // A name that a run which was killed has left; one process at a time has this number.
    const text left = dir + ".f." + std::to_string(getpid()) + "-0";
    support::write_file(left, "left");
    replace_file(dir + "f", "new");
    EXPECT_EQ(support::contents_of(dir + "f") + support::contents_of(left), "newleft");
    EXPECT_EQ(fs::status(dir + "f").permissions(), fs::status(left).permissions());
    // The longest name there is leaves no room for a longer one.
    replace_file(dir + text(255, 'n'), "new");
    EXPECT_EQ(support::contents_of(dir + text(255, 'n')), "new");
    EXPECT_EQ(scratch.names().size(), 3U);
}

TEST(Output, FollowsLinks) {
    const scratch_directory scratch;
    const fs::path& dir = scratch.path();
    fs::create_directory(dir / "d");
    // Relative ones from where they stand, absolute ones, chains of forty.
    fs::create_symlink("d/b", dir / "a");
    fs::create_symlink("../c", dir / "d/b");
    fs::create_symlink((dir / "l39").string(), dir / "c");
    for (int i = 39; i > 3; --i) {
        fs::create_symlink("l" + std::to_string(i - 1), dir / ("l" + std::to_string(i)));
    }
    replace_file((dir / "a").string(), "new");
    EXPECT_EQ(support::contents_of(dir / "l3"), "new");
    EXPECT_TRUE(fs::is_symlink(dir / "l4") && fs::is_regular_file(fs::symlink_status(dir / "l3")));
    fs::create_symlink("a", dir / "longer");
    EXPECT_THAT(ending_of([&] { replace_file((dir / "longer").string(), "x"); })->text,
                testing::EndsWith("cannot be written: Too many levels of symbolic links"));
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
    EXPECT_STREQ(io_error("x\ny", 3, "m").what(), "x\\ny: line 3: m");
    EXPECT_STREQ(io_error("", 0, "m").what(), "'': m");
}

}  // namespace
}  // namespace flib
