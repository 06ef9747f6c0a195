#include "flib/io/detail/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "flib/io/stop_run.h"

namespace flib {
namespace {

/// Where the window begins: on some machines a copy from the page cache to any other place takes
/// five times as long.
constexpr std::size_t cache_line = 64;

/// Whether the reason why a file cannot be opened lies in the file, not in the state of the
/// process or the system: then trying again gives the same answer.
bool lies_in_file(int error) {
    constexpr int reasons[] = {ENOENT,       ENOTDIR, EACCES, EPERM, ELOOP,
                               ENAMETOOLONG, ENXIO,   ENODEV, EISDIR};
    return std::ranges::find(reasons, error) != std::end(reasons);
}

[[noreturn]] void fail(const std::string& path, const char* what, int error) {
    const std::string message = what + errno_text(error);
    if (lies_in_file(error)) throw io_error(path, 0, message);
    throw run_error(printable(path) + ": " + message);
}

}  // namespace

int above_standard_streams(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int error = errno;
    close(descriptor);
    errno = error;
    return moved;
}

text_file::text_file(std::string path) : path_(std::move(path)) {
    // O_NONBLOCK: opening a FIFO must not wait for a writer.
    descriptor_ =
        above_standard_streams(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (descriptor_ < 0) fail(path_, "cannot be opened: ", errno);
    try {
        struct stat status {};
        if (fstat(descriptor_, &status) != 0) fail(path_, "cannot be examined: ", errno);
        if (!S_ISREG(status.st_mode)) {
            throw io_error(path_, 0,
                           S_ISDIR(status.st_mode) ? "is a directory" : "is not a regular file");
        }
        size_ = status.st_size;
        capacity_ = static_cast<std::size_t>(
            std::min<std::int64_t>(size_, static_cast<std::int64_t>(window_size)));
        memory_.reset(new char[capacity_ + cache_line - 1]);
        void* aligned = memory_.get();
        std::size_t space = capacity_ + cache_line - 1;
        window_ = static_cast<char*>(std::align(cache_line, capacity_, aligned, space));
    } catch (...) {
        close(descriptor_);
        throw;
    }
}

text_file::~text_file() {
    close(descriptor_);
}

void text_file::load(std::int64_t begin, std::size_t length) {
    if (size_ <= static_cast<std::int64_t>(capacity_)) {
        begin = 0;
        length = capacity_;
    }
    window_length_ = 0;
    window_begin_ = begin;
    while (window_length_ < length) {
        const ssize_t got = pread(descriptor_, window_ + window_length_, length - window_length_,
                                  begin + static_cast<std::int64_t>(window_length_));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw io_error(path_, 0, "cannot be read: " + errno_text(errno));
        if (got == 0) throw io_error(path_, 0, "became shorter while it was being read");
        window_length_ += static_cast<std::size_t>(got);
    }
}

std::string_view text_file::from(std::int64_t offset, std::size_t least) {
    const std::int64_t left = size_ - offset;
    if (left <= 0) return {};
    const auto needed = std::min(static_cast<std::int64_t>(least), left);
    const std::int64_t window_end = window_begin_ + static_cast<std::int64_t>(window_length_);
    if (offset < window_begin_ || offset + std::max<std::int64_t>(needed, 1) > window_end) {
        load(offset,
             static_cast<std::size_t>(std::min(left, static_cast<std::int64_t>(capacity_))));
    }
    const auto skipped = static_cast<std::size_t>(offset - window_begin_);
    return {window_ + skipped, window_length_ - skipped};
}

std::string_view text_file::before(std::int64_t offset, std::size_t least) {
    if (offset <= 0) return {};
    const auto needed = std::min(static_cast<std::int64_t>(least), offset);
    const std::int64_t window_end = window_begin_ + static_cast<std::int64_t>(window_length_);
    if (offset > window_end || offset - std::max<std::int64_t>(needed, 1) < window_begin_) {
        const auto length = std::min(offset, static_cast<std::int64_t>(capacity_));
        load(offset - length, static_cast<std::size_t>(length));
    }
    return {window_, static_cast<std::size_t>(offset - window_begin_)};
}

std::int64_t text_file::line_number(std::int64_t offset) {
    std::int64_t line = 1;
    try {
        for (std::int64_t at = 0; at < offset;) {
            std::string_view bytes = from(at, 1);
            if (bytes.empty()) break;
            bytes = bytes.substr(0, static_cast<std::size_t>(std::min<std::int64_t>(
                                        static_cast<std::int64_t>(bytes.size()), offset - at)));
            line += std::count(bytes.begin(), bytes.end(), '\n');
            at += static_cast<std::int64_t>(bytes.size());
        }
    } catch (const io_error&) {
        return 0;
    }
    return line;
}

}  // namespace flib
