// Whole runs of the tool, against what the system needs at the least.

#include <cstdint>
#include <filesystem>
#include <string>

#include "compare.h"
#include "inputs.h"
#include "run_cost.h"

namespace {

using bench::run;
using bench::run_cost;

enum class kind { reference, mapped };

/// What a run may cost: processor time, against the yardstick, and memory. 0: there is no bound.
struct bound {
    double vs_yardstick = 0;
    double MiB = 0;
};

/// Makes the reference's result of a job and gives the command of a mapped run, or of a reference
/// run.
std::string command_of(const bench::temporary_directory& directory, kind which,
                       const std::string& job) {
    const std::string command = TOOL " " + job + ".fchk";
    if (which == kind::reference) return command;
    run(directory, command);
    std::filesystem::rename(directory.file(job + ".sgn"), directory.file("reference.sgn"));
    return command + " reference.sgn";
}

/// The processor time of a run, against counting the newlines of its log and checkpoint with wc -l:
/// of the dump, a small part is read.
void run_of_tool(benchmark::State& state, kind which, const bench::job_size& size,
                 const bound& most) {
    const bench::temporary_directory directory;
    bench::write_job(size, directory.file("job"));
    const std::string command = command_of(directory, which, "job");
    run_cost cost;
    bench::compare(
        state, [&] { return (cost = run(directory, command)).processor_seconds; },
        [&] { return run(directory, "/usr/bin/wc -l job.log job.fchk").processor_seconds; });
    const double ratio = state.counters["vs_yardstick"];
    const double mebibytes = static_cast<double>(cost.kibibytes) / 1024;
    state.counters["MiB"] = mebibytes;
    if (most.vs_yardstick != 0) state.counters["at_most"] = most.vs_yardstick;
    const auto above = [](double value, double bound) { return bound != 0 && value > bound; };
    if (above(ratio, most.vs_yardstick) || above(mebibytes, most.MiB)) {
        state.SetLabel("ABOVE ITS BOUND");
    }
}

constexpr bench::job_size nbasis_500{.nbasis = 500, .occupied = 50};
constexpr bench::job_size nbasis_2000{.nbasis = 2000, .occupied = 200};
constexpr bench::job_size nbasis_4000{.nbasis = 4000, .occupied = 300};
constexpr bench::job_size oniom{.natom = 100'000, .high_layer = 60, .nbasis = 500, .occupied = 50};

#define RUN(which, size, ...)                                                             \
    BENCHMARK_CAPTURE(run_of_tool, which##_##size, kind::which, size, bound{__VA_ARGS__}) \
        ->UseManualTime()
RUN(mapped, nbasis_500);
RUN(mapped, nbasis_2000, .vs_yardstick = 2.2);
RUN(mapped, nbasis_4000, .MiB = 16);
RUN(reference, nbasis_500);
RUN(reference, nbasis_2000, .vs_yardstick = 9);
RUN(reference, nbasis_4000, .MiB = 70);
RUN(reference, oniom);

/// The processor time of a run on a job of 4 states whose dump has 16 roots, against 4 roots.
void roots_beyond_the_states(benchmark::State& state, kind which) {
    const bench::temporary_directory directory;
    bench::job_size size = nbasis_2000;
    bench::write_job(size, directory.file("usual"));
    size.roots = size.states;
    bench::write_job(size, directory.file("few"));
    const std::string usual = command_of(directory, which, "usual");
    const std::string few = command_of(directory, which, "few");
    bench::compare(
        state, [&] { return run(directory, usual).processor_seconds; },
        [&] { return run(directory, few).processor_seconds; });
}
BENCHMARK_CAPTURE(roots_beyond_the_states, mapped, kind::mapped)->UseManualTime()->Iterations(100);
BENCHMARK_CAPTURE(roots_beyond_the_states, reference, kind::reference)
    ->UseManualTime()
    ->Iterations(50);

/// The wall time of a reference run with a log of 1 GB, against one with a log of 10 MB.
void long_log(benchmark::State& state) {
    const bench::temporary_directory directory;
    bench::write_job({.log_bytes = 10'000'000}, directory.file("short"));
    bench::write_job({.log_bytes = 1'000'000'000}, directory.file("long"));
    run_cost cost;
    run_cost cost_short;
    bench::compare(
        state, [&] { return (cost = run(directory, TOOL " long.fchk")).wall_seconds; },
        [&] { return (cost_short = run(directory, TOOL " short.fchk")).wall_seconds; });
    state.counters["more_MiB"] = static_cast<double>(cost.kibibytes - cost_short.kibibytes) / 1024;
}
BENCHMARK(long_log)->UseManualTime()->Iterations(300);

/// The wall time of a reference run of the smallest job, against a program that does nothing.
void small_run(benchmark::State& state) {
    const bench::temporary_directory directory;
    bench::write_job({}, directory.file("job"));
    bench::compare(
        state, [&] { return run(directory, TOOL " job.fchk").wall_seconds; },
        [&] { return run(directory, "/bin/true").wall_seconds; });
}
BENCHMARK(small_run)->UseManualTime()->Iterations(300);

}  // namespace
