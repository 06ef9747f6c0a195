#include "sgn/set/derivatives.h"

#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "flib/io/stop_run.h"
#include "sgn/set/decimals.h"
#include "sgn/set/detail/linear_algebra.h"

namespace sgn {
namespace {

/// A displacement, and what its jobs contribute: the equation sum of part x value = J d.
struct equation {
    const displaced_job* plus;
    const displaced_job* minus;  // null if one-sided
    std::size_t plus_at;
    std::size_t minus_at;
};

std::vector<equation> equations_of(const displaced_set& set) {
    std::vector<equation> equations;
    for (std::size_t i = 1; i < set.jobs.size(); ++i) {
        const displaced_job& each = set.jobs[i];
        if (each.is == role::one_sided) equations.push_back({&each, nullptr, i, 0});
        if (each.is == role::paired && each.other > i) {
            equations.push_back({&each, &set.jobs[each.other], i, each.other});
        }
    }
    return equations;
}

/// The displacements, a row each (Bohr).
Eigen::MatrixXd displacements_of(const std::vector<equation>& equations, std::size_t atoms) {
    Eigen::MatrixXd d(index(equations.size()), index(3 * atoms));
    for (std::size_t e = 0; e < equations.size(); ++e) {
        const equation& of = equations[e];
        for (std::size_t i = 0; i < atoms; ++i) {
            const vec3 shift =
                of.minus
                    ? scaled(0.5, difference(of.plus->moved.shift[i], of.minus->moved.shift[i]))
                    : of.plus->moved.shift[i];
            d.block<1, 3>(index(e), index(3 * i)) = vector(shift).transpose() / flib::bohr_radius;
        }
    }
    return d;
}

/// What every job has to say to every equation.
Eigen::MatrixXd parts_of(const std::vector<equation>& equations, std::size_t jobs) {
    Eigen::MatrixXd parts = Eigen::MatrixXd::Zero(index(equations.size()), index(jobs));
    for (std::size_t e = 0; e < equations.size(); ++e) {
        const equation& of = equations[e];
        parts(index(e), index(of.plus_at)) = of.minus ? 0.5 : 1;
        parts(index(e), index(of.minus_at)) = of.minus ? -0.5 : -1;
    }
    return parts;
}

/// The coordinates with a part in the space that the displacements leave open.
std::vector<coordinate> missing_coordinates(
    const Eigen::CompleteOrthogonalDecomposition<Eigen::MatrixXd>& solver) {
    const Eigen::MatrixXd z = solver.matrixZ();
    const Eigen::MatrixXd spanned =
        (z.topRows(solver.rank()) * solver.colsPermutation().transpose()).transpose();
    constexpr double some = 1e-3;
    std::vector<coordinate> missing;
    for (Eigen::Index c = 0; c < spanned.rows(); ++c) {
        if (1 - spanned.row(c).squaredNorm() < some) continue;
        missing.push_back({static_cast<std::size_t>(c) / 3, static_cast<std::size_t>(c) % 3});
    }
    return missing;
}

}  // namespace

derivatives differentiate(const displaced_set& set) {
    const std::size_t atoms = set.atoms.size();
    const std::vector<equation> equations = equations_of(set);
    Eigen::CompleteOrthogonalDecomposition<Eigen::MatrixXd> solver;
    // Coordinates have six decimals: what is a thousandth of a step has no direction.
    solver.setThreshold(1e-3);
    solver.compute(displacements_of(equations, atoms));
    derivatives result;
    result.open_directions = 3 * atoms - static_cast<std::size_t>(solver.rank());
    if (result.open_directions > 0) {
        result.missing = missing_coordinates(solver);
        return result;
    }
    const Eigen::MatrixXd weights = solver.solve(parts_of(equations, set.jobs.size()));
    result.weights = table_of(weights);

    const bool forces = set.has_forces;
    Eigen::MatrixXd values(index(set.jobs.size()), index(forces ? 3 + 3 * atoms : 3));
    for (std::size_t j = 0; j < set.jobs.size(); ++j) {
        values.block<1, 3>(index(j), 0) = vector(set.jobs[j].dipole).transpose();
        for (std::size_t i = 0; forces && i < atoms; ++i) {
            values.block<1, 3>(index(j), index(3 + 3 * i)) =
                vector(set.jobs[j].forces[i]).transpose();
        }
    }
    const Eigen::MatrixXd all = weights * values;
    const Eigen::VectorXd spread = weights.rowwise().norm();
    const double step = relative_step_error(set.largest_step / flib::bohr_radius);
    const auto uncertainty = [&](int decimals) {
        const Eigen::VectorXd of = spread * rounding_error(decimals);
        return std::vector<double>(of.data(), of.data() + of.size());
    };
    result.dipole = table_of(all.leftCols(3));
    result.dipole_uncertainty = uncertainty(set.dipole_decimals);
    result.dipole_step_error = step * all.leftCols(3).cwiseAbs().maxCoeff();
    if (forces) {
        result.forces = table_of(all.rightCols(index(3 * atoms)));
        result.force_uncertainty = uncertainty(set.force_decimals);
        result.force_step_error = step * all.rightCols(index(3 * atoms)).cwiseAbs().maxCoeff();
    }
    return result;
}

std::string text_of(const std::vector<coordinate>& coordinates, const std::vector<atom>& atoms) {
    constexpr std::size_t most = 12;
    std::string text;
    for (std::size_t i = 0; i < coordinates.size(); ++i) {
        if (i == most) {
            return text + " and " + std::to_string(coordinates.size() - most) + " more";
        }
        const auto [atom, axis] = coordinates[i];
        if (i == 0 || coordinates[i - 1].atom != atom) {
            text += (i == 0 ? "" : "; ") + std::to_string(atom + 1) + " " +
                    flib::printable(atoms[atom].symbol) + " ";
        } else {
            text += ", ";
        }
        text += axis_names[axis];
    }
    return text;
}

double relative_step_error(double h) {
    // The third derivatives: as measured on small molecules, where sums over all atoms were off by
    // up to 6 times the square of the step times the largest derivative.
    const double third = 3 * h * h;
    // Half the difference of two coordinates with six decimals.
    const double of_step = rounding_error(6) / flib::bohr_radius / std::numbers::sqrt2 / h;
    return std::hypot(third, of_step);
}

}  // namespace sgn
