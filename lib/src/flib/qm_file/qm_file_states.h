// The excited states that a log prints.
#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <vector>

namespace flib {

struct printed_state {
    std::array<double, 3> dipole{};  ///< transition dipole from the ground state, atomic units
    std::optional<double> energy{};  ///< of excitation, Hartree, from eV with four decimals
};

/// Reads the excited states that the Gaussian log `fname` prints: a row each of the table of
/// transition electric dipole moments that stands above the last forces or, without forces, of the
/// last one, and the "Excited State" lines behind it. They are the states that converged, fewer
/// than the roots that were sought. Empty if there is no such table.
///
/// Throws stop_run (status 1) for a file of another kind; io_error if the file cannot be opened or
/// a dipole cannot be read.
std::vector<printed_state> qm_file_states(std::string_view fname);

}  // namespace flib
