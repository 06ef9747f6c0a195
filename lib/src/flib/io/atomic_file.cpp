#include "flib/io/atomic_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <vector>

#include "flib/io/detail/text_file.h"
#include "flib/io/detail/unfinished_file.h"
#include "flib/io/stop_run.h"
#include "flib/io/write_out.h"

namespace flib {
namespace {

/// Throws the io_error of a file that cannot be written.
[[noreturn]] void fail_to_write(const std::string& path, int error) {
    throw io_error(path, 0, "cannot be written: " + errno_text(error));
}

/// The same of a step on the name, not the contents: where the reason lies with the directory, that
/// is named.
[[noreturn]] void fail_in_directory(const std::string& path, int error) {
    const auto blamed = {EACCES, EDQUOT, ENOENT, ENOSPC, ENOTDIR, EPERM, EROFS};
    if (std::ranges::find(blamed, error) == blamed.end()) fail_to_write(path, error);
    std::string directory = path.substr(0, path.rfind('/') + 1);
    if (directory.empty()) directory = ".";
    char whole[PATH_MAX];
    if (realpath(directory.c_str(), whole) != nullptr) directory = whole;
    throw io_error(path, 0,
                   "cannot be written into the directory '" + printable(directory) +
                       "': " + errno_text(error));
}

/// The file that `path` stands for once symbolic links are followed; it need not exist.
std::string final_target(std::string path) {
    constexpr int most_links = 40;
    for (int followed = 0; followed < most_links; ++followed) {
        char link[PATH_MAX];
        const ssize_t length = readlink(path.c_str(), link, sizeof link);
        if (length < 0 && (errno == EINVAL || errno == ENOENT)) return path;  // not a link
        if (length < 0) fail_in_directory(path, errno);
        const std::string target(link, static_cast<std::size_t>(length));
        const std::size_t slash = path.rfind('/');
        const bool relative = target.empty() || target.front() != '/';
        path.resize(relative && slash != std::string::npos ? slash + 1 : 0);
        path += target;
    }
    fail_to_write(path, ELOOP);
}

// A file is written as ".NAME.PID-N".
constexpr std::size_t longest_name = 200;  // leaves room for the numbers within NAME_MAX
constexpr int last_attempt = 1000;

std::string stem_of(std::string_view name) {
    return std::string(".").append(name.substr(0, longest_name)) + ".";
}

/// The new file while it stands beside the final name; removed when this goes, unless released.
class file_beside {
  public:
    /// Creates a file in the directory of `target`, with `target`'s mode if that exists.
    explicit file_beside(const std::string& target) : target_(target) {
        struct stat old {};
        const bool replaces = stat(target.c_str(), &old) == 0;
        if (!replaces && errno != ENOENT) fail_in_directory(target_, errno);
        if (replaces && !S_ISREG(old.st_mode))
            fail("the name is taken by something else than a file");
        if (replaces && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) fail_errno();

        const std::size_t name = target.rfind('/') + 1;
        const std::string stem = target.substr(0, name) +
                                 stem_of(std::string_view(target).substr(name)) +
                                 std::to_string(getpid()) + "-";
        for (int attempt = 0; descriptor_ < 0; ++attempt) {
            path_ = stem + std::to_string(attempt);
            unfinished_.announce(path_);
            descriptor_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            const int reason = errno;
            unfinished_.is_there();
            errno = reason;
            if (descriptor_ < 0 && (errno != EEXIST || attempt == last_attempt)) {
                path_.clear();
                fail_in_directory(target_, errno);
            }
        }
        descriptor_ = above_standard_streams(descriptor_);
        if (descriptor_ < 0 || (replaces && fchmod(descriptor_, old.st_mode & 07777U) != 0)) {
            const int error = errno;
            discard();
            errno = error;
            fail_errno();
        }
    }
    ~file_beside() { discard(); }
    file_beside(const file_beside&) = delete;
    file_beside& operator=(const file_beside&) = delete;

    void write_all(std::string_view contents) {
        if (!write_out(descriptor_, contents)) fail_errno();
        if (fsync(descriptor_) != 0) fail_errno();
        const int descriptor = descriptor_;
        descriptor_ = -1;
        if (close(descriptor) != 0) fail_errno();
    }

    void rename_over_target() {
        if (std::rename(path_.c_str(), target_.c_str()) != 0) {
            const int error = errno;
            unfinished_.is_there();  // unless it was taken away
            fail_in_directory(target_, error);
        }
        path_.clear();
        unfinished_.forget();
    }

  private:
    void discard() noexcept {
        if (descriptor_ >= 0) close(descriptor_);
        if (!path_.empty()) unlink(path_.c_str());
        descriptor_ = -1;
        path_.clear();
    }
    [[noreturn]] void fail(std::string_view reason) const {
        throw io_error(target_, 0, "cannot be written: " + std::string(reason));
    }
    [[noreturn]] void fail_errno() const { fail_to_write(target_, errno); }

    std::string target_;
    std::string path_;
    unfinished_file unfinished_;
    int descriptor_ = -1;
};

struct directory_closer {
    void operator()(DIR* directory) const { closedir(directory); }
};

/// A number as it is printed, from the end of `text`, which loses it.
template <class Number>
std::optional<Number> take_number(std::string_view& text) {
    const std::size_t begin = text.find_last_not_of("0123456789") + 1;
    const std::string_view digits = text.substr(begin);
    Number number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (read.ec != std::errc{} || (digits.size() > 1 && digits.front() == '0')) return {};
    text = text.substr(0, begin);
    return number;
}

/// The NAME of ".NAME.PID-N" if there is no process PID; empty if not, or if it is no such name.
std::string_view name_of_dead(std::string_view file) {
    const auto attempt = take_number<int>(file);
    if (!attempt || *attempt > last_attempt || !file.ends_with('-')) return {};
    file.remove_suffix(1);
    const auto process = take_number<pid_t>(file);
    if (!process || *process < 1 || !file.ends_with('.') || !file.starts_with('.')) return {};
    if (kill(*process, 0) == 0 || errno != ESRCH || file.size() < 3) return {};
    return file.substr(1, file.size() - 2);
}

/// Whether nothing was written to it for a minute.
bool rests(const std::string& path) {
    constexpr std::time_t minute = 60;
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_mtime < std::time(nullptr) - minute;
}

}  // namespace

void replace_file(const std::string& path, std::string_view contents) {
    file_beside file(final_target(path));
    file.write_all(contents);
    file.rename_over_target();
}

void remove_left_over(const std::string& path) noexcept {
    try {
        const std::string target = final_target(path);
        const std::size_t name = target.rfind('/') + 1;
        const std::string stem = target.substr(name, longest_name);
        const auto is_this = [&](std::string_view other) { return other == stem; };
        remove_left_over(name == 0 ? "." : target.substr(0, name), is_this);
    } catch (const std::exception&) {
        // It is only tidying up.
    }
}

void remove_left_over(const std::string& directory,
                      const std::function<bool(std::string_view name)>& is_meant) noexcept {
    try {
        const std::unique_ptr<DIR, directory_closer> open(opendir(directory.c_str()));
        if (!open) return;
        std::vector<std::string> files;
        while (const dirent* const each = readdir(open.get())) {
            const std::string_view name = name_of_dead(each->d_name);
            if (!name.empty() && is_meant(name)) files.push_back(directory + "/" + each->d_name);
        }
        for (const std::string& file : files) {
            if (rests(file)) unlink(file.c_str());
        }
    } catch (const std::exception&) {
        // It is only tidying up.
    }
}

}  // namespace flib
