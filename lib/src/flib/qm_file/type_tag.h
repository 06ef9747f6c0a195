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

namespace flib {

struct kind_in_words {
    std::string_view tag;
    std::string_view program;
    std::string_view words;
};

/// Files of every kind as people speak of them.
inline constexpr kind_in_words kinds_in_words[] = {
    {tag::gaussian_log, "Gaussian", "a Gaussian log"},
    {tag::gaussian_mat, "Gaussian", "a Gaussian matrix-element file"},
    {tag::gaussian_fchk, "Gaussian", "a formatted checkpoint"},
    {tag::gaussian_rwf, "Gaussian", "a dump of a read-write file"},
    {tag::chemshell, "ChemShell", "a ChemShell output"},
    {tag::molpro, "Molpro", "a Molpro output"},
    {tag::turbomole, "TURBOMOLE", "a TURBOMOLE output"},
    {tag::turbomole_ctrl, "TURBOMOLE", "a TURBOMOLE control file"},
    {tag::evc, "EVC", "an EVC file"},
    {tag::numforce, "NUMFORCE", "a NUMFORCE file"},
    {tag::pwout, "PWscf", "a PWscf output"},
    {tag::vasp, "VASP", "a VASP output"},
    {tag::nwchem, "NWChem", "an NWChem output"},
    {tag::cif, "CIF", "a CIF file"},
    {tag::wien2k_1, "WIEN2k", "a WIEN2k output"},
    {tag::wien2k_spe, "WIEN2k", "a WIEN2k band file"},
    {tag::gamess_us, "GAMESS (US)", "a GAMESS (US) output"},
    {tag::qchem, "Q-Chem", "a Q-Chem output"},
    {tag::orca_hessian, "ORCA", "an ORCA Hessian file"},
    {tag::orca, "ORCA", "an ORCA output"},
    {tag::terachem, "TeraChem", "a TeraChem output"},
};

/// "a Gaussian log" for its tag; empty for another text.
constexpr std::string_view words_for(std::string_view tag) {
    for (const kind_in_words& kind : kinds_in_words) {
        if (kind.tag == tag) return kind.words;
    }
    return {};
}

}  // namespace flib
