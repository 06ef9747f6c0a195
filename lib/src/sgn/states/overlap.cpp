#include "sgn/states/overlap.h"

#include <Eigen/Core>
#include <cmath>
#include <cstdint>
#include <utility>

#include "flib/io/stop_run.h"
#include "sgn/set/detail/decompositions.h"

namespace sgn {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using matrix_map = Eigen::Map<const MatrixXd>;

matrix_map orbitals_of(const job& of) {
    return {of.moc.view().data(), of.counts.nbasis, of.counts.nbsuse};
}

matrix_map amplitudes_of(const job& of, std::int32_t root) {
    return {of.amplitudes(root).data(), of.counts.ma, of.counts.mi};
}

/// The orbitals of a job, factorised so that others can be expressed in them.
///
/// Where linear dependences were removed, there are fewer orbitals than basis functions. Programs
/// leave out the eigenvectors of the overlap matrix with the smallest eigenvalues (canonical
/// orthogonalisation). These are orthogonal to the kept ones in the plain metric and in that of the
/// basis functions, so the plain least-squares solution is the projection in the latter, too.
///
/// Throws flib::run_error if they are linearly dependent.
factorised_matrix factorised_orbitals(const job& of) {
    // Basis sets that just pass as independent give 1e-8, coefficients of nine digits that depend
    // on each other less than 1e-15.
    constexpr double least_reciprocal_condition = 1e-12;
    factorised_matrix made(orbitals_of(of));
    if (made.reciprocal_condition() >= least_reciprocal_condition) return made;
    throw flib::io_error(of.files.checkpoint, 0, "the orbitals are linearly dependent");
}

}  // namespace

struct overlap_reference::factorised {
    job_counts counts;
    factorised_matrix orbitals;
    std::vector<MatrixXd> amplitudes;  // of every state, normalised
};

overlap_reference::overlap_reference(const job& reference) {
    std::vector<MatrixXd> amplitudes;
    for (std::int32_t state = 1; state <= reference.states; ++state) {
        amplitudes.emplace_back(amplitudes_of(reference, state).stableNormalized());
    }
    reference_ = std::make_unique<const factorised>(
        factorised{reference.counts, factorised_orbitals(reference), std::move(amplitudes)});
}

overlap_reference::~overlap_reference() = default;
overlap_reference::overlap_reference(overlap_reference&&) noexcept = default;

overlap_rows overlap_reference::overlaps(const job& now) const {
    static_cast<void>(factorised_orbitals(now));
    const auto& [counts, reference, amplitudes] = *reference_;
    const Index mi = counts.mi;
    const Index ma = counts.ma;
    const Index first_virtual = counts.nfc + mi;
    const auto virtuals = orbitals_of(now).middleCols(first_virtual, ma);
    const MatrixXd a_o = reference.solve(orbitals_of(now).middleCols(counts.nfc, mi));
    const MatrixXd a_oo = a_o.middleRows(counts.nfc, mi);
    const MatrixXd a_o_squared = transposed_product(a_o, a_o);
    // C0^-1 (C1_v X1) or (C0^-1 C1_v) X1, whichever has fewer right-hand sides.
    const bool solve_orbitals = now.states * mi > ma;
    const MatrixXd a_v = solve_orbitals ? reference.solve(virtuals) : MatrixXd();

    overlap_rows rows(amplitudes.size());
    MatrixXd half;            // A_v X1
    MatrixXd turned(ma, mi);  // A_vv X1 A_oo^T
    for (std::int32_t root = 1; root <= now.states; ++root) {
        const MatrixXd x1 = amplitudes_of(now, root).stableNormalized();
        if (solve_orbitals) {
            half = product(a_v, x1);
        } else {
            half.noalias() = virtuals * x1;
            half = reference.solve(half);
        }
        turned.noalias() = half.middleRows(first_virtual, ma) * a_oo.transpose();
        const double norm =
            std::sqrt(transposed_product(half, half).cwiseProduct(a_o_squared).sum());
        for (std::size_t state = 0; state < amplitudes.size(); ++state) {
            rows[state].push_back(amplitudes[state].cwiseProduct(turned).sum() / norm);
        }
    }
    return rows;
}

}  // namespace sgn
