// Vectors of three components, and how exactly a result file gives a place.
#pragma once

#include <array>
#include <cmath>

namespace sgn {

using vec3 = std::array<double, 3>;

/// Result files give coordinates with six decimals, so the same place may differ by this much
/// between two of them (Angstrom).
inline constexpr double rounding = 5e-6;

inline constexpr std::array axis_names{'x', 'y', 'z'};

inline double length(const vec3& v) {
    return std::hypot(v[0], v[1], v[2]);
}

inline vec3 sum(const vec3& a, const vec3& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

inline vec3 difference(const vec3& a, const vec3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline double dot(const vec3& a, const vec3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline vec3 scaled(double factor, const vec3& v) {
    return {factor * v[0], factor * v[1], factor * v[2]};
}

/// Places no farther from each other are the same (Angstrom): sums of six decimals are not exact.
inline constexpr double same_place = rounding * (1 + 1e-6);

inline bool is_same_place(const vec3& a, const vec3& b) {
    return length(difference(a, b)) <= same_place;
}

}  // namespace sgn
