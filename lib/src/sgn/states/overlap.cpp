#include "sgn/states/overlap.h"

#include <Eigen/Core>
#include <Eigen/LU>
#include <Eigen/QR>
#include <cmath>
#include <cstdint>
#include <utility>
#include <variant>

#include "flib/io/stop_run.h"

namespace sgn {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using lu_factors = Eigen::PartialPivLU<MatrixXd>;
using qr_factors = Eigen::HouseholderQR<MatrixXd>;
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
class factors {
  public:
    /// Throws flib::run_error if they are linearly dependent.
    explicit factors(const job& of) {
        // Basis sets that just pass as independent give 1e-8, coefficients of nine digits that
        // depend on each other less than 1e-15.
        constexpr double least_reciprocal_condition = 1e-12;
        if (reciprocal_condition(orbitals_of(of)) >= least_reciprocal_condition) return;
        throw flib::io_error(of.files.checkpoint, 0, "the orbitals are linearly dependent");
    }

    template <class Functions>
    MatrixXd solve(const Functions& right) const {
        return std::visit([&](const auto& its) { return MatrixXd(its.solve(right)); }, factors_);
    }

  private:
    double reciprocal_condition(const matrix_map& orbitals) {
        if (orbitals.rows() == orbitals.cols()) {
            return factors_.emplace<lu_factors>(orbitals).rcond();
        }
        const auto scales =
            factors_.emplace<qr_factors>(orbitals).matrixQR().diagonal().cwiseAbs().eval();
        return scales.minCoeff() / scales.maxCoeff();
    }

    std::variant<lu_factors, qr_factors> factors_{};
};

}  // namespace

struct overlap_reference::factorised {
    job_counts counts;
    factors orbitals;
    std::vector<MatrixXd> amplitudes;  // of every state, normalised
};

overlap_reference::overlap_reference(const job& reference) {
    std::vector<MatrixXd> amplitudes;
    for (std::int32_t state = 1; state <= reference.states; ++state) {
        amplitudes.emplace_back(amplitudes_of(reference, state).stableNormalized());
    }
    reference_ = std::make_unique<const factorised>(
        factorised{reference.counts, factors(reference), std::move(amplitudes)});
}

overlap_reference::~overlap_reference() = default;
overlap_reference::overlap_reference(overlap_reference&&) noexcept = default;

overlap_rows overlap_reference::overlaps(const job& now) const {
    static_cast<void>(factors(now));
    const auto& [counts, reference, amplitudes] = *reference_;
    const Index mi = counts.mi;
    const Index ma = counts.ma;
    const Index first_virtual = counts.nfc + mi;
    const auto virtuals = orbitals_of(now).middleCols(first_virtual, ma);
    const MatrixXd a_o = reference.solve(orbitals_of(now).middleCols(counts.nfc, mi));
    const MatrixXd a_oo = a_o.middleRows(counts.nfc, mi);
    const MatrixXd a_o_squared = a_o.transpose() * a_o;
    // C0^-1 (C1_v X1) or (C0^-1 C1_v) X1, whichever has fewer right-hand sides.
    const bool solve_orbitals = now.states * mi > ma;
    const MatrixXd a_v = solve_orbitals ? reference.solve(virtuals) : MatrixXd();

    overlap_rows rows(amplitudes.size());
    MatrixXd half;            // A_v X1
    MatrixXd turned(ma, mi);  // A_vv X1 A_oo^T
    for (std::int32_t root = 1; root <= now.states; ++root) {
        const MatrixXd x1 = amplitudes_of(now, root).stableNormalized();
        if (solve_orbitals) {
            half.noalias() = a_v * x1;
        } else {
            half.noalias() = virtuals * x1;
            half = reference.solve(half);
        }
        turned.noalias() = half.middleRows(first_virtual, ma) * a_oo.transpose();
        const double norm = std::sqrt((half.transpose() * half).cwiseProduct(a_o_squared).sum());
        for (std::size_t state = 0; state < amplitudes.size(); ++state) {
            rows[state].push_back(amplitudes[state].cwiseProduct(turned).sum() / norm);
        }
    }
    return rows;
}

}  // namespace sgn
