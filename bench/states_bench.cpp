// Following states, against reading the job and the plain matrix work.

#include <Eigen/Core>
#include <Eigen/LU>
#include <filesystem>
#include <string>

#include "compare.h"
#include "inputs.h"
#include "run_cost.h"

namespace {

using bench::run;
using Eigen::Index;
using Eigen::MatrixXd;

/// The matrix work of one job as the formula has it: A = C0^-1 C1, and A_vv X1 A_oo^T of every
/// state.
class plain_matrix_work {
  public:
    explicit plain_matrix_work(const bench::job_size& size)
        : size_(size),
          reference_(random(size.nbasis, size.nbasis)),
          orbitals_(random(size.nbasis, size.nbasis)),
          amplitudes_(random(size.virtuals(), size.occupied)) {}

    double seconds() const {
        return bench::seconds([&] {
            const MatrixXd a = reference_.solve(orbitals_);
            const Index ma = size_.virtuals();
            const Index mi = size_.occupied;
            for (std::int32_t state = 0; state < size_.states; ++state) {
                const MatrixXd half = a.bottomRightCorner(ma, ma) * amplitudes_;
                const MatrixXd whole = half * a.block(1, 1, mi, mi).transpose();
                benchmark::DoNotOptimize(whole.data());
            }
        });
    }

  private:
    static MatrixXd random(Index rows, Index columns) { return MatrixXd::Random(rows, columns); }

    bench::job_size size_;
    Eigen::PartialPivLU<MatrixXd> reference_;
    MatrixXd orbitals_;
    MatrixXd amplitudes_;
};

/// The processor time of one more job, against stigruz's mapped run on it and the matrix work.
/// `matrices` is the peak memory in matrices of the basis functions, `reference_ms` what a run
/// takes beside its jobs.
void followed_job(benchmark::State& state, const bench::job_size& size) {
    const bench::temporary_directory directory;
    bench::write_job(size, directory.file("ref"));
    for (const std::string name : {"a", "b", "c"}) {
        for (const std::string suffix : {".log", ".fchk", ".cis"}) {
            std::filesystem::create_hard_link(directory.file("ref" + suffix),
                                              directory.file(name + suffix));
        }
    }
    run(directory, TOOL " ref.fchk");
    const plain_matrix_work work(size);
    bench::run_cost one;
    double mapped = 0;
    double matrices = 0;
    double each = 0;
    bench::compare(
        state,
        [&] {
            const auto cost = run(directory, STATES_TOOL " ref.fchk a.fchk b.fchk c.fchk");
            one = run(directory, STATES_TOOL " ref.fchk a.fchk");
            return each = (cost.processor_seconds - one.processor_seconds) / 2;
        },
        [&] {
            mapped = run(directory, TOOL " a.fchk ref.sgn").processor_seconds;
            return mapped + (matrices = work.seconds());
        });
    state.counters["mapped_ms"] = 1e3 * mapped;
    state.counters["matrix_ms"] = 1e3 * matrices;
    state.counters["reference_ms"] = 1e3 * (one.processor_seconds - each);
    state.counters["matrices"] =
        static_cast<double>(one.kibibytes) * 1024 / (8.0 * size.nbasis * size.nbasis);
}
BENCHMARK_CAPTURE(followed_job, nbasis_500, {.nbasis = 500, .occupied = 50, .states = 10})
    ->UseManualTime();
BENCHMARK_CAPTURE(followed_job, nbasis_500_no_more_roots,
                  {.nbasis = 500, .occupied = 50, .states = 10, .roots = 10})
    ->UseManualTime();
BENCHMARK_CAPTURE(followed_job, nbasis_2000, {.nbasis = 2000, .occupied = 200, .states = 10})
    ->UseManualTime();

}  // namespace
