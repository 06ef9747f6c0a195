// A displacement of all coordinates, and which others go along its line.
#pragma once

#include <Eigen/Core>
#include <span>
#include <vector>

#include "sgn/set/displaced_set.h"

namespace sgn {

struct direction {
    /// Of the atoms' shifts (Angstrom).
    explicit direction(std::span<const vec3> shift);

    /// Whether the other goes the same way or the opposite one, as exactly as coordinates tell.
    /// No displacement at all goes along nothing.
    bool is_along(const direction& other) const;

    Eigen::VectorXd d;  ///< 3N, Bohr
    double length = 0;
    Eigen::Index largest = 0;  ///< component of d
};

}  // namespace sgn
