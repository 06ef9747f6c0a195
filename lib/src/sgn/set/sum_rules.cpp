#include "sgn/set/sum_rules.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include <Eigen/Geometry>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/set/decimals.h"
#include "sgn/set/detail/decompositions.h"
#include "sgn/set/detail/residue_errors.h"
#include "sgn/set/detail/rigid_motions.h"
#include "sgn/set/detail/shape.h"

namespace sgn {
namespace {

/// What is known of the errors, in variances.
struct errors {
    Eigen::Vector3d translation;  // of the sum for each axis, from the rounding
    Eigen::Vector3d rotation;
    double value = 0;        // of each of the values themselves
    Eigen::MatrixXd step{};  // of each derivative (no variance)
    /// By how much noise may make those from the rounding larger.
    double largest_factor = 1;
    double rounding = 0;      // of a value, au; what the factor is told by
    double part_of_step = 1;  // that is left of its errors in sums
};

/// Those of the sums: 3 rows for the axes along which all moves, 3 for those about which it turns.
struct sum_variances {
    Eigen::MatrixXd rounding;
    Eigen::MatrixXd step;
};

sum_variances variances_of(const rigid_motions& motions, const errors& known,
                           Eigen::Index components) {
    sum_variances result{Eigen::MatrixXd(6, components), Eigen::MatrixXd(6, components)};
    const Eigen::MatrixXd step = (known.part_of_step * known.step).cwiseAbs2();
    result.step << transposed_product(motions.translation.cwiseAbs2(), step),
        transposed_product(motions.rotation.cwiseAbs2(), step);
    for (Eigen::Index l = 0; l < 3; ++l) {
        result.rounding.row(l).setConstant(known.translation[l]);
        // The vectors themselves, which turn along, are uncertain too.
        const Eigen::Vector3d square = motions.axes.col(l).cwiseAbs2();
        const Eigen::Vector3d across{square[2] + square[1], square[2] + square[0],
                                     square[1] + square[0]};
        result.rounding.row(3 + l) =
            (across * known.value).transpose().replicate(1, components / 3).array() +
            known.rotation[l];
    }
    return result;
}

/// The noise that explains the sums of a single vector best, and how much larger the errors of the
/// steps are.
void explain(const rigid_motions& motions, const Eigen::MatrixXd& sums, const errors& known,
             sum_variances& of, sum_rules& result) {
    std::vector<residue_variance> variances;
    std::vector<double> residues;
    for (Eigen::Index l = 0; l < 6; ++l) {
        for (Eigen::Index k = 0; k < sums.cols(); ++k) {
            if (l >= 3 && !motions.turns(l - 3)) continue;
            residues.push_back(sums(l, k));
            variances.push_back({of.rounding(l, k), of.step(l, k)});
        }
    }
    const explanation by = residue_errors(variances, known.largest_factor).explain(residues);
    result.noise = known.rounding * std::sqrt(by.noise - 1);
    // What is left in these sums may be thought more than usual, so that less is found wrong.
    const double more = known.part_of_step / step_error_in_sums;
    for (residue_variance& each : variances) each.step /= more * more;
    result.step_scale =
        step_scale_of(variances, residues, {by.noise, by.step > 1 ? by.step * more * more : 1});
    of.rounding *= by.noise;
    of.step *= by.step;
}

sum_rules evaluate(const rigid_motions& motions, const Eigen::VectorXd& values,
                   const Eigen::MatrixXd& derivatives, const errors& known) {
    const Eigen::Index components = derivatives.cols();
    const motion_sums made(motions, derivatives, values);
    Eigen::MatrixXd sums(6, components);
    sums << made.translation, made.rotation;
    sum_variances variances = variances_of(motions, known, components);

    sum_rules result;
    result.judged = true;
    const bool explained = components == 3 || known.largest_factor > 1;
    if (explained && known.rounding > 0 && sums.allFinite())
        explain(motions, sums, known, variances, result);
    const Eigen::MatrixXd uncertainty = (variances.rounding + variances.step).cwiseSqrt();
    constexpr double too_large = std::numeric_limits<double>::infinity();
    for (Eigen::Index l = 0; l < 6; ++l) {
        if (l >= 3 && !motions.turns(l - 3)) continue;
        for (Eigen::Index k = 0; k < components; ++k) {
            const double value = std::abs(sums(l, k));
            double ratio = value == 0 ? 0 : value / uncertainty(l, k);
            // Absurd values, whose squares are too large: nothing is known, so nothing holds.
            if (!std::isfinite(uncertainty(l, k)) || !std::isfinite(ratio)) ratio = too_large;
            ++result.sums;
            result.chi2 += ratio * ratio;
            result.largest = std::max(result.largest, ratio);
            result.largest_residue = std::max(result.largest_residue, value);
        }
    }
    result.translation = table_of(made.translation);
    result.rotation = table_of(made.rotation);
    result.translation_uncertainty = table_of(uncertainty.topRows(3));
    result.rotation_uncertainty = table_of(uncertainty.bottomRows(3));
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

/// For each of the motions the variance of its sum, if that of all jobs' values, from which
/// derivatives are made with `weights`, is 1.
Eigen::Vector3d variance_of_sums(const Eigen::MatrixXd& motion, const table& weights) {
    return (motion.transpose() * view(weights)).rowwise().squaredNorm();
}

/// Of values with so many decimals, and with noise up to so much.
sum_rules rules(const displaced_set& set, const derivatives& of,
                const Eigen::MatrixXd& values_by_coordinate, const Eigen::VectorXd& values,
                const table& step, int decimals, double noise, double part_of_step = 1) {
    const rigid_motions motions(set.atoms);
    const double rounding = std::pow(rounding_error(decimals), 2);
    errors known;
    known.translation = variance_of_sums(motions.translation, of.weights) * rounding;
    known.rotation = variance_of_sums(motions.rotation, of.weights) * rounding;
    known.value = rounding;
    known.step = view(step);
    known.largest_factor = noise_factor(noise, decimals);
    known.rounding = rounding_error(decimals);
    known.part_of_step = part_of_step;
    return evaluate(motions, values, values_by_coordinate, known);
}

}  // namespace

double residue::ratio() const {
    const double of = std::abs(value) / uncertainty;
    return std::isnan(of) ? std::numeric_limits<double>::infinity() : of;
}

std::vector<residue> residues_of(const sum_rules& rules) {
    std::vector<residue> all;
    for (std::size_t l = 0; l < rules.translation.rows; ++l) {
        for (std::size_t k = 0; k < rules.translation.columns; ++k) {
            all.push_back(
                {false, l, k, rules.translation(l, k), rules.translation_uncertainty(l, k)});
            if (!(rules.rotation_uncertainty(l, k) > 0)) continue;
            all.push_back({true, l, k, rules.rotation(l, k), rules.rotation_uncertainty(l, k)});
        }
    }
    return all;
}

sum_rules dipole_rules(const displaced_set& set, const derivatives& of,
                       std::span<const std::size_t> reversed) {
    sum_rules result;
    result.why_not = why_not(set, of);
    if (!result.why_not.empty()) return result;
    require_shape(set, of);
    table values(set.jobs.size(), 3);
    for (std::size_t j = 0; j < values.rows; ++j) {
        const bool other_way = std::ranges::find(reversed, j) != reversed.end();
        for (std::size_t k = 0; k < 3; ++k) {
            values(j, k) = set.jobs[j].dipole[k] * (other_way ? -1 : 1);
        }
    }
    const moment_derivatives dipole = differentiate(of, values, set.dipole_decimals);
    const Eigen::VectorXd reference = view(values).row(0);
    return rules(set, of, view(dipole.values), reference, dipole.step, set.dipole_decimals,
                 largest_noise, step_error_in_sums);
}

sum_rules force_rules(const displaced_set& set, const derivatives& of) {
    sum_rules result;
    result.why_not = set.has_forces ? why_not(set, of) : "the files hold no forces";
    if (!result.why_not.empty()) return result;
    require_shape(set, of);
    Eigen::VectorXd forces(index(3 * set.atoms.size()));
    for (std::size_t i = 0; i < set.atoms.size(); ++i) {
        forces.segment<3>(index(3 * i)) = vector(set.jobs.front().forces[i]);
    }
    const auto with_noise = [&](double noise) {
        return rules(set, of, view(of.forces), forces, of.force_step, set.force_decimals, noise);
    };
    result = with_noise(0);
    if (result.satisfied) return result;
    const sum_rules noisy = with_noise(largest_force_noise);
    return noisy.satisfied ? noisy : result;
}

sum_rules rules_of(std::span<const atom> atoms, std::span<const double> values,
                   const table& derivatives, double uncertainty, double relative_uncertainty) {
    require_table("derivatives", derivatives, 3 * atoms.size(), values.size());
    const rigid_motions motions(atoms);
    const double variance = uncertainty * uncertainty;
    errors known;
    known.translation = motions.translation.colwise().squaredNorm().transpose() * variance;
    known.rotation = motions.rotation.colwise().squaredNorm().transpose() * variance;
    const Eigen::MatrixXd given = view(derivatives);
    known.step.resizeLike(given);
    for (Eigen::Index c = 0; c < known.step.rows(); ++c) {
        for (Eigen::Index k = 0; k < known.step.cols(); ++k) {
            known.step(c, k) = relative_uncertainty * largest_nearby(given, c, k);
        }
    }
    const Eigen::Map<const Eigen::VectorXd> y(values.data(), index(values.size()));
    return evaluate(motions, y, given, known);
}

namespace {

/// What converged less is as noisy in all moments: by up to so much of the noise of the dipole.
constexpr double moment_noise = 3;

/// In sums of magnetic dipoles, which change more along with the places of the atoms, errors of the
/// steps add up rather than cancel.
constexpr double moment_step = 2;

/// Of a vector that turns along: `read` gives that of each job, with so many decimals; `lever` are
/// errors from the size of the steps beside its own, or nothing.
template <class Read>
sum_rules rules_of_moment(const displaced_set& set, const derivatives& of, double part_of_step,
                          Read read, int decimals, const table& lever = {}) {
    sum_rules result;
    result.why_not =
        set.has_moments ? why_not(set, of) : "the files hold no other moments than the dipole";
    if (!result.why_not.empty()) return result;
    require_shape(set, of);
    table values(set.jobs.size(), 3);
    for (std::size_t j = 0; j < values.rows; ++j) {
        const Eigen::Vector3d moment = read(set.jobs[j]);
        for (std::size_t k = 0; k < 3; ++k) values(j, k) = moment[index(k)];
    }
    moment_derivatives made = differentiate(of, values, decimals);
    for (std::size_t i = 0; i < lever.values.size(); ++i) {
        made.step.values[i] = std::hypot(made.step.values[i], lever.values[i]);
    }
    return rules(set, of, view(made.values), read(set.jobs.front()), made.step, decimals,
                 moment_noise * dipole_rules(set, of).noise, part_of_step);
}

/// That of the atoms, where a job has them (Bohr).
Eigen::Vector3d centroid_of(const displaced_set& set, const displaced_job& of) {
    Eigen::Vector3d total = Eigen::Vector3d::Zero();
    for (std::size_t i = 0; i < set.atoms.size(); ++i) {
        total += vector(set.atoms[i].x) + vector(of.moved.shift[i]);
    }
    return total / (flib::bohr_radius * static_cast<double>(set.atoms.size()));
}

sum_rules velocity_rules(const displaced_set& set, const derivatives& of, double part_of_step) {
    return rules_of_moment(
        set, of, part_of_step,
        [](const displaced_job& job) { return vector(job.moments->velocity_dipole); },
        set.moment_decimals[0]);
}

sum_rules magnetic_rules(const displaced_set& set, const derivatives& of, double part_of_step) {
    const auto about_centroid = [&](const displaced_job& job) -> Eigen::Vector3d {
        const Eigen::Vector3d velocity = vector(job.moments->velocity_dipole);
        return vector(job.moments->magnetic_dipole) - centroid_of(set, job).cross(velocity);
    };
    // Far from the origin the digits of the velocity dipole are those that lack.
    const double far =
        set.has_moments ? std::max(1.0, centroid_of(set, set.jobs.front()).norm()) : 1;
    const int lost = static_cast<int>(std::ceil(std::log10(far)));
    // Magnetic dipoles are velocities with the lever of the atoms' places: what those are off by
    // goes into them even where their own derivatives vanish.
    table lever = of.velocity_dipole.step;
    const Eigen::Matrix3Xd x = centred(set.atoms, Eigen::VectorXd::Ones(index(set.atoms.size())));
    const double size = x.colwise().norm().maxCoeff();
    for (double& each : lever.values) each *= size;
    return rules_of_moment(set, of, part_of_step, about_centroid,
                           std::clamp(set.moment_decimals[0] - lost, 0, set.moment_decimals[1]),
                           lever);
}

/// `noise` is that of the values, which have so many decimals (standard deviations, au).
void add_noise(moment_derivatives& of, double noise, int decimals, double step_scale) {
    const double factor = noise / rounding_error(decimals);
    of.step_scale = step_scale;
    of.noise.clear();
    for (const double rounding : of.rounding) of.noise.push_back(rounding * factor);
    of.uncertainty = of.step;
    for (std::size_t c = 0; c < of.step.rows; ++c) {
        for (std::size_t k = 0; k < of.step.columns; ++k) {
            of.uncertainty(c, k) =
                std::hypot(of.rounding[c], of.noise[c], step_scale * of.step(c, k));
        }
    }
}

}  // namespace

sum_rules velocity_rules(const displaced_set& set, const derivatives& of) {
    return velocity_rules(set, of, moment_step);
}

sum_rules magnetic_rules(const displaced_set& set, const derivatives& of) {
    return magnetic_rules(set, of, moment_step);
}

void add_noise(derivatives& of, const displaced_set& set, bool sum_rules) {
    if (!set.has_moments || !of.complete()) return;
    // Large errors of the steps would hide the noise: nothing is judged here.
    const auto velocity =
        sum_rules ? velocity_rules(set, of, step_error_in_sums) : sgn::sum_rules{};
    const auto magnetic =
        sum_rules ? magnetic_rules(set, of, step_error_in_sums) : sgn::sum_rules{};
    const double noise =
        std::hypot(magnetic.noise, centroid_of(set, set.jobs.front()).norm() * velocity.noise);
    const auto& decimals = set.moment_decimals;
    add_noise(of.velocity_dipole, velocity.noise, decimals[0], velocity.step_scale);
    // The levers in the sums of the magnetic dipole make errors of its steps look small.
    const double step_scale = std::max(velocity.step_scale, magnetic.step_scale);
    add_noise(of.magnetic_dipole, noise, decimals[1], step_scale);
    // The noise of xx = 2 x d/dx is larger than that of xy = x d/dy + y d/dx.
    add_noise(of.velocity_quadrupole, std::numbers::sqrt2 * noise, decimals[2], step_scale);
}

}  // namespace sgn
