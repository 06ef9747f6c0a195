// What this room alone sees of Eigen.
#pragma once

#include <Eigen/Core>
#include <algorithm>
#include <cstddef>
#include <span>

#include "flib/util/units.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/table.h"

namespace sgn {

using row_major = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

inline Eigen::Index index(std::size_t i) {
    return static_cast<Eigen::Index>(i);
}

inline Eigen::Map<const row_major> view(const table& of) {
    return {of.values.data(), index(of.rows), index(of.columns)};
}

inline table table_of(const Eigen::Ref<const Eigen::MatrixXd>& of) {
    table result(static_cast<std::size_t>(of.rows()), static_cast<std::size_t>(of.cols()));
    Eigen::Map<row_major>(result.values.data(), of.rows(), of.cols()) = of;
    return result;
}

/// The largest magnitude in the 3 x 3 block, of an atom and a vector, with row `c` and column `k`.
inline double largest_nearby(const Eigen::Ref<const Eigen::MatrixXd>& of, Eigen::Index c,
                             Eigen::Index k) {
    return of.block<3, 3>(c - c % 3, k - k % 3).cwiseAbs().maxCoeff();
}

inline Eigen::Vector3d vector(const vec3& v) {
    return {v[0], v[1], v[2]};
}

/// Where the atoms are, a column each, with weights' centre as the origin (Bohr).
inline Eigen::Matrix3Xd centred(std::span<const atom> atoms, const Eigen::VectorXd& weight) {
    Eigen::Matrix3Xd x(3, index(atoms.size()));
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        x.col(index(i)) = vector(atoms[i].x) / flib::bohr_radius;
    }
    const Eigen::Vector3d centre = x * weight / weight.sum();
    return x.colwise() - centre;
}

/// The axis of a linear molecule; the zero vector of any other. `x` are the centred positions.
Eigen::Vector3d axis_of_line(const Eigen::Matrix3Xd& x);

}  // namespace sgn
