// Derivatives of the dipole and the forces with respect to all coordinates.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "sgn/set/displaced_set.h"
#include "sgn/set/table.h"

namespace sgn {

/// A coordinate that the displacements leave open.
struct coordinate {
    std::size_t atom = 0;  ///< from 0
    std::size_t axis = 0;  ///< 0, 1, 2 for x, y, z
};

/// Coordinates are in the order 1x 1y 1z 2x ...: 3N for N atoms. All in atomic units, per Bohr.
struct derivatives {
    std::vector<coordinate> missing;  ///< not spanned; if there are any, the rest is empty
    std::size_t open_directions = 0;  ///< of 3N, how many are not spanned

    table dipole;                            ///< 3N x 3: coordinate, component
    std::vector<double> dipole_uncertainty;  ///< 3N: from the rounding, the same for all components
    double dipole_step_error = 0;            ///< estimate for the largest derivative

    table forces;  ///< 3N x 3N: coordinate, component of the forces; empty without forces
    std::vector<double> force_uncertainty;  ///< 3N
    double force_step_error = 0;

    /// 3N x jobs: the derivatives are these times the values of the jobs, which is how errors of
    /// single jobs go on.
    table weights;

    bool complete() const { return missing.empty(); }
};

/// The least-squares derivatives: a pair of displacements +d and -d gives (y(+) - y(-)) / 2 = J d,
/// a displacement without partner y - y(0) = J d. Throws flib::run_error for a set whose jobs do
/// not have a shift and a force of every atom.
derivatives differentiate(const displaced_set& set);

/// "1 O x, y, z; 2 H y", and how many more if the list is long.
std::string text_of(const std::vector<coordinate>& coordinates, const std::vector<atom>& atoms);

/// What a central difference with a step of `h` Bohr, read from coordinates of six decimals, is off
/// by, as a part of the largest derivative nearby: the third derivatives, and the rounding of h.
double relative_step_error(double h);

}  // namespace sgn
