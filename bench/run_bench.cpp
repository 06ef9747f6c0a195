// Whole runs of the tool, against what the system needs at the least.

#include <cstdint>
#include <string>

#include "compare.h"
#include "inputs.h"
#include "run_cost.h"

namespace {

using bench::run;
using bench::run_cost;

/// The processor time of a reference run, against counting the newlines of its three files with wc
/// -l. `beside_MiB` is its memory beyond the arrays that hold the job's quantities.
void reference_run(benchmark::State& state, const bench::job_size& size) {
    const bench::temporary_directory directory;
    bench::write_job(size, directory.file("job"));
    run_cost cost;
    bench::compare(
        state, [&] { return (cost = run(directory, TOOL " job.fchk")).processor_seconds; },
        [&] {
            return run(directory, "/usr/bin/wc -l job.log job.fchk job.cis").processor_seconds;
        });
    const double model = static_cast<double>(size.model_bytes()) / (1 << 20);
    state.counters["beside_MiB"] = static_cast<double>(cost.kibibytes) / 1024 - model;
}
BENCHMARK_CAPTURE(reference_run, nbasis_500, {.nbasis = 500, .occupied = 50})->UseManualTime();
BENCHMARK_CAPTURE(reference_run, nbasis_2000, {.nbasis = 2000, .occupied = 200})->UseManualTime();
BENCHMARK_CAPTURE(reference_run, nbasis_4000, {.nbasis = 4000, .occupied = 400, .roots = 3})
    ->UseManualTime();
BENCHMARK_CAPTURE(reference_run, oniom_100000_atoms,
                  {.natom = 100'000, .high_layer = 60, .nbasis = 500, .occupied = 50})
    ->UseManualTime();

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
