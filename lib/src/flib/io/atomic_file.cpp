#include "flib/io/atomic_file.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "flib/io/detail/text_file.h"
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

        constexpr std::size_t longest_name = 200;  // leaves room for the number within NAME_MAX
        const std::size_t name = target.rfind('/') + 1;
        const std::string stem = target.substr(0, name) + "." + target.substr(name, longest_name) +
                                 "." + std::to_string(getpid()) + "-";
        for (int attempt = 0; descriptor_ < 0; ++attempt) {
            path_ = stem + std::to_string(attempt);
            descriptor_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (descriptor_ < 0 && (errno != EEXIST || attempt == 1000)) {
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
        if (std::rename(path_.c_str(), target_.c_str()) != 0) fail_in_directory(target_, errno);
        path_.clear();
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
    int descriptor_ = -1;
};

}  // namespace

void replace_file(const std::string& path, std::string_view contents) {
    file_beside file(final_target(path));
    file.write_all(contents);
    file.rename_over_target();
}

}  // namespace flib
