#include "sgn_check/frame.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sgn_check {
namespace {

/// What one atom may be displaced by for a derivative (Angstrom).
constexpr double longest_step = 0.1;

constexpr double degrees = 180 / std::numbers::pi;

using vec4 = std::array<double, 4>;
using mat4 = std::array<vec4, 4>;

vec3 cross(const vec3& a, const vec3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double dot(const vec3& a, const vec3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

vec3 centre(std::span<const vec3> x, std::span<const double> weight) {
    vec3 sum{};
    double total = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) sum[k] += weight[i] * x[i][k];
        total += weight[i];
    }
    for (double& component : sum) component /= total;
    return sum;
}

/// Eigenvalues, on the diagonal of `a` afterwards, and eigenvectors, the columns of the result, of
/// a symmetric matrix, by Jacobi rotations.
mat4 diagonalise(mat4& a) {
    mat4 vectors{};
    for (std::size_t i = 0; i < 4; ++i) vectors[i][i] = 1;
    for (int sweep = 0; sweep < 50; ++sweep) {
        double off = 0;
        for (std::size_t p = 0; p < 4; ++p) {
            for (std::size_t q = p + 1; q < 4; ++q) off += a[p][q] * a[p][q];
        }
        if (!(off > 0)) break;
        for (std::size_t p = 0; p < 4; ++p) {
            for (std::size_t q = p + 1; q < 4; ++q) {
                if (a[p][q] == 0) continue;
                const double theta = (a[q][q] - a[p][p]) / (2 * a[p][q]);
                const double t = std::copysign(1, theta) / (std::abs(theta) + std::hypot(theta, 1));
                const double c = 1 / std::hypot(t, 1);
                const double s = t * c;
                for (std::size_t k = 0; k < 4; ++k) {
                    const double kp = a[k][p];
                    const double kq = a[k][q];
                    a[k][p] = c * kp - s * kq;
                    a[k][q] = s * kp + c * kq;
                }
                for (std::size_t k = 0; k < 4; ++k) {
                    const double pk = a[p][k];
                    const double qk = a[q][k];
                    a[p][k] = c * pk - s * qk;
                    a[q][k] = s * pk + c * qk;
                    const double kp = vectors[k][p];
                    const double kq = vectors[k][q];
                    vectors[k][p] = c * kp - s * kq;
                    vectors[k][q] = s * kp + c * kq;
                }
            }
        }
    }
    return vectors;
}

/// The matrix whose eigenvector of the largest eigenvalue is the unit quaternion of the rotation
/// that takes a to b best, from the sums m[i][j] of a[i] b[j].
mat4 quaternion_matrix(const std::array<vec3, 3>& m) {
    mat4 k{};
    k[0] = {m[0][0] + m[1][1] + m[2][2], m[1][2] - m[2][1], m[2][0] - m[0][2], m[0][1] - m[1][0]};
    k[1] = {k[0][1], m[0][0] - m[1][1] - m[2][2], m[0][1] + m[1][0], m[2][0] + m[0][2]};
    k[2] = {k[0][2], k[1][2], m[1][1] - m[0][0] - m[2][2], m[1][2] + m[2][1]};
    k[3] = {k[0][3], k[1][3], k[2][3], m[2][2] - m[0][0] - m[1][1]};
    return k;
}

vec3 rotated(const vec4& q, const vec3& v) {
    const vec3 axis{q[1], q[2], q[3]};
    const vec3 once = cross(axis, v);
    const vec3 twice = cross(axis, once);
    vec3 result = v;
    for (std::size_t k = 0; k < 3; ++k) result[k] += 2 * (q[0] * once[k] + twice[k]);
    return result;
}

/// The rigid motion that takes one geometry to another best, by weighted least squares.
struct rigid_fit {
    double angle = 0;              ///< of its rotation, degrees, 0 to 180; the smallest if free
    bool axis_free = false;        ///< the atoms stand on a line: a turn about it shows nothing
    std::vector<double> distance;  ///< per atom, from where it lands to where it should
    double before = 0;             ///< weighted rms displacement, the common shift taken off
    double after = 0;              ///< the same once the rotation is taken off too
};

/// Fits `from` to `to`, arrays of the same length. Atoms of weight 0 do not take part, but their
/// distances are given.
rigid_fit fit_rotation(std::span<const vec3> from, std::span<const vec3> to,
                       std::span<const double> weight) {
    const vec3 from_centre = centre(from, weight);
    const vec3 to_centre = centre(to, weight);
    std::array<vec3, 3> m{};
    for (std::size_t n = 0; n < from.size(); ++n) {
        const vec3 a = difference(from[n], from_centre);
        const vec3 b = difference(to[n], to_centre);
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t j = 0; j < 3; ++j) m[i][j] += weight[n] * a[i] * b[j];
        }
    }
    mat4 values = quaternion_matrix(m);
    const mat4 vectors = diagonalise(values);

    // Where several eigenvalues are largest, the rotation is not unique: the one nearest to none is
    // the projection of the quaternion (1, 0, 0, 0) on their eigenvectors.
    constexpr double same = 1e-6;
    std::size_t top = 0;
    for (std::size_t i = 1; i < 4; ++i) {
        if (values[i][i] > values[top][top]) top = i;
    }
    vec4 q{};
    int equal = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        if (values[top][top] - values[i][i] > same * std::abs(values[top][top])) continue;
        ++equal;
        for (std::size_t k = 0; k < 4; ++k) q[k] += vectors[0][i] * vectors[k][i];
    }
    double norm = std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3]));
    if (!(norm > 1e-12)) {  // half a turn, whatever the axis
        for (std::size_t k = 0; k < 4; ++k) q[k] = vectors[k][top];
        norm = 1;
    }
    for (double& component : q) component /= norm;

    rigid_fit fit;
    fit.axis_free = equal > 1;
    fit.angle = 2 * degrees * std::atan2(length({q[1], q[2], q[3]}), std::abs(q[0]));
    double total = 0;
    for (std::size_t n = 0; n < from.size(); ++n) {
        const vec3 a = difference(from[n], from_centre);
        const vec3 b = difference(to[n], to_centre);
        const double left = length(difference(rotated(q, a), b));
        fit.distance.push_back(left);
        fit.before += weight[n] * std::pow(length(difference(a, b)), 2);
        fit.after += weight[n] * left * left;
        total += weight[n];
    }
    fit.before = std::sqrt(fit.before / total);
    fit.after = std::sqrt(fit.after / total);
    return fit;
}

/// Whether three of the atoms that stand where they were are off a line.
bool is_pinned(std::span<const vec3> from, std::span<const vec3> to) {
    std::vector<vec3> still;
    for (std::size_t i = 0; i < from.size(); ++i) {
        if (length(difference(to[i], from[i])) <= rounding) still.push_back(from[i]);
    }
    if (still.size() < 3) return false;
    vec3 along{};
    for (const vec3& x : still) {
        const vec3 candidate = difference(x, still.front());
        if (length(candidate) > length(along)) along = candidate;
    }
    constexpr double off_line = 0.1;
    return std::any_of(still.begin(), still.end(), [&](const vec3& x) {
        return length(cross(along, difference(x, still.front()))) > off_line * length(along);
    });
}

/// Whether the atoms that took part in the fit keep their distances.
bool is_rigid(const rigid_fit& fit, std::span<const double> weight) {
    for (std::size_t i = 0; i < weight.size(); ++i) {
        if (weight[i] > 0 && !(fit.distance[i] <= rounding)) return false;
    }
    return true;
}

}  // namespace

double length(const vec3& v) {
    return std::hypot(v[0], v[1], v[2]);
}

vec3 difference(const vec3& a, const vec3& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double angle_between(const vec3& a, const vec3& b) {
    if (length(a) == 0 || length(b) == 0) return std::nan("");
    return degrees * std::atan2(length(cross(a, b)), dot(a, b));
}

double frame_rotation(std::span<const vec3> from, std::span<const vec3> to,
                      std::span<const double> mass) {
    const std::size_t natom = from.size();
    int moved = 0;
    double farthest = 0;
    for (std::size_t i = 0; i < natom; ++i) {
        const double distance = length(difference(to[i], from[i]));
        if (distance > rounding) ++moved;
        farthest = std::max(farthest, distance);
    }
    if (moved == 0) return 0;

    std::vector<double> weight(natom, 1.0);
    const rigid_fit whole = fit_rotation(from, to, weight);
    const bool congruent = is_rigid(whole, weight);
    if (moved == 1 && (farthest <= longest_step || !congruent)) return 0;
    if (is_pinned(from, to)) return 0;
    if (congruent) return whole.angle;

    constexpr double none = 360;
    double smallest = none;
    for (std::size_t i = 0; i < natom && natom > 2; ++i) {
        weight[i] = 0;
        const rigid_fit others = fit_rotation(from, to, weight);
        if (is_rigid(others, weight) && (!others.axis_free || others.distance[i] <= longest_step)) {
            smallest = std::min(smallest, others.angle);
        }
        weight[i] = 1;
    }
    if (smallest < none) return smallest;

    const bool weighted = std::all_of(mass.begin(), mass.end(), [](double m) { return m > 0; });
    const rigid_fit fit = weighted ? fit_rotation(from, to, mass) : whole;
    return fit.after < fit.before / 4 ? fit.angle : 0;
}

}  // namespace sgn_check
