// States whose energies come near each other: where they may mix, derivatives are not sound.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "flib/util/units.h"

namespace sgn {

/// Two states of one spin no farther apart are near each other (Hartree; a tenth of an eV). What
/// couples them changes by some hundredths of an eV over 0.01 Angstrom: by some ten percent of the
/// distance, which is then the error of derivatives of their dipoles, if symmetry lets them mix.
inline constexpr double near_energies = 0.1 / flib::hartree_energy;

/// The state of the same spin whose energy is nearest to that of another.
struct near_state {
    std::int32_t root = 0;  ///< from 1 on
    double distance = 0;    ///< of the energies, Hartree

    bool is_near() const { return distance < near_energies; }
};

/// A state of a set to which another one comes near.
struct state_with_others {
    std::int32_t state = 0;  ///< of the reference, from 1 on
    double distance = 0;     ///< the least, Hartree
    std::string job{};       ///< where that is
    std::size_t near = 0;    ///< in so many jobs another state is near
    std::size_t jobs = 0;    ///< of so many
};

/// "State 2: another state is 0.0020 eV away in h2o_02yp, less than 0.1 eV in 19 of 19 jobs; if the
/// two mix, derivatives are not sound."
std::string text_of(const state_with_others& of);

}  // namespace sgn
