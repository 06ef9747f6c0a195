// Derivatives of the dipole and the forces with respect to all coordinates.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "sgn/set/displaced_set.h"
#include "sgn/set/table.h"

namespace sgn {

/// A coordinate that the displacements leave open.
struct coordinate {
    std::size_t atom = 0;  ///< from 0
    std::size_t axis = 0;  ///< 0, 1, 2 for x, y, z
};

/// Of one of the moments. Uncertainties are standard deviations, au by Bohr.
struct moment_derivatives {
    table values;                  ///< 3N x 3, or 3N x 6 of a quadrupole
    std::vector<double> rounding;  ///< 3N: from the digits, the same for all components
    table step;                    ///< 3N x components: from the size of the displacements
    std::vector<double> noise{};   ///< 3N: from noise, once add_noise() has seen the sums
    double step_scale = 1;         ///< what errors of the steps are as a part of `step`, likewise
    table uncertainty{};           ///< 3N x components: all of them together, from then on
};

/// Coordinates are in the order 1x 1y 1z 2x ...: 3N for N atoms. All in atomic units, per Bohr.
struct derivatives {
    std::vector<coordinate> missing;  ///< not spanned; if there are any, the rest is empty
    std::size_t open_directions = 0;  ///< of 3N, how many are not spanned

    table dipole;                         ///< 3N x 3: coordinate, component
    std::vector<double> dipole_rounding;  ///< 3N: from the rounding, the same for all components
    table dipole_step;                    ///< 3N x 3: from the size of the displacements
    double dipole_step_error = 0;         ///< the largest of these

    table forces;  ///< 3N x 3N: coordinate, component of the forces; empty without forces
    std::vector<double> force_rounding;  ///< 3N
    table force_step;                    ///< 3N x 3N
    double force_step_error = 0;

    /// Of the other moments; empty where the jobs do not tell them.
    moment_derivatives velocity_dipole;
    moment_derivatives magnetic_dipole;
    moment_derivatives velocity_quadrupole;

    /// 3N x jobs: the derivatives are these times the values of the jobs, which is how errors of
    /// single jobs go on.
    table weights;
    // What is known of errors from the size of the steps, in squares.
    /// 3N x 3N: of a coordinate's derivative, times the squares of those by all coordinates.
    table step_squares;
    /// 3N x N: the same, times the square of the largest derivative by an atom.
    table atom_step_squares;
    /// Directions with several steps x jobs: times the values of the jobs, how much the smallest
    /// step alone is off by along the direction (au), and how much of this is thought to be left.
    table measured_steps;
    table measured_squares;  ///< 3N x directions: of a derivative, times the square of that

    bool complete() const { return missing.empty(); }
};

/// The least-squares derivatives: a pair of displacements +d and -d gives (y(+) - y(-)) / 2 = J d,
/// a displacement without partner y - y(0) = J d. Pairs along one direction with several steps s
/// give one equation, their (y(+) - y(-)) / 2s as a polynomial in the square of s at s = 0: of as
/// many terms as there are steps, at most three. What the smallest step alone is off by is then
/// measured, and the error that is left estimated from it; with one step it is estimated from the
/// derivatives nearby. Throws flib::run_error for a set whose jobs do not have a shift and a force
/// of every atom.
derivatives differentiate(const displaced_set& set);

/// The derivatives of any numbers: `values` has a row for each job of the set that `by` was made
/// of, and a multiple of three columns, moments that are rounded to so many decimals.
moment_derivatives differentiate(const derivatives& by, const table& values, int decimals);

/// "1 O x, y, z; 2 H y", and how many more if the list is long.
std::string text_of(const std::vector<coordinate>& coordinates, const std::vector<atom>& atoms);

/// What a central difference with a step of `h` Bohr, read from coordinates of so many decimals
/// (Angstrom), is off by, as a part of the largest derivative nearby: the third derivatives, and
/// the rounding of h. A standard deviation.
double relative_step_error(double h, int coordinate_decimals = 6);

/// The derivatives of a moment that only checkpoints tell, and its name for other programs.
struct named_derivatives {
    std::string_view name;
    const moment_derivatives* derivatives;
};

/// "velocity_dipole", "magnetic_dipole" and "velocity_quadrupole", as they are in `of`.
inline std::array<named_derivatives, 3> other_derivatives(const derivatives& of) {
    return {named_derivatives{"velocity_dipole", &of.velocity_dipole},
            {"magnetic_dipole", &of.magnetic_dipole},
            {"velocity_quadrupole", &of.velocity_quadrupole}};
}

}  // namespace sgn
