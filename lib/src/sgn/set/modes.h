// Harmonic normal modes, and what they do to the dipole.
#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <vector>

#include "sgn/set/displaced_set.h"
#include "sgn/set/table.h"

namespace sgn {

/// One u in electron masses, and one Hartree in 1/cm (CODATA 2018).
inline constexpr double electron_masses_per_u = 1822.888486;
inline constexpr double wavenumber_per_hartree = 219474.6313632;

struct normal_mode {
    double wavenumber = 0;    ///< 1/cm; negative if imaginary
    double reduced_mass = 0;  ///< u
    /// Of every atom, Cartesian, of length 1 over all atoms; the largest component is positive.
    std::vector<vec3> displacement;
    vec3 dipole_derivative{};  ///< by the mass-weighted coordinate, au (electron masses)
    /// By the dimensionless coordinate, au; NaN for an imaginary wavenumber.
    vec3 dipole_derivative_q{};
    /// Square of that against the square of the dipole itself; NaN where one of them has none.
    double borrowed = std::numeric_limits<double>::quiet_NaN();
};

// Tables of another shape than is told here throw flib::run_error.

/// Minus the symmetrised derivatives of the forces (3N x 3N, Hartree/Bohr^2).
table force_constants(const table& force_derivatives);

/// The largest difference between two derivatives that should be equal (Hartree/Bohr^2).
double largest_asymmetry(const table& force_derivatives);

/// The modes in order of their wavenumbers; translations and rotations, five or six, projected out.
/// All masses must be positive. `force_constants` is 3N x 3N for N atoms, `dipole_derivatives`
/// 3N x 3.
std::vector<normal_mode> normal_modes(std::span<const atom> atoms, const table& force_constants,
                                      const table& dipole_derivatives, const vec3& dipole);

/// The derivatives of any numbers by the mass-weighted coordinate of a mode, au (electron masses);
/// `derivatives` are those by all coordinates, 3N rows, au by Bohr.
std::vector<double> by_mode(const normal_mode& mode, const table& derivatives);

/// How many times as large the derivatives by the dimensionless coordinate are; NaN for an
/// imaginary wavenumber.
double dimensionless_factor(const normal_mode& mode);

}  // namespace sgn
