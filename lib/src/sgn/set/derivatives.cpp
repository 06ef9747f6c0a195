#include "sgn/set/derivatives.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

#include "flib/io/stop_run.h"
#include "sgn/set/decimals.h"
#include "sgn/set/detail/decompositions.h"
#include "sgn/set/detail/direction.h"
#include "sgn/set/detail/linear_algebra.h"
#include "sgn/set/detail/shape.h"
#include "sgn/set/input_numbers.h"

namespace sgn {
namespace {

/// A displacement d, and what its jobs contribute: the equation sum of part x value = J d.
struct equation {
    direction along;
    Eigen::RowVectorXd parts;  // of every job
    /// What the smallest step alone would contribute: differs where there are several.
    Eigen::RowVectorXd of_smallest{};
    bool paired = false;
    double longest = 0;         // step, Bohr
    bool extrapolated = false;  // of_smallest differs
};

direction displacement_between(const displaced_set& set, std::size_t plus, std::size_t minus) {
    std::vector<vec3> shift = set.jobs[plus].moved.shift;
    for (std::size_t i = 0; minus != 0 && i < shift.size(); ++i) {
        shift[i] = scaled(0.5, difference(shift[i], set.jobs[minus].moved.shift[i]));
    }
    return direction(shift);
}

/// One for each pair and for each displacement without partner.
std::vector<equation> single_equations(const displaced_set& set) {
    std::vector<equation> equations;
    for (std::size_t i = 1; i < set.jobs.size(); ++i) {
        const displaced_job& each = set.jobs[i];
        const bool paired = each.is == role::paired;
        if (!(paired && each.other > i) && each.is != role::one_sided) continue;
        const std::size_t minus = paired ? each.other : 0;
        equation made{displacement_between(set, i, minus),
                      Eigen::RowVectorXd::Zero(index(set.jobs.size()))};
        made.parts[index(i)] = paired ? 0.5 : 1;
        made.parts[index(minus)] = paired ? -0.5 : -1;
        made.of_smallest = made.parts;
        made.paired = paired;
        made.longest = each.moved.distance / flib::bohr_radius;
        equations.push_back(std::move(made));
    }
    return equations;
}

/// Whether two pairs go along one direction.
bool are_collinear(const equation& a, const equation& b) {
    return a.paired && b.paired && a.along.is_along(b.along);
}

/// Steps less apart than this are repetitions of one step.
constexpr double distinct_steps = 1.2;

/// Pairs along one direction, made one equation for a vanishing step.
equation extrapolated(std::vector<equation> pairs) {
    std::sort(pairs.begin(), pairs.end(),
              [](const equation& a, const equation& b) { return a.along.length < b.along.length; });
    const equation& smallest = pairs.front();
    const double unit = smallest.along.length;
    Eigen::Index terms = 0;
    double counted = 0;
    for (const equation& each : pairs) {
        if (each.along.length < distinct_steps * counted) continue;
        counted = each.along.length;
        ++terms;
    }
    terms = std::min<Eigen::Index>(terms, 3);
    // Derivatives along the direction, the rounding of which goes with 1 / step.
    Eigen::MatrixXd powers(index(pairs.size()), terms);
    Eigen::MatrixXd slopes(index(pairs.size()), smallest.parts.size());
    for (Eigen::Index p = 0; p < powers.rows(); ++p) {
        const equation& each = pairs[static_cast<std::size_t>(p)];
        const double step = each.along.length / unit;
        for (Eigen::Index t = 0; t < terms; ++t) powers(p, t) = step * std::pow(step, 2 * t);
        slopes.row(p) = each.parts * (each.along.d.dot(smallest.along.d) > 0 ? 1 : -1);
    }
    equation result = smallest;
    const Eigen::MatrixXd fitted = orthogonal_decomposition(powers, 1e-9).solve(slopes);
    result.parts = fitted.row(0);
    result.extrapolated = terms > 1;
    for (const equation& each : pairs) result.longest = std::max(result.longest, each.longest);
    return result;
}

std::vector<equation> equations_of(const displaced_set& set) {
    std::vector<std::vector<equation>> directions;
    for (equation& each : single_equations(set)) {
        const auto along = std::ranges::find_if(
            directions, [&](const auto& others) { return are_collinear(others.front(), each); });
        if (along == directions.end()) {
            directions.push_back({std::move(each)});
        } else {
            along->push_back(std::move(each));
        }
    }
    std::vector<equation> equations;
    equations.reserve(directions.size());
    for (std::vector<equation>& pairs : directions) {
        equations.push_back(pairs.size() > 1 ? extrapolated(std::move(pairs))
                                             : std::move(pairs.front()));
    }
    return equations;
}

/// The coordinates with a part in the space that the displacements leave open.
std::vector<coordinate> missing_coordinates(const Eigen::MatrixXd& spanned) {
    constexpr double some = 1e-3;
    std::vector<coordinate> missing;
    for (Eigen::Index c = 0; c < spanned.rows(); ++c) {
        if (1 - spanned.row(c).squaredNorm() < some) continue;
        missing.push_back({static_cast<std::size_t>(c) / 3, static_cast<std::size_t>(c) % 3});
    }
    return missing;
}

/// Errors of the steps. A difference of two sides is off by so much of its derivative, times the
/// square of the step (Bohr), and in the same way by what is near it: third derivatives have the
/// symmetry of first ones, and are small where those are, but for chance.
constexpr double third_derivatives = 1.4;
constexpr double part_of_nearby = 0.3;

/// A difference of one side, times the step, as a part of the largest derivative by the displaced
/// atom: second derivatives have another symmetry.
constexpr double second_derivatives = 1.3;

/// An extrapolation, times the square of the longest step, as a part of what the smallest alone is
/// off by.
constexpr double fifth_derivatives = 2.5;

/// The standard deviation of a coordinate printed in Angstrom, Bohr.
double rounding_of_place(int decimals) {
    return rounding_error(decimals) / flib::bohr_radius;
}

/// What the left side of an equation is off by, squared: per unit of the squares of the derivatives
/// by each coordinate, and of the largest ones by each atom.
struct step_squares {
    Eigen::RowVectorXd by_coordinate;
    Eigen::RowVectorXd by_atom;
};

step_squares squares_of(const equation& of, int coordinate_decimals) {
    // A coordinate that does not move is rounded alike everywhere.
    constexpr double moves = 1e-6;
    const double rounding =
        std::pow(rounding_of_place(coordinate_decimals), 2) * of.parts.squaredNorm();
    const Eigen::Index coordinates = of.along.d.size();
    step_squares squares{(of.along.d.array().abs() > moves).cast<double>() * rounding,
                         Eigen::RowVectorXd::Zero(coordinates / 3)};
    for (Eigen::Index a = 0; a < squares.by_atom.size(); ++a) {
        const Eigen::RowVector3d d = of.along.d.segment<3>(3 * a);
        const double square = d.squaredNorm();
        if (!of.paired) {
            squares.by_atom[a] = std::pow(second_derivatives * square, 2);
        } else if (!of.extrapolated) {
            const double error = std::pow(third_derivatives * square, 2);
            squares.by_coordinate.segment<3>(3 * a) += error * d.cwiseAbs2();
            squares.by_atom[a] = error * square * part_of_nearby * part_of_nearby;
        }
    }
    return squares;
}

/// Takes from the equations what is known of the errors of their steps.
void see_steps(derivatives& result, const displaced_set& set,
               const std::vector<equation>& equations, const Eigen::MatrixXd& solution) {
    const Eigen::MatrixXd through = solution.cwiseAbs2();
    Eigen::MatrixXd by_coordinate(index(equations.size()), index(3 * set.atoms.size()));
    Eigen::MatrixXd by_atom(index(equations.size()), index(set.atoms.size()));
    std::vector<Eigen::Index> several;
    for (std::size_t e = 0; e < equations.size(); ++e) {
        const step_squares squares = squares_of(equations[e], set.coordinate_decimals);
        by_coordinate.row(index(e)) = squares.by_coordinate;
        by_atom.row(index(e)) = squares.by_atom;
        if (equations[e].extrapolated) several.push_back(index(e));
    }
    result.step_squares = table_of(product(through, by_coordinate));
    result.atom_step_squares = table_of(product(through, by_atom));
    Eigen::MatrixXd measured(index(several.size()), index(set.jobs.size()));
    Eigen::MatrixXd measured_squares(through.rows(), measured.rows());
    for (Eigen::Index s = 0; s < measured.rows(); ++s) {
        const auto e = several[static_cast<std::size_t>(s)];
        const equation& each = equations[static_cast<std::size_t>(e)];
        measured.row(s) =
            fifth_derivatives * each.longest * each.longest * (each.of_smallest - each.parts);
        measured_squares.col(s) = through.col(e);
    }
    result.measured_steps = table_of(measured);
    result.measured_squares = table_of(measured_squares);
}

/// The largest magnitudes among each three numbers of a column or row.
Eigen::MatrixXd largest_of_three(const Eigen::Ref<const Eigen::MatrixXd>& of, bool rows) {
    const Eigen::MatrixXd all = rows ? Eigen::MatrixXd(of.transpose()) : Eigen::MatrixXd(of);
    Eigen::MatrixXd result(all.rows(), all.cols() / 3);
    for (Eigen::Index k = 0; k < result.cols(); ++k) {
        result.col(k) = all.middleCols(3 * k, 3).cwiseAbs().rowwise().maxCoeff();
    }
    return rows ? Eigen::MatrixXd(result.transpose()) : result;
}

/// What is differentiated. A bond that is stretched makes forces whose third derivatives are large
/// beside where first ones are, too.
enum class quantity { moment, forces };

/// The errors of the steps of `values`, rows of all jobs, whose derivatives are `all`.
Eigen::MatrixXd step_errors(const derivatives& by, const Eigen::Ref<const Eigen::MatrixXd>& values,
                            const Eigen::MatrixXd& all, quantity of) {
    const Eigen::MatrixXd nearby = largest_of_three(largest_of_three(all, true), false);
    Eigen::MatrixXd own = all;
    if (of == quantity::forces) {
        for (Eigen::Index c = 0; c < own.rows(); ++c) {
            for (Eigen::Index k = 0; k < own.cols(); ++k) own(c, k) = nearby(c / 3, k / 3);
        }
    }
    // The same for three components.
    Eigen::MatrixXd shared = product(view(by.atom_step_squares), nearby.cwiseAbs2());
    if (by.measured_steps.rows > 0) {
        const Eigen::MatrixXd change =
            largest_of_three(product(view(by.measured_steps), values), false);
        shared += product(view(by.measured_squares), change.cwiseAbs2());
    }
    Eigen::MatrixXd squares = product(view(by.step_squares), own.cwiseAbs2());
    for (Eigen::Index k = 0; k < all.cols(); ++k) squares.col(k) += shared.col(k / 3);
    return squares.cwiseSqrt();
}

/// What `read` gives of every job, a row each.
template <class Read>
table rows_of(const displaced_set& set, std::size_t columns, Read read) {
    table rows(set.jobs.size(), columns);
    for (std::size_t j = 0; j < set.jobs.size(); ++j) {
        const auto& numbers = read(set.jobs[j]);
        for (std::size_t k = 0; k < columns; ++k) rows(j, k) = numbers[k];
    }
    return rows;
}

moment_derivatives derivatives_of(quantity what, const derivatives& by, const table& values,
                                  int decimals) {
    const Eigen::MatrixXd all = product(view(by.weights), view(values));
    const Eigen::VectorXd error = view(by.weights).rowwise().norm() * rounding_error(decimals);
    return {table_of(all),
            {error.begin(), error.end()},
            table_of(step_errors(by, view(values), all, what))};
}

double largest(const table& of) {
    return of.values.empty() ? 0 : *std::ranges::max_element(of.values);
}

}  // namespace

derivatives differentiate(const displaced_set& set) {
    require_shape(set);
    const std::size_t atoms = set.atoms.size();
    const std::vector<equation> equations = equations_of(set);
    Eigen::MatrixXd displacements(index(equations.size()), index(3 * atoms));
    for (std::size_t e = 0; e < equations.size(); ++e) {
        displacements.row(index(e)) = equations[e].along.d;
    }
    // Coordinates have six decimals: what is a thousandth of a step has no direction.
    const orthogonal_decomposition solver(displacements, 1e-3);
    derivatives result;
    result.open_directions = 3 * atoms - static_cast<std::size_t>(solver.rank());
    if (result.open_directions > 0) {
        result.missing = missing_coordinates(solver.spanned());
        return result;
    }
    Eigen::MatrixXd parts(index(equations.size()), index(set.jobs.size()));
    for (std::size_t e = 0; e < equations.size(); ++e) {
        parts.row(index(e)) = equations[e].parts;
    }
    const Eigen::MatrixXd solution =
        solver.solve(Eigen::MatrixXd::Identity(index(equations.size()), index(equations.size())));
    result.weights = table_of(product(solution, parts));
    see_steps(result, set, equations, solution);

    moment_derivatives dipole =
        differentiate(result, rows_of(set, 3, [](const displaced_job& of) { return of.dipole; }),
                      set.dipole_decimals);
    result.dipole = std::move(dipole.values);
    result.dipole_rounding = std::move(dipole.rounding);
    result.dipole_step = std::move(dipole.step);
    result.dipole_step_error = largest(result.dipole_step);
    if (set.has_forces) {
        const auto components = [&](const displaced_job& of) {
            std::vector<double> all;
            for (const vec3& force : of.forces) all.insert(all.end(), force.begin(), force.end());
            return all;
        };
        moment_derivatives forces = derivatives_of(
            quantity::forces, result, rows_of(set, 3 * atoms, components), set.force_decimals);
        result.forces = std::move(forces.values);
        result.force_rounding = std::move(forces.rounding);
        result.force_step = std::move(forces.step);
        result.force_step_error = largest(result.force_step);
    }
    if (set.has_moments) {
        result.velocity_dipole = differentiate(
            result,
            rows_of(set, 3, [](const displaced_job& of) { return of.moments->velocity_dipole; }),
            set.moment_decimals[0]);
        result.magnetic_dipole = differentiate(
            result,
            rows_of(set, 3, [](const displaced_job& of) { return of.moments->magnetic_dipole; }),
            set.moment_decimals[1]);
        result.velocity_quadrupole = differentiate(
            result,
            rows_of(set, 6,
                    [](const displaced_job& of) { return of.moments->velocity_quadrupole; }),
            set.moment_decimals[2]);
    }
    return result;
}

moment_derivatives differentiate(const derivatives& by, const table& values, int decimals) {
    if (values.rows != by.weights.columns || values.columns % 3 != 0) {
        throw flib::run_error("numbers of " + std::to_string(values.rows) + " jobs in columns of " +
                              std::to_string(values.columns) +
                              " cannot be differentiated: there are " +
                              std::to_string(by.weights.columns) + " jobs");
    }
    return derivatives_of(quantity::moment, by, values, decimals);
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
            text += (i == 0 ? "" : "; ") + name_of(atoms[atom], atom) + " ";
        } else {
            text += ", ";
        }
        text += axis_names[axis];
    }
    return text;
}

double relative_step_error(double h, int coordinate_decimals) {
    return std::hypot(third_derivatives * h * h,
                      rounding_of_place(coordinate_decimals) / std::numbers::sqrt2 / h);
}

}  // namespace sgn
