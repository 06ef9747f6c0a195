// Translations and rotations of a whole molecule, to first order, and what its derivatives sum to.
#pragma once

#include <span>

#include "sgn/set/detail/linear_algebra.h"

namespace sgn {

struct rigid_motions {
    /// Rotations about the axes of the frame, through the centroid.
    explicit rigid_motions(std::span<const atom> atoms);
    /// Rotations about `about`, a column each, through the origin of `x`, a column an atom (Bohr).
    rigid_motions(const Eigen::Matrix3Xd& x, const Eigen::Matrix3Xd& about);

    /// Whether there is a rotation about axis `l`: not where all atoms stand on it.
    bool turns(Eigen::Index l) const;

    Eigen::Matrix3Xd axes;        ///< those of the frame, less their part along a linear molecule
    Eigen::MatrixXd translation;  ///< 3N x 3: where every coordinate goes when all move along j
    Eigen::MatrixXd rotation;     ///< 3N x axes: when all turn about axis l (Bohr)
};

/// The sums of sum_rules, 3 x components, of vectors `y` with the derivatives `by_coordinate` (3N x
/// components). They are linear in both.
struct motion_sums {
    motion_sums(const rigid_motions& motions, const Eigen::MatrixXd& by_coordinate,
                const Eigen::VectorXd& y);

    Eigen::MatrixXd translation;
    Eigen::MatrixXd rotation;
};

/// For each of the motions the variance of its sum, if that of all jobs' values, from which
/// derivatives are made with `weights`, is 1.
Eigen::Vector3d variance_of_sums(const Eigen::MatrixXd& motion, const table& weights);

}  // namespace sgn
