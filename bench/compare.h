// A figure and its yardstick, measured in turns within one run.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <type_traits>

namespace bench {

/// The processor time that `work` takes, which other jobs of the machine disturb least, or the time
/// that it says it took.
template <class Work>
double seconds(Work&& work) {
    if constexpr (std::is_same_v<decltype(work()), double>) {
        return work();
    } else {
        const auto now = [] {
            timespec time{};
            clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
            return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
        };
        const double start = now();
        work();
        return now() - start;
    }
}

/// Measures both in every iteration. `vs_yardstick` is the ratio of their shortest times: 2 means
/// that `work` takes twice as long as `yardstick`.
template <class Work, class Yardstick>
void compare(benchmark::State& state, Work work, Yardstick yardstick) {
    double shortest = std::numeric_limits<double>::infinity();
    double yardstick_shortest = shortest;
    for ([[maybe_unused]] auto _ : state) {
        yardstick_shortest = std::min(yardstick_shortest, seconds(yardstick));
        const double time = seconds(work);
        shortest = std::min(shortest, time);
        state.SetIterationTime(time);
    }
    state.counters["vs_yardstick"] = shortest / yardstick_shortest;
    state.counters["shortest_ms"] = 1e3 * shortest;
}

}  // namespace bench
