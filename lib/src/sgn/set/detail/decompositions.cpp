#include "sgn/set/detail/decompositions.h"

#include <Eigen/Eigenvalues>
#include <Eigen/LU>
#include <Eigen/QR>
#include <variant>

namespace sgn {

using Eigen::MatrixXd;

MatrixXd product(const MatrixXd& a, const MatrixXd& b) {
    return a * b;
}

MatrixXd transposed_product(const MatrixXd& a, const MatrixXd& b) {
    return a.transpose() * b;
}

eigen_system eigen_system_of(const MatrixXd& matrix) {
    const Eigen::SelfAdjointEigenSolver<MatrixXd> solver(matrix);
    return {solver.eigenvalues(), solver.eigenvectors()};
}

spread_axes spread_axes_of(const Eigen::Matrix3d& matrix) {
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(matrix);
    return {solver.eigenvalues(), solver.eigenvectors()};
}

MatrixXd orthogonal_factor(const MatrixXd& matrix) {
    return Eigen::HouseholderQR<MatrixXd>(matrix).householderQ();
}

struct orthogonal_decomposition::implementation {
    Eigen::CompleteOrthogonalDecomposition<MatrixXd> of;
};

orthogonal_decomposition::orthogonal_decomposition(const MatrixXd& matrix, double threshold) {
    auto made = std::make_unique<implementation>();
    made->of.setThreshold(threshold);
    made->of.compute(matrix);
    its_ = std::move(made);
}

orthogonal_decomposition::~orthogonal_decomposition() = default;

Eigen::Index orthogonal_decomposition::rank() const {
    return its_->of.rank();
}

MatrixXd orthogonal_decomposition::spanned() const {
    const MatrixXd z = its_->of.matrixZ();
    return (z.topRows(rank()) * its_->of.colsPermutation().transpose()).transpose();
}

MatrixXd orthogonal_decomposition::solve(const MatrixXd& right) const {
    return its_->of.solve(right);
}

struct factorised_matrix::implementation {
    std::variant<Eigen::PartialPivLU<MatrixXd>, Eigen::HouseholderQR<MatrixXd>> of;
};

factorised_matrix::factorised_matrix(const Eigen::Ref<const MatrixXd>& matrix) {
    auto made = std::make_unique<implementation>();
    if (matrix.rows() == matrix.cols()) {
        made->of.emplace<0>(matrix);
    } else {
        made->of.emplace<1>(matrix);
    }
    its_ = std::move(made);
}

factorised_matrix::~factorised_matrix() = default;
factorised_matrix::factorised_matrix(factorised_matrix&&) noexcept = default;

double factorised_matrix::reciprocal_condition() const {
    if (const auto* lu = std::get_if<0>(&its_->of)) return lu->rcond();
    const Eigen::VectorXd scales = std::get<1>(its_->of).matrixQR().diagonal().cwiseAbs();
    return scales.minCoeff() / scales.maxCoeff();
}

MatrixXd factorised_matrix::solve(const Eigen::Ref<const MatrixXd>& right) const {
    return std::visit([&](const auto& its) { return MatrixXd(its.solve(right)); }, its_->of);
}

}  // namespace sgn
