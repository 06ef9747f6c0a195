// What tells that an input file is no longer what it was, and whether atoms can be in it.
#include "sgn/job/file_state.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using sgn::file_state;

TEST(FileState, SeesEveryChange) {
    const support::scratch_directory scratch;
    const fs::path path = scratch.path() / "f";
    const auto write = [&](const char* name, std::string_view text, time_t seconds, long more) {
        const std::string file = scratch.file(name, text);
        const timespec times[] = {{0, 0}, {seconds, more}};
        EXPECT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    };
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"nothing", [] {}},
        {"seconds", [&] { write("f", "as it was", 1001, 5); }},
        {"nanoseconds", [&] { write("f", "as it was", 1000, 6); }},
        {"size", [&] { write("f", "as it wa", 1000, 5); }},
        {"another file",
         [&] {
             write("other", "as it was", 1000, 5);
             fs::rename(scratch.path() / "other", path);
         }},
        {"gone", [&] { fs::remove(path); }},
    };
    for (const auto& [name, change] : changes) {
        write("f", "as it was", 1000, 5);
        const file_state before(path.string() + "   ");
        change();
        const bool changed = name != changes[0].first;
        EXPECT_EQ(support::answer_of(path, [&] { return before.require_unchanged(), "as it was"; }),
                  changed ? "exit 2: was changed while it was being read" : "as it was")
            << name;
    }
    const file_state missing(path.string());
    EXPECT_FALSE(support::ending_of([&] { missing.require_unchanged(); }));
    write("f", "", 0, 0);
    EXPECT_TRUE(support::ending_of([&] { missing.require_unchanged(); }));
}

TEST(FileState, HasRoomForAtomsOfSixCharacters) {
    const support::scratch_directory scratch;
    const auto answer = [](const std::string& file, std::int32_t natom) {
        return support::answer_of(
            file, [&] { return file_state(file).require_room_for_atoms(natom), "room"; });
    };
    const std::string little = scratch.file("little", "as it was");
    EXPECT_EQ(answer(little, 1000), "room");
    EXPECT_EQ(answer(little, 1001), "exit 2: is too short to hold 1001 atoms");
    const std::string enough = scratch.file("enough", std::string(6 * 1001, ' '));
    EXPECT_EQ(answer(enough, 1001), "room");
    EXPECT_EQ(answer(enough, 1002), "exit 2: is too short to hold 1002 atoms");
    // Whoever reads a file that is not there says so.
    EXPECT_EQ(answer("/no", 2000000000), "room");
}

}  // namespace
