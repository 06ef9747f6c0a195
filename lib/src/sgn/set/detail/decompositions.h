// Decompositions and products of matrices. What they are made of takes longer to compile than all
// else here, so that one source alone sees it.
#pragma once

#include <Eigen/Core>
#include <memory>

namespace sgn {

/// a b.
Eigen::MatrixXd product(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b);
/// a^T b.
Eigen::MatrixXd transposed_product(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b);

struct eigen_system {
    Eigen::VectorXd values;   ///< ascending
    Eigen::MatrixXd vectors;  ///< a column each, normalised
};

/// Of a symmetric matrix.
eigen_system eigen_system_of(const Eigen::MatrixXd& matrix);

/// The same of a matrix of three rows: the axes along which something is spread.
struct spread_axes {
    Eigen::Vector3d values;
    Eigen::Matrix3d vectors;
};
spread_axes spread_axes_of(const Eigen::Matrix3d& matrix);

/// The whole orthogonal factor Q of `matrix` = Q R.
Eigen::MatrixXd orthogonal_factor(const Eigen::MatrixXd& matrix);

/// A matrix of any rank, for the solution of least squares with the smallest norm.
class orthogonal_decomposition {
  public:
    /// Pivots of no more than `threshold` times the largest count as zero.
    orthogonal_decomposition(const Eigen::MatrixXd& matrix, double threshold);
    ~orthogonal_decomposition();

    Eigen::Index rank() const;
    /// An orthonormal basis of what the rows span, a column each.
    Eigen::MatrixXd spanned() const;
    Eigen::MatrixXd solve(const Eigen::MatrixXd& right) const;

  private:
    struct implementation;
    std::unique_ptr<const implementation> its_;
};

/// A matrix of independent columns, for the solution of equations: LU where it is square, else QR
/// and least squares.
class factorised_matrix {
  public:
    explicit factorised_matrix(const Eigen::Ref<const Eigen::MatrixXd>& matrix);
    ~factorised_matrix();
    factorised_matrix(factorised_matrix&&) noexcept;

    /// An estimate of the reciprocal condition number; of QR, the ratio of the smallest to the
    /// largest diagonal element of R.
    double reciprocal_condition() const;
    Eigen::MatrixXd solve(const Eigen::Ref<const Eigen::MatrixXd>& right) const;

  private:
    struct implementation;
    std::unique_ptr<const implementation> its_;
};

}  // namespace sgn
