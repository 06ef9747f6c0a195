// Preloaded into a program: makes one of its calls fail.
//
// FAULT_CALL names the call and FAULT_AT the occurrence, counted from 1; FAULT_LASTING adds all
// later ones. The call fails with errno FAULT_ERRNO; or, without it, a read or write does half of
// what it is asked; or, with FAULT_ACTION, that shell command is run before the call, with
// FAULT_SIGNAL that signal comes. The file FAULT_MARK is created when it happens.
#include <fcntl.h>
#include <stdarg.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);

namespace {

enum class verdict { sound, half, failure };

verdict judge(const char* call) {
    static long count = 0;
    const char* const wanted = getenv("FAULT_CALL");
    if (wanted == nullptr || strcmp(wanted, call) != 0) return verdict::sound;
    const long at = atol(getenv("FAULT_AT"));
    if (++count < at || (count > at && getenv("FAULT_LASTING") == nullptr)) return verdict::sound;
    syscall(SYS_close, syscall(SYS_openat, AT_FDCWD, getenv("FAULT_MARK"), O_CREAT, 0600));
    if (const char* const action = getenv("FAULT_ACTION"); action != nullptr) {
        unsetenv("LD_PRELOAD");
        return system(action) == 0 ? verdict::sound : verdict::failure;
    }
    if (const char* const signal = getenv("FAULT_SIGNAL"); signal != nullptr) {
        raise(atoi(signal));
        return verdict::sound;
    }
    const char* const error = getenv("FAULT_ERRNO");
    if (error == nullptr) return verdict::half;
    errno = atoi(error);
    return verdict::failure;
}

constexpr int most_files = 64;
bool written[most_files];  // the descriptors that something was written to

/// The system call, unless it is to fail.
template <class... Arguments>
long attempt(const char* call, long number, Arguments... arguments) {
    return judge(call) == verdict::failure ? -1 : syscall(number, arguments...);
}

template <class Bytes>
long transfer(const char* call, long number, int fd, Bytes* bytes, std::size_t size, off_t at) {
    const verdict what = judge(call);
    if (what == verdict::failure) return -1;
    return syscall(number, fd, bytes, what == verdict::half && size > 1 ? size / 2 : size, at);
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) {
    return judge("malloc") == verdict::failure ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    return judge("calloc") == verdict::failure ? nullptr : __libc_calloc(count, size);
}
int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    return static_cast<int>(attempt("open", SYS_openat, AT_FDCWD, path, flags, mode));
}
ssize_t pread(int fd, void* to, std::size_t size, off_t at) {
    return transfer("pread", SYS_pread64, fd, to, size, at);
}
ssize_t write(int fd, const void* from, std::size_t size) {
    if (fd >= 0 && fd < most_files) written[fd] = true;
    return transfer("write", SYS_write, fd, from, size, 0);
}
int fsync(int fd) {
    return static_cast<int>(attempt("fsync", SYS_fsync, fd));
}
int close(int fd) {
    // A close that fails has closed the file all the same. It matters where something was written.
    const long closed = syscall(SYS_close, fd);
    const bool output = fd >= 0 && fd < most_files && written[fd];
    if (output) written[fd] = false;
    return judge(output ? "close_output" : "close") == verdict::failure ? -1
                                                                        : static_cast<int>(closed);
}
int fstat(int fd, struct stat* status) {
    return static_cast<int>(attempt("fstat", SYS_fstat, fd, status));
}
int stat(const char* path, struct stat* status) {
    return static_cast<int>(attempt("stat", SYS_newfstatat, AT_FDCWD, path, status, 0));
}
int rename(const char* from, const char* to) {
    return static_cast<int>(attempt("rename", SYS_rename, from, to));
}

}  // extern "C"
