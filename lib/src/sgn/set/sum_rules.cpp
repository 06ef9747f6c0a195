#include "sgn/set/sum_rules.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/set/decimals.h"
#include "sgn/set/detail/rigid_motions.h"

namespace sgn {
namespace {

/// What is known of the errors, in variances.
struct errors {
    Eigen::Vector3d translation;  // of the sum for each axis
    Eigen::Vector3d rotation;
    double value = 0;     // of each of the values themselves
    double relative = 0;  // of a derivative: this part of the largest one nearby (no variance)
};

/// The largest derivative of each vector of `derivatives` with respect to each atom.
Eigen::MatrixXd largest_nearby(const Eigen::Ref<const Eigen::MatrixXd>& derivatives) {
    Eigen::MatrixXd largest(derivatives.rows() / 3, derivatives.cols() / 3);
    for (Eigen::Index v = 0; v < largest.cols(); ++v) {
        for (Eigen::Index a = 0; a < largest.rows(); ++a) {
            largest(a, v) = derivatives.block<3, 3>(3 * a, 3 * v).cwiseAbs().maxCoeff();
        }
    }
    return largest;
}

sum_rules evaluate(const rigid_motions& motions, const Eigen::VectorXd& values,
                   const Eigen::MatrixXd& derivatives, const errors& known) {
    const Eigen::Index components = derivatives.cols();
    const auto [translation, rotation] = motion_sums(motions, derivatives, values);
    // The vectors themselves, which turn along, are uncertain too.
    Eigen::MatrixXd value_variance(3, components);
    for (Eigen::Index l = 0; l < 3; ++l) {
        const Eigen::Vector3d square = motions.axes.col(l).cwiseAbs2();
        const Eigen::Vector3d across{square[2] + square[1], square[2] + square[0],
                                     square[1] + square[0]};
        value_variance.row(l) = (across * known.value).transpose().replicate(1, components / 3);
    }

    // The share of each atom in each sum, squared, times the error of its derivatives.
    const Eigen::MatrixXd nearby = known.relative * largest_nearby(derivatives);
    const auto step_variance = [&](const Eigen::MatrixXd& motion) {
        Eigen::MatrixXd share(3, nearby.rows());
        for (Eigen::Index a = 0; a < nearby.rows(); ++a) {
            share.col(a) = motion.middleRows(3 * a, 3).colwise().squaredNorm().transpose();
        }
        const Eigen::MatrixXd per_vector = share * nearby.cwiseAbs2();
        return Eigen::MatrixXd(Eigen::MatrixXd::NullaryExpr(
            3, components, [&](Eigen::Index l, Eigen::Index k) { return per_vector(l, k / 3); }));
    };
    Eigen::MatrixXd translation_uncertainty = step_variance(motions.translation);
    translation_uncertainty.colwise() += known.translation;
    translation_uncertainty = translation_uncertainty.cwiseSqrt();
    Eigen::MatrixXd rotation_uncertainty = step_variance(motions.rotation) + value_variance;
    rotation_uncertainty.colwise() += known.rotation;
    rotation_uncertainty = rotation_uncertainty.cwiseSqrt();

    constexpr double too_large = std::numeric_limits<double>::infinity();
    sum_rules result;
    result.judged = true;
    const auto count = [&](double residue, double uncertainty) {
        double ratio = residue == 0 ? 0 : std::abs(residue) / uncertainty;
        // Absurd values, whose squares are too large: nothing is known, so nothing holds.
        if (!std::isfinite(uncertainty) || !std::isfinite(ratio)) ratio = too_large;
        ++result.sums;
        result.chi2 += ratio * ratio;
        result.largest = std::max(result.largest, ratio);
        result.largest_residue = std::max(result.largest_residue, std::abs(residue));
    };
    for (Eigen::Index l = 0; l < 3; ++l) {
        for (Eigen::Index k = 0; k < components; ++k) {
            count(translation(l, k), translation_uncertainty(l, k));
            if (motions.turns(l)) count(rotation(l, k), rotation_uncertainty(l, k));
        }
    }
    result.translation = table_of(translation);
    result.rotation = table_of(rotation);
    result.translation_uncertainty = table_of(translation_uncertainty);
    result.rotation_uncertainty = table_of(rotation_uncertainty);
    result.satisfied = components == 3
                           ? result.chi2 <= largest_mean_square * static_cast<double>(result.sums)
                           : result.largest <= largest_force_residue;
    return result;
}

/// The reason why a set is not judged, or nothing.
std::string why_not(const displaced_set& set, const derivatives& of) {
    if (!of.complete()) return "not all coordinates are displaced";
    if (set.one_sided == 0) return {};
    std::string first;
    for (const displaced_job& each : set.jobs) {
        if (first.empty() && each.is == role::one_sided) first = flib::printable(each.name);
    }
    return std::to_string(set.one_sided) +
           (set.one_sided == 1 ? " displacement is one-sided ("
                               : " displacements are one-sided (") +
           first + (set.one_sided == 1 ? ")" : ", ...)");
}

sum_rules rules(const displaced_set& set, const derivatives& of,
                const Eigen::MatrixXd& values_by_coordinate, const Eigen::VectorXd& values,
                int decimals) {
    const rigid_motions motions(set.atoms);
    const double rounding = std::pow(rounding_error(decimals), 2);
    errors known;
    known.translation = variance_of_sums(motions.translation, of.weights) * rounding;
    known.rotation = variance_of_sums(motions.rotation, of.weights) * rounding;
    known.value = rounding;
    known.relative = relative_step_error(set.largest_step / flib::bohr_radius);
    return evaluate(motions, values, values_by_coordinate, known);
}

}  // namespace

sum_rules dipole_rules(const displaced_set& set, const derivatives& of,
                       std::span<const std::size_t> reversed) {
    sum_rules result;
    result.why_not = why_not(set, of);
    if (!result.why_not.empty()) return result;
    Eigen::MatrixXd dipole = view(of.dipole);
    Eigen::VectorXd value = vector(set.jobs.front().dipole);
    for (const std::size_t job : reversed) {
        const Eigen::Vector3d change = -2 * vector(set.jobs[job].dipole);
        dipole += view(of.weights).col(index(job)) * change.transpose();
        if (job == 0) value += change;
    }
    return rules(set, of, dipole, value, set.dipole_decimals);
}

sum_rules force_rules(const displaced_set& set, const derivatives& of) {
    sum_rules result;
    result.why_not = set.has_forces ? why_not(set, of) : "the files hold no forces";
    if (!result.why_not.empty()) return result;
    Eigen::VectorXd forces(index(3 * set.atoms.size()));
    for (std::size_t i = 0; i < set.atoms.size(); ++i) {
        forces.segment<3>(index(3 * i)) = vector(set.jobs.front().forces[i]);
    }
    return rules(set, of, view(of.forces), forces, set.force_decimals);
}

sum_rules rules_of(std::span<const atom> atoms, std::span<const double> values,
                   const table& derivatives, double uncertainty, double relative_uncertainty) {
    const rigid_motions motions(atoms);
    const double variance = uncertainty * uncertainty;
    errors known;
    known.translation = motions.translation.colwise().squaredNorm().transpose() * variance;
    known.rotation = motions.rotation.colwise().squaredNorm().transpose() * variance;
    known.relative = relative_uncertainty;
    const Eigen::Map<const Eigen::VectorXd> y(values.data(), index(values.size()));
    return evaluate(motions, y, view(derivatives), known);
}

}  // namespace sgn
