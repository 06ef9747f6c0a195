#include "common/terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "common/progress.h"
#include "support/support.h"

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
    /// What was written to it.
    std::string shown() const {
        std::string text;
        char part[100];
        for (pollfd output{master_, POLLIN, 0}; poll(&output, 1, 300) > 0;) {
            const ssize_t count = read(master_, part, sizeof part);
            if (count <= 0) break;
            text.append(part, static_cast<std::size_t>(count));
        }
        return text;
    }

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

TEST(Progress, IsShownOnATerminalAfterASecond) {
    const pseudo_terminal on(80);
    if (on.descriptor() < 0) GTEST_SKIP() << "no terminal to be had";
    const support::scratch_directory scratch;
    const std::string path = scratch.file("shown", "");
    const int file = open(path.c_str(), O_RDWR);
    {
        tools::progress shown(on.descriptor(), 601);
        tools::progress hidden(file, 601);
        shown.at(1, "reading");
        std::this_thread::sleep_for(std::chrono::milliseconds(1005));
        shown.at(12, "reading");
        hidden.at(12, "reading");
    }
    close(file);
    EXPECT_EQ(on.shown(), "\r\033[Kreading 12 of 601\r\033[K");
    EXPECT_EQ(support::contents_of(path), "");
}

}  // namespace
