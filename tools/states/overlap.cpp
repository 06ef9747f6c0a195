#include "states/overlap.h"

#include <Eigen/Core>
#include <Eigen/LU>
#include <cmath>
#include <cstdint>

#include "flib/io/stop_run.h"

namespace states {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using lu_factors = Eigen::PartialPivLU<MatrixXd>;
using matrix_map = Eigen::Map<const MatrixXd>;

matrix_map orbitals_of(const job& of) {
    return {of.moc.view().data(), of.counts.nbasis, of.counts.nbasis};
}

matrix_map amplitudes_of(const job& of, std::int32_t root) {
    return {of.amplitudes(root).data(), of.counts.ma, of.counts.mi};
}

lu_factors factors_of(const job& of) {
    // Basis sets that just pass as independent give 1e-8, coefficients of nine digits that depend
    // on each other less than 1e-15.
    constexpr double least_reciprocal_condition = 1e-12;
    lu_factors factors(orbitals_of(of));
    if (factors.rcond() >= least_reciprocal_condition) return factors;
    throw flib::io_error(of.files.checkpoint, 0, "the orbitals are linearly dependent");
}

}  // namespace

struct overlap_reference::factorised {
    numfreq::job_counts counts;
    lu_factors orbitals;
    std::vector<MatrixXd> amplitudes;  // of every state, normalised
};

overlap_reference::overlap_reference(const job& reference) {
    std::vector<MatrixXd> amplitudes;
    for (std::int32_t state = 1; state <= reference.counts.mci; ++state) {
        amplitudes.emplace_back(amplitudes_of(reference, state).stableNormalized());
    }
    reference_ = std::make_unique<const factorised>(
        factorised{reference.counts, factors_of(reference), std::move(amplitudes)});
}

overlap_reference::~overlap_reference() = default;
overlap_reference::overlap_reference(overlap_reference&&) noexcept = default;

overlap_rows overlap_reference::overlaps(const job& now) const {
    static_cast<void>(factors_of(now));
    const auto& [counts, reference, amplitudes] = *reference_;
    const Index mi = counts.mi;
    const Index ma = counts.ma;
    const Index first_virtual = counts.nfc + mi;
    const auto virtuals = orbitals_of(now).middleCols(first_virtual, ma);
    const MatrixXd a_o = reference.solve(orbitals_of(now).middleCols(counts.nfc, mi));
    const MatrixXd a_oo = a_o.middleRows(counts.nfc, mi);
    const MatrixXd a_o_squared = a_o.transpose() * a_o;
    // C0^-1 (C1_v X1) or (C0^-1 C1_v) X1, whichever has fewer right-hand sides.
    const bool solve_orbitals = now.counts.mci * mi > ma;
    const MatrixXd a_v = solve_orbitals ? MatrixXd(reference.solve(virtuals)) : MatrixXd();

    overlap_rows rows(amplitudes.size());
    MatrixXd half(counts.nbasis, mi);  // A_v X1
    MatrixXd turned(ma, mi);           // A_vv X1 A_oo^T
    for (std::int32_t root = 1; root <= now.counts.mci; ++root) {
        const MatrixXd x1 = amplitudes_of(now, root).stableNormalized();
        if (solve_orbitals) {
            half.noalias() = a_v * x1;
        } else {
            half.noalias() = virtuals * x1;
            half = reference.solve(half).eval();
        }
        turned.noalias() = half.middleRows(first_virtual, ma) * a_oo.transpose();
        const double norm = std::sqrt((half.transpose() * half).cwiseProduct(a_o_squared).sum());
        for (std::size_t state = 0; state < amplitudes.size(); ++state) {
            rows[state].push_back(amplitudes[state].cwiseProduct(turned).sum() / norm);
        }
    }
    return rows;
}

}  // namespace states
