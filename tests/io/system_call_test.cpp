// Calls to the system that fail, are interrupted, or do half of what they are asked. The functions
// at the end take the place of the C library's in this program of tests.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdarg.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <sstream>
#include <utility>

#include "flib/io/atomic_file.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "support/support.h"

namespace {

/// What befalls the next calls of these names, in this order: an errno, or one of the others.
struct fault {
    std::string call;
    std::string what;
};
std::vector<fault> faults;
int lowest_descriptor = 0;  // that was read from or written to

/// What befalls this call; "" if nothing does.
std::string fate_of(std::string_view call) {
    if (faults.empty() || faults.front().call != call) return "";
    const std::string what = faults.front().what;
    faults.erase(faults.begin());
    return what;
}

template <class... Arguments>
int attempt(const char* call, long number, Arguments... arguments) {
    const std::string fate = fate_of(call);
    // A close that fails has closed the file all the same.
    const long result = fate.empty() || number == SYS_close ? syscall(number, arguments...) : -1;
    if (fate.empty()) return static_cast<int>(result);
    errno = std::stoi(fate);
    return -1;
}

template <class Bytes>
ssize_t transfer(const char* call, long number, int fd, Bytes* bytes, std::size_t size, off_t at) {
    lowest_descriptor = std::min(lowest_descriptor, fd);
    const std::string fate = fate_of(call);
    if (fate == "nothing") return 0;
    if (fate.empty() || fate == "half") {
        return syscall(number, fd, bytes, fate.empty() ? size : size / 2, at);
    }
    errno = std::stoi(fate);
    return -1;
}

/// An error's text, the directory of the file as D.
std::string shown(const std::exception& error, const std::string& path) {
    const std::string text = error.what(), directory = path.substr(0, path.rfind('/'));
    return text.starts_with(directory) ? support::replaced(text, directory, "D") : text;
}

/// What comes of reading numbers from a file or from standard input, or of replacing the file.
std::string outcome_of(const std::string& action, const std::string& path) {
    std::array<std::int32_t, 4> values{};
    try {
        if (action == "write") {
            flib::replace_file(path, "new");
            return "done";
        }
        if (action == "read") {
            const flib::input_unit fid(path);
            flib::read_items(fid, std::span(values));
            return values == std::array{1, 20, -3, 4} ? "done" : "other values";
        }
        std::array<std::int32_t, 5> too_many{};
        if (action == "all") flib::read_items(flib::standard_input{}, std::span(too_many));
        flib::read_items(flib::standard_input{}, values[0], values[1]);
        std::string rest(9, '.');
        rest.resize(static_cast<std::size_t>(read(STDIN_FILENO, rest.data(), rest.size())));
        return values[1] == 20 && rest == "-3\n4" ? "done" : "other values, then " + rest;
    } catch (const flib::io_error& error) {
        return shown(error, path);
    } catch (const flib::run_error& error) {
        return "perhaps later: " + shown(error, path);
    }
}

TEST(SystemCalls, ThatFailOrDoHalf) {
    for (const auto& row : support::table_of("system_calls.txt")) {
        SCOPED_TRACE(row[0] + " with " + row[2]);
        const std::string action = row[0].substr(0, row[0].find(' '));
        const support::scratch_directory scratch;
        // An item may begin in one of the parts in which a line is read, and end in another.
        const std::string margin(row[0] == "long input" ? 131069 : 0, ' ');
        const std::string path = scratch.file("f", margin + "1 20\n-3\n4");
        // Standard input is the file, or one of the standard streams is closed.
        const bool from_input = row[0].ends_with("input");
        const bool closed = !from_input && action != row[0];
        const int stream = closed ? row[0].back() - '0' : STDIN_FILENO;
        const int kept = fcntl(stream, F_DUPFD_CLOEXEC, 10);
        const int input = open(path.c_str(), O_RDONLY);
        dup2(input, stream);
        close(input);
        if (closed) close(stream);
        std::istringstream in(row[1]);
        for (fault next; in >> next.call >> next.what;) faults.push_back(next);
        lowest_descriptor = 1000;
        const std::string outcome = outcome_of(action, path);
        EXPECT_EQ(std::exchange(faults, {}).size(), 0U) << "of them did not happen";
        dup2(kept, stream);
        close(kept);
        EXPECT_EQ(outcome, row[2]);
        EXPECT_TRUE(from_input || lowest_descriptor > STDERR_FILENO);
        const bool written = action == "write" && outcome == "done";
        EXPECT_EQ(support::contents_of(path), written ? "new" : margin + "1 20\n-3\n4");
        EXPECT_EQ(scratch.names(), std::vector<std::string>{"f"});
    }
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    return attempt("open", SYS_openat, AT_FDCWD, path, flags, mode);
}
int fcntl(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    return attempt("fcntl", SYS_fcntl, fd, command, argument);
}
ssize_t read(int fd, void* to, std::size_t size) {
    return transfer("read", SYS_read, fd, to, size, 0);
}
ssize_t pread(int fd, void* to, std::size_t size, off_t at) {
    return transfer("pread", SYS_pread64, fd, to, size, at);
}
ssize_t write(int fd, const void* from, std::size_t size) {
    return transfer("write", SYS_write, fd, from, size, 0);
}
int fstat(int fd, struct stat* status) {
    return attempt("fstat", SYS_fstat, fd, status);
}
int stat(const char* path, struct stat* status) {
    return attempt("stat", SYS_newfstatat, AT_FDCWD, path, status, 0);
}
int fchmod(int fd, mode_t mode) {
    return attempt("fchmod", SYS_fchmod, fd, mode);
}
int fsync(int fd) {
    return attempt("fsync", SYS_fsync, fd);
}
int close(int fd) {
    return attempt("close", SYS_close, fd);
}
int rename(const char* from, const char* to) {
    return attempt("rename", SYS_rename, from, to);
}

}  // extern "C"
