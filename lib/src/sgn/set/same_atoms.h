// Whether two result files are of one molecule.
#pragma once

#include <string>

#include "sgn/result/sgn_file.h"

namespace sgn {

/// What of a file is not of as many atoms as its coordinates, "has 2 masses of 3 atoms"; nothing if
/// all is.
std::string other_shape(const sgn_contents& file);

/// The files of a set differ in nothing but the geometry: what differs of the atoms, "has 2 atoms
/// instead of 3", or "atom 1 is N 7 14.003074 instead of O 8 15.994915"; nothing if they are the
/// same. What is not of as many atoms is told as by other_shape().
std::string other_atoms(const sgn_contents& file, const sgn_contents& reference);

/// What of a file is not a finite number, "the dipole", "the masses", ...; nothing if all is.
std::string not_finite(const sgn_contents& file);

}  // namespace sgn
