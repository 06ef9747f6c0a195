#include "flib/io/detail/unfinished_file.h"

#include <limits.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <ctime>

#include "flib/io/atomic_file.h"

namespace flib {
namespace {

struct entry {
    /// A path is whole from `announced` on; then the file is made, and is `there`.
    enum : int { vacant, taken, announced, there };
    std::atomic<int> state = vacant;
    std::array<char, PATH_MAX> path;
};
static_assert(std::atomic<int>::is_always_lock_free);

/// Threads that write at the same time; more than these leave their files behind.
constexpr int most_files = 32;
std::array<entry, most_files> table;

/// Set before the table is looked at. Other threads go on meanwhile: they make no more files.
std::atomic<bool> ending = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void wait_for_the_end_if_it_comes() {
    while (ending) pause();
}

constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGTERM};

void remove_and_end(int number) {
    ending = true;
    // A file may just be coming into being; the thread that makes it may be this one, so that it
    // is not waited for without an end.
    bool coming = true;
    for (int round = 0; coming && round < 100; ++round) {
        coming = false;
        for (entry& each : table) {
            const int state = each.state;
            if (state >= entry::announced) unlink(each.path.data());
            coming = coming || state == entry::announced;
        }
        const timespec a_while{0, 1'000'000};
        if (coming) nanosleep(&a_while, nullptr);
    }
    // The default action again; the signal comes when this handler returns, and tells the caller
    // what ended the program.
    std::raise(number);
}

}  // namespace

void unfinished_file::announce(const std::string& path) noexcept {
    forget();
    if (path.size() >= PATH_MAX) return;
    for (int i = 0; i < most_files && place_ < 0; ++i) {
        entry& each = table[static_cast<std::size_t>(i)];
        int expected = entry::vacant;
        if (!each.state.compare_exchange_strong(expected, entry::taken)) continue;
        each.path[path.copy(each.path.data(), path.size())] = '\0';
        each.state = entry::announced;
        place_ = i;
    }
    wait_for_the_end_if_it_comes();
}

void unfinished_file::is_there() const noexcept {
    if (place_ < 0) return;
    entry& its = table[static_cast<std::size_t>(place_)];
    its.state = entry::there;
    if (ending) unlink(its.path.data());
    wait_for_the_end_if_it_comes();
}

void unfinished_file::forget() noexcept {
    // The file may have been removed; nobody needs to hear of that.
    wait_for_the_end_if_it_comes();
    if (place_ >= 0) table[static_cast<std::size_t>(place_)].state = entry::vacant;
    place_ = -1;
}

void remove_unfinished_on_signals() noexcept {
    struct sigaction action {};
    action.sa_handler = remove_and_end;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigfillset(&action.sa_mask);
    for (const int number : ending_signals) {
        struct sigaction present {};
        // What is ignored (nohup) stays ignored, and what others handle is theirs.
        if (sigaction(number, nullptr, &present) != 0 || present.sa_handler != SIG_DFL) continue;
        sigaction(number, &action, nullptr);
    }
}

}  // namespace flib
