// What tells that an input file is no longer what it was, and whether atoms can be in it.
#include "numfreq/file_state.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using numfreq::file_state;

class FileState : public testing::Test {
  protected:
    void set_time(std::string_view name, time_t seconds, long nanoseconds) const {
        const timespec times[] = {{0, 0}, {seconds, nanoseconds}};
        ASSERT_EQ(utimensat(AT_FDCWD, (scratch.path() / name).c_str(), times, 0), 0);
    }

    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", "as it was");
};

TEST_F(FileState, SeesEveryChange) {
    set_time("f", 1000, 5);
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"seconds", [&] { set_time("f", 1001, 5); }},
        {"nanoseconds", [&] { set_time("f", 1000, 6); }},
        {"size", [&] { fs::resize_file(path, 8), set_time("f", 1000, 5); }},
        {"another file",
         [&] {
             scratch.file("other", "as it was");
             set_time("other", 1000, 5);
             fs::rename(scratch.path() / "other", path);
         }},
        {"gone", [&] { fs::remove(path); }},
    };
    for (const auto& [name, change] : changes) {
        const file_state before(path + "   ");
        EXPECT_FALSE(support::ending_of([&] { before.require_unchanged(); })) << name;
        change();
        EXPECT_EQ(support::ending_of([&] { before.require_unchanged(); }),
                  (support::ending{2, path + ": was changed while it was being read", false}))
            << name;
        scratch.file("f", "as it was");
        set_time("f", 1000, 5);
    }
    fs::remove(path);
    const file_state missing(path);
    EXPECT_FALSE(support::ending_of([&] { missing.require_unchanged(); }));
    scratch.file("f", "");
    EXPECT_TRUE(support::ending_of([&] { missing.require_unchanged(); }));
}

TEST_F(FileState, HasRoomForAtomsOfSixCharacters) {
    const auto ending = [&](const std::string& file, std::int32_t natom) {
        return support::ending_of([&] { file_state(file).require_room_for_atoms(natom); });
    };
    EXPECT_FALSE(ending(path, 1000));
    EXPECT_EQ(ending(path, 1001),
              (support::ending{2, path + ": is too short to hold 1001 atoms", false}));
    fs::resize_file(path, 6 * 1001);
    EXPECT_FALSE(ending(path, 1001));
    EXPECT_TRUE(ending(path, 1002));
    // Whoever reads a file that is not there says so.
    EXPECT_FALSE(ending("/no", 2000000000));
}

}  // namespace
