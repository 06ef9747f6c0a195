// What must vanish when a molecule is moved or turned as a whole: a test of all signs at once.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/table.h"

namespace sgn {

/// The mean square of the residues of the dipole in units of their uncertainties beyond which its
/// sums fail. Of right sets one in a hundred is beyond 3.3.
inline constexpr double largest_mean_square = 4;

/// Values that are more uncertain than their digits tell, by up to so much (standard deviation,
/// au): jobs that converged less. More would be seen in the four decimals of a log.
inline constexpr double largest_noise = 2e-5;

/// The same of forces, Hartree/Bohr.
inline constexpr double largest_force_noise = 1e-5;

/// In sums the errors of the steps cancel in part: what was measured was never more than this part
/// of what they would be if they did not.
inline constexpr double step_error_in_sums = 0.5;

/// The error of the steps is taken to be larger than estimated, by up to so much, where the sums
/// see it.
inline constexpr double largest_step_scale = 5;

/// The same for a single residue of the forces, which are too many for their mean to show one.
inline constexpr double largest_force_residue = 8;

/// A single residue beyond so many of its uncertainties is more than rounding explains. By itself
/// that is no doubt: uncertainties of the step are estimates.
inline constexpr double unremarkable_residue = 4;

/// The sums over all atoms, of a vector y (the dipole, or the force on each atom):
///
///     translation along j:  sum_A dy_k / dx_Aj
///     rotation about l:     sum_A [e_l x (X_A - X_0)] . grad_A y_k  -  (e_l x y)_k
///
/// X_0 is the centroid. Of a linear molecule the rotations about its axis are left out: the axes
/// e_l are those of the frame less their part along the molecule.
struct sum_rules {
    bool judged = false;
    std::string why_not;  ///< if not judged

    table translation;              ///< 3 x components: axis j, component k (au, per Bohr)
    table rotation;                 ///< 3 x components: axis l, component k (au, per radian)
    table translation_uncertainty;  ///< of each, from rounding, noise and step
    table rotation_uncertainty;
    double noise = 0;  ///< beyond the rounding, of every value (standard deviation, au)
    /// What the errors of the steps of the derivatives are as a part of those estimated from the
    /// derivatives nearby: more than 1 or less, if the sums tell.
    double step_scale = 1;

    std::size_t sums = 0;        ///< how many there are: 18 for the dipole of a molecule off a line
    double chi2 = 0;             ///< sum over all of (residue / uncertainty)^2
    double largest = 0;          ///< largest |residue| / uncertainty
    double largest_residue = 0;  ///< largest |residue|, au
    bool satisfied = false;
};

/// One of the sums.
struct residue {
    bool turning = false;  ///< the molecule turns about the axis; else it moves along it
    std::size_t axis = 0;
    std::size_t component = 0;
    double value = 0;  ///< au, per Bohr or radian
    double uncertainty = 0;

    /// |value| / uncertainty; infinite where that is no number.
    double ratio() const;
};

/// All sums of rules that are judged, axis by axis and for each its components; that of moving
/// before that of turning, which is left out about the axis of a linear molecule.
std::vector<residue> residues_of(const sum_rules& rules);

/// The sum rules of the dipole. Not judged if coordinates are missing or displacements one-sided.
/// The signs of the jobs `reversed` (places in displaced_set::jobs) are taken the other way round.
sum_rules dipole_rules(const displaced_set& set, const derivatives& of,
                       std::span<const std::size_t> reversed = {});

/// The sum rules of the forces, component 3 A + k being that along k on atom A. Not judged without
/// forces either.
sum_rules force_rules(const displaced_set& set, const derivatives& of);

/// The sum rules for derivatives made elsewhere, of `values` (3 or 3N) with `derivatives` (3N x as
/// many). Of each derivative is known that it is off by `uncertainty` and by
/// `relative_uncertainty` times the largest one nearby.
sum_rules rules_of(std::span<const atom> atoms, std::span<const double> values,
                   const table& derivatives, double uncertainty, double relative_uncertainty);

/// The sum rules of the velocity dipole <0| del |n>, which are those of the dipole. Not judged
/// either where the jobs do not tell the other moments.
sum_rules velocity_rules(const displaced_set& set, const derivatives& of);

/// Those of the magnetic dipole m = <0| r x del |n>, which is about the origin of the frame: where
/// the molecule moves by d, it changes by d x v, v being the velocity dipole. About the centroid of
/// each geometry, m - X_0 x v, it obeys the rules of the dipole, which are judged.
sum_rules magnetic_rules(const displaced_set& set, const derivatives& of);

/// Adds to the derivatives of the other moments what noise makes them uncertain by, and all parts
/// together. The noise of the velocity dipole and of the magnetic dipole about the centroid is what
/// explains their sums best, as that of the dipole; about the origin there is that of the velocity
/// dipole at the centroid's distance besides. The sums of the quadrupole are not judged: it is the
/// symmetric part of the tensor <0| r del |n>, the antisymmetric part of which is the magnetic
/// dipole, and so as noisy as that. Without `sum_rules` nothing is known of noise.
void add_noise(derivatives& of, const displaced_set& set, bool sum_rules = true);

}  // namespace sgn
