// measure DIRECTORY PROGRAM [ARGUMENTS...]: runs a program there, its output thrown away, and
// prints its wall time and its processor time in seconds and its peak memory in KiB. A program of
// its own, because the system counts the memory of whoever starts a program as that program's.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
    if (argc < 3 || chdir(argv[1]) != 0) return 2;
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = vfork();
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        execv(argv[2], argv + 2);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || status != 0) return 1;
    const auto time = std::chrono::steady_clock::now() - start;
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    std::printf("%.9f %.6f %ld\n", std::chrono::duration<double>(time).count(),
                seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss);
    return 0;
}
