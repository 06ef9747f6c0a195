#include "sgn/set/detail/linear_algebra.h"

#include <cmath>

#include "sgn/set/detail/decompositions.h"

namespace sgn {

Eigen::Vector3d axis_of_line(const Eigen::Matrix3Xd& x) {
    // How far atoms may be off a line, rms, and still stand on it: less than any displacement.
    constexpr double off_line = 1e-3;
    const Eigen::Matrix3d spread = x * x.transpose() / static_cast<double>(x.cols());
    const spread_axes solved = spread_axes_of(spread);
    const Eigen::Vector3d extent = solved.values.cwiseMax(0).cwiseSqrt();
    if (extent[1] > off_line || !(extent[2] > off_line)) return Eigen::Vector3d::Zero();
    return solved.vectors.col(2);
}

}  // namespace sgn
