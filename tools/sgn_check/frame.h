// Whether two geometries stand in the same frame.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace sgn_check {

using vec3 = std::array<double, 3>;

/// Result files give coordinates with six decimals, so the same place may differ by this much
/// between two of them (Angstrom).
inline constexpr double rounding = 5e-6;

/// By how much the frame of `to` is turned against that of `from` (degrees). Displaced atoms turn
/// the best fit too, by up to about a degree in a light molecule, so this is 0 unless a turn is
/// needed to explain the geometry:
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
double frame_rotation(std::span<const vec3> from, std::span<const vec3> to,
                      std::span<const double> mass);

double length(const vec3& v);
vec3 difference(const vec3& a, const vec3& b);
/// Between two vectors, degrees; NaN if one of them is 0.
double angle_between(const vec3& a, const vec3& b);

}  // namespace sgn_check
