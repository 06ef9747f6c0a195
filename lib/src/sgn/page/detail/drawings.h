// The drawings of the page.
#pragma once

#include <string>
#include <vector>

#include "sgn/check/report.h"

namespace sgn::page {

/// Names of the jobs as short as they can be told apart: without directory, ".sgn", and what all
/// begin with.
std::vector<std::string> short_names(const sgn::displaced_set& set);

/// The numbered atoms, their bonds, and the transition dipole of the reference.
std::string molecule_drawing(const sgn::report& of);

/// The components of the dipole along the jobs, as printed and as corrected.
std::string dipole_drawing(const sgn::report& of);

/// The residue of each sum rule of the dipole in units of its uncertainty; where signs are suspect,
/// also what it is once they are reversed. The rules must be judged.
std::string rules_drawing(const sgn::report& of);

/// The intensity that each mode borrows, over the wavenumbers. There must be modes.
std::string modes_drawing(const sgn::report& of);

/// The height of a mode in that drawing.
double borrowed_by(const sgn::report& of, const sgn::normal_mode& mode);
/// Whether these are parts of the intensity of the dipole itself; else, where that has none,
/// squares in atomic units.
bool has_own_intensity(const sgn::report& of);

}  // namespace sgn::page
