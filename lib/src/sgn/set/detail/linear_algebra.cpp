#include "sgn/set/detail/linear_algebra.h"

#include <Eigen/Eigenvalues>
#include <cmath>

namespace sgn {

Eigen::Vector3d axis_of_line(const Eigen::Matrix3Xd& x) {
    // How far atoms may be off a line, rms, and still stand on it: less than any displacement.
    constexpr double off_line = 1e-3;
    const Eigen::Matrix3d spread = x * x.transpose() / static_cast<double>(x.cols());
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(spread);
    const Eigen::Vector3d extent = solver.eigenvalues().cwiseMax(0).cwiseSqrt();
    if (extent[1] > off_line || !(extent[2] > off_line)) return Eigen::Vector3d::Zero();
    return solver.eigenvectors().col(2);
}

}  // namespace sgn
