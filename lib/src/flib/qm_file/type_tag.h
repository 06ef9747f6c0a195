// The tags that name a producing program and file kind.
#pragma once

#include <string_view>

namespace flib::tag {

inline constexpr std::string_view gaussian_log = "GAUSSIAN LOG";
inline constexpr std::string_view gaussian_mat = "GAUSSIAN MAT";
inline constexpr std::string_view gaussian_fchk = "GAUSSIAN FCHK";
inline constexpr std::string_view gaussian_rwf = "GAUSSIAN RWF";
inline constexpr std::string_view chemshell = "CHEMSHELL";
inline constexpr std::string_view molpro = "MOLPRO";
inline constexpr std::string_view turbomole = "TURBOMOLE";
inline constexpr std::string_view turbomole_ctrl = "TURBOMOLE CTRL";
inline constexpr std::string_view evc = "EVC";
inline constexpr std::string_view numforce = "NUMFORCE";
inline constexpr std::string_view pwout = "PWOUT";
inline constexpr std::string_view vasp = "VASP";
inline constexpr std::string_view nwchem = "NWCHEM";
inline constexpr std::string_view cif = "CIF";
inline constexpr std::string_view wien2k_1 = "WIEN2K_1";
inline constexpr std::string_view wien2k_spe = "WIEN2K_spe";
inline constexpr std::string_view gamess_us = "GAMESS_US";
inline constexpr std::string_view qchem = "QCHEM";
inline constexpr std::string_view orca_hessian = "ORCA_HESSIAN";
inline constexpr std::string_view orca = "ORCA";
inline constexpr std::string_view terachem = "TERACHEM";

}  // namespace flib::tag
