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

/// The same sums of a vector, where derivatives are made with weights from that of every job: those
/// along the axes of the frame, then those about the axes that turn anything.
struct sums_of_jobs {
    sums_of_jobs(const rigid_motions& motions, const table& weights);

    /// 3 x sums: what the vector of a job contributes. That of the first one turns along.
    Eigen::Matrix3Xd share(std::size_t job, const Eigen::Vector3d& vector) const;
    /// Of each sum, if that of every job's vector is 1.
    Eigen::VectorXd variance() const;

    Eigen::MatrixXd motion;  ///< sums x 3N
    Eigen::MatrixXd weight;  ///< sums x jobs
    Eigen::Matrix3Xd axes;   ///< a column for each of the last sums
};

}  // namespace sgn
