// What a molecule is made of and how it lies: its formula, its bonds, its axes.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "sgn/set/displaced_set.h"

namespace sgn {

/// The sum formula, carbon and hydrogen first, fit to be shown: "H2O".
std::string formula_of(std::span<const atom> atoms);

/// The covalent radius of an element by its atomic number, for single bonds (Angstrom); 1.5 where
/// none is known.
double covalent_radius(std::int32_t number);

/// Whether two atoms are as near to each other as bonded ones are.
bool are_bonded(const atom& a, const atom& b);

/// Three unit vectors at right angles, a right-handed frame: the atoms are spread most along the
/// first of them, and least along the last. The largest component of the first two is positive.
std::array<vec3, 3> principal_axes(std::span<const atom> atoms);

/// The mean of the places of the atoms (Angstrom).
vec3 centroid(std::span<const atom> atoms);

}  // namespace sgn
