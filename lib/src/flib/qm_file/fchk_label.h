// The labels of a formatted checkpoint's sections, as readers and writers know them.
#pragma once

#include <string_view>

namespace flib::fchk_label {

inline constexpr std::string_view atoms = "Number of atoms";
inline constexpr std::string_view basis_functions = "Number of basis functions";
inline constexpr std::string_view numbers = "Atomic numbers";
inline constexpr std::string_view charges = "Nuclear charges";
inline constexpr std::string_view coordinates = "Current cartesian coordinates";
inline constexpr std::string_view masses = "Real atomic weights";
inline constexpr std::string_view mo_coefficients = "Alpha MO coefficients";
inline constexpr std::string_view scf_energy = "SCF Energy";
inline constexpr std::string_view energy = "Total Energy";
inline constexpr std::string_view gradient = "Cartesian Gradient";
inline constexpr std::string_view force_constants = "Cartesian Force Constants";
inline constexpr std::string_view state_scalar_count = "ETran NETS";
inline constexpr std::string_view state_value_count = "ETran NETV";
inline constexpr std::string_view state_scalars = "ETran scalars";
inline constexpr std::string_view state_spin = "ETran spin";
inline constexpr std::string_view state_symmetry = "ETran sym";
inline constexpr std::string_view state_values = "ETran state values";

}  // namespace flib::fchk_label
