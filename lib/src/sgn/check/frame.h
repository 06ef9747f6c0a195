// Whether two geometries stand in the same frame.
#pragma once

#include <array>
#include <span>

#include "sgn/set/geometry.h"

namespace sgn {

/// A rotation of the frame.
struct frame_turn {
    double degrees = 0;                                             ///< 0 to 180
    std::array<vec3, 3> matrix{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};  ///< by rows

    vec3 applied_to(const vec3& v) const;
};

/// How the frame of `to` is turned against that of `from`. Displaced atoms turn the best fit too,
/// by up to about a degree in a light molecule, so this is no turn unless one is needed to explain
/// the geometry:
///
/// 1. One atom has moved, and all others stand where they were: no turn. (Unless it went more than
///    0.1 Angstrom and all distances are kept: then 3.)
/// 2. Three atoms off a line stand where they were: no turn.
/// 3. All distances are kept: the rotation of the best fit.
/// 4. All distances are kept among all atoms but one: the rotation of the others, and the smallest
///    if there is a choice of that one. Where the others stand on a line, the one may have moved by
///    0.1 Angstrom at most; beyond that 5 applies.
/// 5. Otherwise the rotation of the mass-weighted best fit counts if it takes off more than three
///    quarters of the rms displacement. (Normal modes do not turn that fit.)
///
/// Coordinates in Angstrom; throws flib::run_error unless the arrays are of the same length;
/// without masses above 0 throughout, 5 weights all atoms alike.
frame_turn turn_of_frame(std::span<const vec3> from, std::span<const vec3> to,
                         std::span<const double> mass);

/// Between two vectors, degrees; NaN if one of them is 0.
double angle_between(const vec3& a, const vec3& b);

}  // namespace sgn
