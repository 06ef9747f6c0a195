// Keywords that more than one reader looks for.
#pragma once

#include <string_view>

#include "flib/qm_file/fchk_label.h"

#pragma GCC visibility push(hidden)
namespace flib {
namespace keyword {

inline constexpr std::string_view gaussian_atom_count = "NAtoms=";
inline constexpr std::string_view gaussian_charge = "Charge =";
inline constexpr std::string_view gaussian_electrons = "NAE=";
inline constexpr std::string_view gaussian_orientation =
    "Center     Atomic      Atomic             Coordinates (Angstroms)";
inline constexpr std::string_view fchk_basis_functions = fchk_label::basis_functions;
inline constexpr std::string_view fchk_mo_coefficients = fchk_label::mo_coefficients;
inline constexpr std::string_view atomic_coordinates = "ATOMIC COORDINATES";
inline constexpr std::string_view atomic_weights = "ATOMIC WEIGHTS";
inline constexpr std::string_view chemshell_input_coordinates = "Input Coordinates";
inline constexpr std::string_view coordinate = "Coordinate";
inline constexpr std::string_view gamess_angstrom = "COORDINATES OF ALL ATOMS ARE (ANGS)";
inline constexpr std::string_view gamess_bohr = "ATOM ATOMIC COORDINATES (BOHR)";
inline constexpr std::string_view molpro_xyz = "Dump information in style XYZ to output";
inline constexpr std::string_view nwchem_coordinates = "Output coordinates in angstroms";
inline constexpr std::string_view nwchem_column_titles = "No.";
inline constexpr std::string_view orca_hessian_atoms = "$atoms";
inline constexpr std::string_view orca_angstrom = "CARTESIAN COORDINATES (ANGSTROEM)";
inline constexpr std::string_view orca_bohr = "CARTESIAN COORDINATES (A.U.)";
inline constexpr std::string_view qchem_orientation = "Standard Nuclear Orientation (Angstroms)";
inline constexpr std::string_view terachem_geometry = "Molecular Geometry (bohr)";
inline constexpr std::string_view turbomole_coordinates =
    "Atomic coordinate, charge and isotop information";

inline constexpr std::string_view turbomole_geometry = "atomic coordinates";
inline constexpr std::string_view vasp_positions = "POSITION";

}  // namespace keyword
}  // namespace flib
#pragma GCC visibility pop
