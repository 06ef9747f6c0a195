// Translations and rotations of a whole molecule, to first order.
#pragma once

#include <span>

#include "sgn/set/detail/linear_algebra.h"

namespace sgn {

struct rigid_motions {
    explicit rigid_motions(std::span<const atom> atoms);

    /// Whether there is a rotation about axis `l`: not where all atoms stand on it.
    bool turns(Eigen::Index l) const;

    Eigen::Matrix3d axes;         ///< those of the frame, less their part along a linear molecule
    Eigen::MatrixXd translation;  ///< 3N x 3: where every coordinate goes when all move along j
    Eigen::MatrixXd rotation;  ///< 3N x 3: when all turn about axis l, through the centroid (Bohr)
};

}  // namespace sgn
