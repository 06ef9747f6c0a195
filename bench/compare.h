// A figure and its yardstick, measured in turns within one run.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <type_traits>

namespace bench {

/// The time that `work` takes, or that it says it took.
template <class Work>
double seconds(Work&& work) {
    if constexpr (std::is_same_v<decltype(work()), double>) {
        return work();
    } else {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
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
