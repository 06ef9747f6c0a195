#include "common/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

#include "common/table.h"

namespace {

using tools::paint;
using tools::terminal;

/// A terminal of the test's own.
class pseudo_terminal {
  public:
    explicit pseudo_terminal(unsigned short columns) : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) return;
        terminal_ = open(ptsname(master_), O_RDWR | O_NOCTTY);
        const winsize window{24, columns, 0, 0};
        ioctl(terminal_, TIOCSWINSZ, &window);
    }
    ~pseudo_terminal() {
        close(terminal_);
        close(master_);
    }
    pseudo_terminal(const pseudo_terminal&) = delete;
    pseudo_terminal& operator=(const pseudo_terminal&) = delete;

    int descriptor() const { return terminal_; }

  private:
    int master_ = -1;
    int terminal_ = -1;
};

void set(const char* name, const char* value) {
    value == nullptr ? unsetenv(name) : setenv(name, value, 1);
}

TEST(Terminal, HasColoursAndAWidthUnlessItIsNone) {
    const struct {
        unsigned short window;
        const char* columns;
        const char* kind;
        const char* refusal;
        std::size_t width;
        bool colours;
    } cases[] = {
        {97, "60", "xterm", nullptr, 97, true},    {0, "60", "xterm", "", 60, true},
        {0, "6x", "xterm", "1", 80, false},        {0, "0", "dumb", nullptr, 80, false},
        {0, nullptr, nullptr, nullptr, 80, false}, {1, nullptr, "", nullptr, 1, false},
    };
    for (const auto& [window, columns, kind, refusal, width, colours] : cases) {
        const pseudo_terminal on(window);
        if (on.descriptor() < 0) GTEST_SKIP() << "no terminal to be had";
        set("COLUMNS", columns);
        set("TERM", kind);
        set("NO_COLOR", refusal);
        const terminal seen = tools::terminal_at(on.descriptor());
        EXPECT_EQ(seen.width, width);
        EXPECT_EQ(seen.colours, colours) << width;
    }
    set("TERM", "xterm");
    set("COLUMNS", "60");
    const int file = open("/dev/null", O_WRONLY);
    EXPECT_FALSE(tools::terminal_at(file).colours || tools::terminal_at(file).width);
    close(file);
}

TEST(Terminal, PaintsNothingWithoutColours) {
    const terminal colours{.colours = true};
    const auto all = [](const terminal& on) {
        std::string text;
        for (const paint each :
             {paint::none, paint::good, paint::bad, paint::faint, paint::strong}) {
            text += painted("ab", each, on) + '|';
        }
        return text;
    };
    EXPECT_EQ(all({}), "ab|ab|ab|ab|ab|");
    EXPECT_EQ(all(colours),
              "ab|\033[32mab\033[0m|\033[1;31mab\033[0m|\033[2mab\033[0m|\033[1mab\033[0m|");
    EXPECT_EQ(painted("", paint::bad, colours), "");
}

TEST(Terminal, CountsCharactersAndBreaksLinesThere) {
    using lines = std::vector<std::string>;
    EXPECT_EQ(tools::shown_width("Å é\xE2\x86\x92"
                                 "x"),
              5U);
    EXPECT_EQ(tools::wrapped("to be  or not", 5), (lines{"to be", "or", "not"}));
    EXPECT_EQ(tools::wrapped("to be", 4), (lines{"to", "be"}));
    EXPECT_EQ(tools::wrapped("a éééé b", 6), (lines{"a éééé", "b"}));
    EXPECT_EQ(tools::wrapped("a éééééé b", 4), (lines{"a", "éééé", "éé b"}));
    EXPECT_EQ(tools::wrapped(" ", 4), lines{""});
    EXPECT_EQ(tools::shortened("ééééé", 5), "ééééé");
    EXPECT_EQ(tools::shortened("abcéfgh", 6), "a...gh");
    EXPECT_EQ(tools::shortened("ééééééé", 6), "é...éé");
}

/// A table of three columns before the words, with names that tell their widths.
tools::table example(const std::string& name) {
    return {{{"Name"}, {"Length", true, 1}, {"Kind", false, 2}, {"Words"}},
            {{{name}, {"12.5"}, {"a"}, {"fine", paint::good}},
             {{"é"}, {"1.25", paint::strong}, {"long é"}, {"one two three four five six seven"}}}};
}

TEST(Table, LeavesOutColumnsAndWrapsWordsWhereATerminalIsNarrow) {
    const auto at = [](std::size_t width, const std::string& name = "abcdef") {
        return table_text(example(name), {.width = width});
    };
    const std::string whole =
        "Name    Length  Kind    Words\n"
        "abcdef    12.5  a       fine\n"
        "é         1.25  long é  one two three four five six seven\n";
    EXPECT_EQ(table_text(example("abcdef"), {}), whole);
    EXPECT_EQ(at(57), whole);
    EXPECT_EQ(at(56),
              "Name    Length  Kind    Words\n"
              "abcdef    12.5  a       fine\n"
              "é         1.25  long é  one two three four five six\n"
              "                        seven\n");
    EXPECT_EQ(at(48),
              "Name    Length  Kind    Words\n"
              "abcdef    12.5  a       fine\n"
              "é         1.25  long é  one two three four five\n"
              "                        six seven\n");
    EXPECT_EQ(at(47),
              "Name    Length  Words\n"
              "abcdef    12.5  fine\n"
              "é         1.25  one two three four five six\n"
              "                seven\n");
    EXPECT_EQ(at(39),
              "Name    Words\n"
              "abcdef  fine\n"
              "é       one two three four five six\n"
              "        seven\n");
    EXPECT_EQ(at(28, "a-name-wider-than-the-terminal"),
              "Name\n"
              "a-name-wider...-the-terminal\n"
              "    fine\n"
              "é\n"
              "    one two three four five\n"
              "    six seven\n");
    const std::string painted = table_text(example("x"), {.colours = true});
    EXPECT_EQ(painted.substr(painted.find("x   ")),
              "x       12.5  a       \033[32mfine\033[0m\n"
              "é       \033[1m1.25\033[0m  long é  one two three four five six seven\n");
}

}  // namespace
