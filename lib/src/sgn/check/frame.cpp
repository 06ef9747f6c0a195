#include "sgn/check/frame.h"
#include "sgn/set/detail/shape.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>
#include <vector>

#include "sgn/set/detail/decompositions.h"

namespace sgn {
namespace {

using Eigen::Quaterniond;
using Eigen::Vector3d;

/// What one atom may be displaced by for a derivative (Angstrom).
constexpr double longest_step = 0.1;

constexpr double degrees = 180 / std::numbers::pi;

Vector3d vector_of(const vec3& v) {
    return {v[0], v[1], v[2]};
}

Vector3d centre(std::span<const vec3> x, std::span<const double> weight) {
    Vector3d sum = Vector3d::Zero();
    double total = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        sum += weight[i] * vector_of(x[i]);
        total += weight[i];
    }
    return sum / total;
}

/// The matrix whose eigenvector of the largest eigenvalue is the unit quaternion of the rotation
/// that takes a to b best, from the sums m(i, j) of a(i) b(j).
Eigen::Matrix4d quaternion_matrix(const Eigen::Matrix3d& m) {
    Eigen::Matrix4d k;
    const Vector3d twist{m(1, 2) - m(2, 1), m(2, 0) - m(0, 2), m(0, 1) - m(1, 0)};
    k(0, 0) = m.trace();
    k.block<3, 1>(1, 0) = twist;
    k.block<1, 3>(0, 1) = twist.transpose();
    k.block<3, 3>(1, 1) = m + m.transpose() - m.trace() * Eigen::Matrix3d::Identity();
    return k;
}

/// The rigid motion that takes one geometry to another best, by weighted least squares.
struct rigid_fit {
    Quaterniond rotation;          ///< by 0 to 180 degrees; the smallest if there is a choice
    bool axis_free = false;        ///< the atoms stand on a line: a turn about it shows nothing
    std::vector<double> distance;  ///< per atom, from where it lands to where it should
    double before = 0;             ///< weighted rms displacement, the common shift taken off
    double after = 0;              ///< the same once the rotation is taken off too

    frame_turn turn() const {
        frame_turn result;
        result.degrees = 2 * degrees * std::atan2(rotation.vec().norm(), std::abs(rotation.w()));
        const Eigen::Matrix3d matrix = rotation.toRotationMatrix();
        for (int i = 0; i < 3; ++i) {
            result.matrix[static_cast<std::size_t>(i)] = {matrix(i, 0), matrix(i, 1), matrix(i, 2)};
        }
        return result;
    }
};

/// Fits `from` to `to`, arrays of the same length. Atoms of weight 0 do not take part, but their
/// distances are given.
rigid_fit fit_rotation(std::span<const vec3> from, std::span<const vec3> to,
                       std::span<const double> weight) {
    const Vector3d from_centre = centre(from, weight);
    const Vector3d to_centre = centre(to, weight);
    Eigen::Matrix3d m = Eigen::Matrix3d::Zero();
    for (std::size_t n = 0; n < from.size(); ++n) {
        const Vector3d a = vector_of(from[n]) - from_centre;
        const Vector3d b = vector_of(to[n]) - to_centre;
        m += weight[n] * a * b.transpose();
    }
    const eigen_system solved = eigen_system_of(quaternion_matrix(m));

    // Where several eigenvalues are largest, the rotation is not unique: the one nearest to none is
    // the projection of the quaternion (1, 0, 0, 0) on their eigenvectors.
    constexpr double same = 1e-6;
    const Eigen::Vector4d values = solved.values;
    const Eigen::Matrix4d vectors = solved.vectors;
    Eigen::Vector4d q = Eigen::Vector4d::Zero();
    int equal = 0;
    for (int i = 0; i < 4; ++i) {
        if (values(3) - values(i) > same * std::abs(values(3))) continue;
        ++equal;
        q += vectors(0, i) * vectors.col(i);
    }
    if (!(q.norm() > 1e-12)) q = vectors.col(3);  // half a turn, whatever the axis
    q.normalize();

    rigid_fit fit;
    fit.rotation = Quaterniond(q(0), q(1), q(2), q(3));
    fit.axis_free = equal > 1;
    double total = 0;
    for (std::size_t n = 0; n < from.size(); ++n) {
        const Vector3d a = vector_of(from[n]) - from_centre;
        const Vector3d b = vector_of(to[n]) - to_centre;
        const double left = (fit.rotation * a - b).norm();
        fit.distance.push_back(left);
        fit.before += weight[n] * (a - b).squaredNorm();
        fit.after += weight[n] * left * left;
        total += weight[n];
    }
    fit.before = std::sqrt(fit.before / total);
    fit.after = std::sqrt(fit.after / total);
    return fit;
}

/// Whether three of the atoms that stand where they were are off a line.
bool is_pinned(std::span<const vec3> from, std::span<const vec3> to) {
    std::vector<Vector3d> still;
    for (std::size_t i = 0; i < from.size(); ++i) {
        if (length(difference(to[i], from[i])) <= rounding) still.push_back(vector_of(from[i]));
    }
    if (still.size() < 3) return false;
    Vector3d along = Vector3d::Zero();
    for (const Vector3d& x : still) {
        const Vector3d candidate = x - still.front();
        if (candidate.norm() > along.norm()) along = candidate;
    }
    constexpr double off_line = 0.1;
    return std::any_of(still.begin(), still.end(), [&](const Vector3d& x) {
        return along.cross(x - still.front()).norm() > off_line * along.norm();
    });
}

/// Whether the atoms that took part in the fit keep their distances.
bool is_rigid(const rigid_fit& fit, std::span<const double> weight) {
    for (std::size_t i = 0; i < weight.size(); ++i) {
        if (weight[i] > 0 && !(fit.distance[i] <= rounding)) return false;
    }
    return true;
}

/// Whether all distances from atom `i`, or all but one, are kept.
bool keeps_distances(std::span<const vec3> from, std::span<const vec3> to, std::size_t i) {
    int changed = 0;
    for (std::size_t j = 0; j < from.size(); ++j) {
        const double before = length(difference(from[j], from[i]));
        const double after = length(difference(to[j], to[i]));
        if (!(std::abs(after - before) <= 2 * rounding)) ++changed;
    }
    return changed <= 1;
}

/// Rule 4, or nothing if it does not apply.
std::optional<frame_turn> turn_of_all_but_one(std::span<const vec3> from,
                                              std::span<const vec3> to) {
    const std::size_t natom = from.size();
    // Of two atoms, one is not that one. This spares large molecules a fit per atom.
    if (natom < 3 || !(keeps_distances(from, to, 0) || keeps_distances(from, to, 1))) return {};
    std::optional<frame_turn> smallest;
    std::vector<double> weight(natom, 1.0);
    for (std::size_t i = 0; i < natom; ++i) {
        weight[i] = 0;
        const rigid_fit others = fit_rotation(from, to, weight);
        if (is_rigid(others, weight) && (!others.axis_free || others.distance[i] <= longest_step)) {
            const frame_turn turn = others.turn();
            if (!smallest || turn.degrees < smallest->degrees) smallest = turn;
        }
        weight[i] = 1;
    }
    return smallest;
}

}  // namespace

double angle_between(const vec3& a, const vec3& b) {
    if (length(a) == 0 || length(b) == 0) return std::nan("");
    const Vector3d u = vector_of(a);
    const Vector3d v = vector_of(b);
    return degrees * std::atan2(u.cross(v).norm(), u.dot(v));
}

vec3 frame_turn::applied_to(const vec3& v) const {
    vec3 result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) result[i] += matrix[i][j] * v[j];
    }
    return result;
}

frame_turn turn_of_frame(std::span<const vec3> from, std::span<const vec3> to,
                         std::span<const double> mass) {
    const std::size_t natom = from.size();
    require_count("places", to.size(), natom);
    require_count("masses", mass.size(), natom);
    int moved = 0;
    double farthest = 0;
    for (std::size_t i = 0; i < natom; ++i) {
        const double distance = length(difference(to[i], from[i]));
        if (distance > rounding) ++moved;
        farthest = std::max(farthest, distance);
    }
    if (moved == 0) return {};

    const std::vector<double> alike(natom, 1.0);
    const rigid_fit whole = fit_rotation(from, to, alike);
    const bool congruent = is_rigid(whole, alike);
    if (moved == 1 && (farthest <= longest_step || !congruent)) return {};
    if (is_pinned(from, to)) return {};
    if (congruent) return whole.turn();
    if (const auto turn = turn_of_all_but_one(from, to)) return *turn;

    const bool weighted = std::all_of(mass.begin(), mass.end(), [](double m) { return m > 0; });
    const rigid_fit fit = weighted ? fit_rotation(from, to, mass) : whole;
    return fit.after < fit.before / 4 ? fit.turn() : frame_turn{};
}

}  // namespace sgn
