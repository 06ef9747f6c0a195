#include "common/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace {

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
        const tools::terminal seen = tools::terminal_at(on.descriptor());
        EXPECT_EQ(seen.width, width);
        EXPECT_EQ(seen.colours, colours) << width;
    }
    set("TERM", "xterm");
    set("COLUMNS", "60");
    const int file = open("/dev/null", O_WRONLY);
    EXPECT_FALSE(tools::terminal_at(file).colours || tools::terminal_at(file).width);
    close(file);
}

}  // namespace
