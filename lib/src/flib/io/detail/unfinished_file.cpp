#include "flib/io/detail/unfinished_file.h"

#include <limits.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>

#include "flib/io/atomic_file.h"

namespace flib {
namespace {

struct entry {
    enum : int { vacant, taken, complete };
    std::atomic<int> state = vacant;
    std::array<char, PATH_MAX> path;
};
static_assert(std::atomic<int>::is_always_lock_free);

/// Threads that write at the same time; more than these leave their files behind.
constexpr int most_files = 32;
std::array<entry, most_files> table;

constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGTERM};

void remove_and_end(int number) {
    for (entry& each : table) {
        if (each.state.load() == entry::complete) unlink(each.path.data());
    }
    // The default action again; the signal comes when this handler returns, and tells the caller
    // what ended the program.
    std::raise(number);
}

}  // namespace

void unfinished_file::remember(const std::string& path) noexcept {
    forget();
    if (path.size() >= PATH_MAX) return;
    for (int i = 0; i < most_files && place_ < 0; ++i) {
        entry& each = table[static_cast<std::size_t>(i)];
        int expected = entry::vacant;
        if (!each.state.compare_exchange_strong(expected, entry::taken)) continue;
        each.path[path.copy(each.path.data(), path.size())] = '\0';
        each.state = entry::complete;
        place_ = i;
    }
}

void unfinished_file::forget() noexcept {
    if (place_ >= 0) table[static_cast<std::size_t>(place_)].state = entry::vacant;
    place_ = -1;
}

void remove_unfinished_on_signals() noexcept {
    struct sigaction ending {};
    ending.sa_handler = remove_and_end;
    ending.sa_flags = static_cast<int>(SA_RESETHAND);
    sigfillset(&ending.sa_mask);
    for (const int number : ending_signals) {
        struct sigaction present {};
        // What is ignored (nohup) stays ignored, and what others handle is theirs.
        if (sigaction(number, nullptr, &present) != 0 || present.sa_handler != SIG_DFL) continue;
        sigaction(number, &ending, nullptr);
    }
}

}  // namespace flib
