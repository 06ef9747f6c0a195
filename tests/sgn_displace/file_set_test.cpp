#include "sgn/inputs/file_set.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using words = std::vector<std::string>;

const words names{"a", "b", "c"};

std::string new_text(std::size_t i) {
    return "new " + names[i];
}

class FileSet : public testing::Test {
  public:
    std::string path(const std::string& name) const { return scratch_.path() / name; }

    /// How writing ends: the message without the directory, or "".
    std::string write(bool overwrite,
                      const std::function<std::string(std::size_t)>& contents = new_text,
                      const std::string& directory = ".") const {
        try {
            sgn::inputs::write_file_set(path(directory), names, contents, overwrite);
            return "";
        } catch (const std::exception& error) {
            const std::string what = error.what();
            return what.starts_with(path("")) ? what.substr(path("").size()) : what;
        }
    }

    /// All files, also hidden ones, with their contents.
    std::string files() const {
        std::string text;
        for (const std::string& name : scratch_.names()) {
            const bool is_file = fs::is_regular_file(path(name));
            text += name + "=" + (is_file ? support::contents_of(path(name)) : "other") + ";";
        }
        return text;
    }

    support::scratch_directory scratch_;
};

TEST_F(FileSet, AppearsTogether) {
    const auto looking = [this](std::size_t i) {
        EXPECT_FALSE(fs::exists(path("a")));
        return new_text(i);
    };
    EXPECT_EQ(write(false, looking), "");
    EXPECT_EQ(files(), "a=new a;b=new b;c=new c;");
    EXPECT_EQ(write(true, [](std::size_t i) { return names[i]; }), "");
    EXPECT_EQ(files(), "a=a;b=b;c=c;");
}

TEST_F(FileSet, LeavesNothingBehindWhenItFails) {
    const auto failing = [](std::size_t i) -> std::string {
        if (i == 2) throw std::runtime_error("no text");
        return new_text(i);
    };
    EXPECT_EQ(write(false, failing), "no text");
    EXPECT_EQ(write(false, failing, "made"), "no text");
    EXPECT_EQ(files(), "");
    scratch_.file("b", "old b");
    EXPECT_EQ(write(true, failing), "no text");
    EXPECT_EQ(files(), "b=old b;");
}

// Something takes the place of the last file while the set is being written: the first two have
// appeared already when that is seen.
TEST_F(FileSet, IsTakenBackWhenOneFileCanNotAppear) {
    for (const bool overwrite : {false, true}) {
        if (overwrite) scratch_.file("a", "old a");
        const std::string before = files();
        const auto taking = [this](std::size_t i) {
            if (i == 2) fs::create_directory(path("c"));
            return new_text(i);
        };
        EXPECT_EQ(write(overwrite, taking), std::string("./c: cannot be written: ") +
                                                (overwrite ? "Is a directory" : "File exists"));
        fs::remove(path("c"));
        EXPECT_EQ(files(), before);
    }
    // Nor is what came meanwhile overwritten.
    fs::remove(path("a"));
    const auto writing = [this](std::size_t i) {
        if (i == 2) scratch_.file("b", "another's");
        return new_text(i);
    };
    EXPECT_EQ(write(false, writing), "./b: cannot be written: File exists");
    EXPECT_EQ(files(), "b=another's;");
}

TEST_F(FileSet, SignalsWaitUntilItIsWhole) {
    static std::string seen;
    static const FileSet* test = nullptr;
    test = this;
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        seen.clear();
        const auto before = std::signal(number, [](int) { seen = test->files(); });
        const auto raising = [number](std::size_t i) {
            std::raise(number);
            return new_text(i);
        };
        EXPECT_EQ(write(true, raising), "");
        std::signal(number, before);
        EXPECT_EQ(seen, "a=new a;b=new b;c=new c;") << number;
    }
}

TEST_F(FileSet, RespectsRights) {
    const mode_t before = umask(027);
    EXPECT_EQ(write(false, new_text, "made"), "");
    umask(before);
    EXPECT_EQ(fs::status(path("made")).permissions(), fs::perms(0750));
    EXPECT_EQ(fs::status(path("made/b")).permissions(), fs::perms(0640));
    EXPECT_EQ(std::distance(fs::directory_iterator(path("made")), {}), 3);
    // From here on without those of root.
    constexpr uid_t nobody = 65534;
    const bool root = geteuid() == 0;
    if (root && (chown(path("").c_str(), nobody, nobody) != 0 || seteuid(nobody) != 0)) {
        GTEST_SKIP() << "cannot give up the rights of root";
    }
    scratch_.file("b", "old b");
    fs::permissions(path("b"), fs::perms(0444));
    EXPECT_EQ(write(true), "./b: cannot be written: Permission denied");
    EXPECT_EQ(files(), "b=old b;made=other;");
    fs::create_directory(path("locked"));
    fs::permissions(path("locked"), fs::perms(0555));
    EXPECT_EQ(write(false, new_text, "locked"), "locked: cannot be written: Permission denied");
    fs::permissions(path("locked"), fs::perms(0));
    EXPECT_EQ(write(false, new_text, "locked"), "locked/a: cannot be written: Permission denied");
    EXPECT_TRUE(!root || seteuid(0) == 0);
}

}  // namespace
