// Conversion of units.
#pragma once

namespace flib {

/// The Bohr radius: Angstrom per Bohr.
inline constexpr double bohr_radius = 0.529177249;

/// The Hartree energy: electronvolts per Hartree.
inline constexpr double hartree_energy = 27.211386245988;

}  // namespace flib
