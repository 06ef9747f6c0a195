#include "sgn/inputs/file_set.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "flib/io/atomic_file.h"
#include "flib/io/stop_run.h"
#include "flib/io/write_out.h"

namespace sgn::inputs {
namespace {

[[noreturn]] void fail(const std::string& file, const std::string& what) {
    throw flib::io_error(file, 0, what);
}

[[noreturn]] void fail_to_write(const std::string& file, int error) {
    fail(file, "cannot be written: " + flib::errno_text(error));
}

bool is_regular(const std::string& path) {
    struct stat there {};
    return lstat(path.c_str(), &there) == 0 && S_ISREG(there.st_mode);
}

/// Holds back the signals that end a program.
class signals_held_back {
  public:
    signals_held_back() {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) sigaddset(&ending, number);
        pthread_sigmask(SIG_BLOCK, &ending, &before_);
    }
    ~signals_held_back() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    signals_held_back(const signals_held_back&) = delete;
    signals_held_back& operator=(const signals_held_back&) = delete;

  private:
    sigset_t before_{};
};

/// A directory that is made unless it exists, and removed again if it stays empty.
class output_directory {
  public:
    explicit output_directory(const std::string& path) : path_(path) {
        made_ = mkdir(path.c_str(), 0777) == 0;
        if (made_) return;
        struct stat there {};
        if (errno != EEXIST) fail(path, "cannot be made: " + flib::errno_text(errno));
        if (stat(path.c_str(), &there) != 0 || !S_ISDIR(there.st_mode)) {
            fail(path, "is not a directory");
        }
    }
    ~output_directory() {
        if (made_) rmdir(path_.c_str());  // which fails if there are files in it
    }
    output_directory(const output_directory&) = delete;
    output_directory& operator=(const output_directory&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const {
        return path_ == "." ? name : path_ + "/" + name;
    }

  private:
    std::string path_;
    bool made_ = false;
};

/// Where the new files stand until all are written, and the old ones until all are replaced: two
/// directories in that of the set. Unless kept, files that have appeared are taken back.
class waiting_room {
  public:
    explicit waiting_room(const output_directory& output)
        : output_(output), room_(output.file(".new-XXXXXX")) {
        if (mkdtemp(room_.data()) == nullptr) {
            const int error = errno;
            room_.clear();
            fail_to_write(output.path(), error);
        }
        if (mkdir(old_file("").c_str(), 0700) != 0) {
            const int error = errno;
            rmdir(room_.c_str());
            fail_to_write(output.path(), error);
        }
    }
    ~waiting_room() {
        for (const std::string& name : written_) unlink(new_file(name).c_str());
        for (std::size_t i = appeared_.size(); i-- > 0;) unlink(output_.file(appeared_[i]).c_str());
        for (const std::string& name : aside_) {
            std::rename(old_file(name).c_str(), output_.file(name).c_str());
        }
        rmdir(old_file("").c_str());
        rmdir(room_.c_str());
    }
    waiting_room(const waiting_room&) = delete;
    waiting_room& operator=(const waiting_room&) = delete;

    void write(const std::string& name, std::string_view text) {
        const int descriptor =
            open(new_file(name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0) fail_to_write(output_.file(name), errno);
        written_.push_back(name);
        int error = 0;
        if (!flib::write_out(descriptor, text)) error = errno;
        if (close(descriptor) != 0 && error == 0) error = errno;
        if (error != 0) fail_to_write(output_.file(name), error);
    }

    /// Brings all that was written to the disk: at once, since file by file takes seconds.
    void flush() const {
        const int descriptor = open(room_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        int error = descriptor < 0 || syncfs(descriptor) != 0 ? errno : 0;
        if (descriptor >= 0 && close(descriptor) != 0 && error == 0) error = errno;
        if (error != 0) fail_to_write(room_, error);
    }

    /// Moves a new file to its place; one that stands there is moved aside or, unless `overwrite`,
    /// an error.
    void let_appear(const std::string& name, bool overwrite) {
        const std::string target = output_.file(name);
        if (overwrite) {
            move_aside(name, target);
            rename_new(name, target);
        } else if (renameat2(AT_FDCWD, new_file(name).c_str(), AT_FDCWD, target.c_str(),
                             RENAME_NOREPLACE) != 0) {
            // Some file systems cannot do it; it has been looked at before.
            if (errno != EINVAL && errno != ENOSYS) fail_to_write(target, errno);
            rename_new(name, target);
        }
        appeared_.push_back(name);
    }

    /// The new files stay.
    void keep() {
        for (const std::string& name : aside_) unlink(old_file(name).c_str());
        written_.clear();
        appeared_.clear();
        aside_.clear();
    }

  private:
    void move_aside(const std::string& name, const std::string& target) {
        if (!is_regular(target)) return;
        if (std::rename(target.c_str(), old_file(name).c_str()) != 0) fail_to_write(target, errno);
        aside_.push_back(name);
    }
    void rename_new(const std::string& name, const std::string& target) const {
        if (std::rename(new_file(name).c_str(), target.c_str()) != 0) fail_to_write(target, errno);
    }
    std::string new_file(const std::string& name) const { return room_ + "/" + name; }
    std::string old_file(const std::string& name) const { return room_ + "/old-/" + name; }

    const output_directory& output_;
    std::string room_;
    std::vector<std::string> written_;   // names of files in the room
    std::vector<std::string> aside_;     // names of old files in the room
    std::vector<std::string> appeared_;  // names of files in their places
};

/// Throws unless all of the files can be put into their places.
void look_at_places(const output_directory& output, const std::vector<std::string>& names,
                    bool overwrite) {
    std::string first;
    std::size_t count = 0;
    for (const std::string& name : names) {
        const std::string target = output.file(name);
        struct stat there {};
        if (lstat(target.c_str(), &there) != 0) {
            if (errno != ENOENT) fail_to_write(target, errno);
            continue;
        }
        if (!S_ISREG(there.st_mode)) fail(target, "is there and is not a regular file");
        if (overwrite && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) {
            fail_to_write(target, errno);
        }
        if (count++ == 0) first = target;
    }
    if (overwrite || count == 0) return;
    const std::string others =
        count > 1 ? ", and so are " + std::to_string(count - 1) + " others of the files" : "";
    fail(first, "is there already" + others + "; nothing was written (--force overwrites)");
}

}  // namespace

void write_file_set(const std::string& directory, const std::vector<std::string>& names,
                    const std::function<std::string(std::size_t)>& contents, bool overwrite) {
    const signals_held_back until_done;
    const output_directory output(directory);
    look_at_places(output, names, overwrite);
    // Of the results of an earlier set.
    flib::remove_left_over(output.path(),
                           [](std::string_view name) { return name.ends_with(".sgn"); });
    waiting_room room(output);
    for (std::size_t i = 0; i < names.size(); ++i) room.write(names[i], contents(i));
    room.flush();
    for (const std::string& name : names) room.let_appear(name, overwrite);
    room.keep();
}

}  // namespace sgn::inputs
