// Conversion of units.
#pragma once

namespace flib {

/// The Bohr radius: Angstrom per Bohr.
inline constexpr double bohr_radius = 0.529177249;

}  // namespace flib
