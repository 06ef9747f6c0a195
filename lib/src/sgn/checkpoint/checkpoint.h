// Formatted checkpoints with derivatives, as vibronic programs read them.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/table.h"

namespace sgn {

/// The text of a checkpoint of its own, from a set and its derivatives, which must be complete:
/// atoms, masses, the sections of the excited state and, if the files hold forces, gradient and
/// force constants. There is no energy in it. Throws flib::run_error for derivatives that are not
/// those of such a set.
std::string checkpoint_of(const displaced_set& set, const derivatives& of);

/// The checkpoint `template_file` with these sections replaced or, at its end, added, and a title
/// that begins with "sgn_derive: ". If it has
/// other atoms besides (that of an ONIOM job, of which the set is the high layer), only electrons
/// and energies are kept of it. Throws flib::io_error if it is not a whole formatted checkpoint, or
/// one of another molecule or geometry.
std::string checkpoint_of(const displaced_set& set, const derivatives& of,
                          const std::string& template_file);

/// The total energy (Hartree) in the checkpoint `file` of the set's reference, or of an ONIOM job
/// of which the set is the high layer. Throws flib::io_error as checkpoint_of() does, and if there
/// is none.
double energy_of_checkpoint(const std::string& file, const displaced_set& set);

/// What a checkpoint holds of derivatives.
struct checkpoint {
    std::vector<atom> atoms;         ///< masses are left out
    std::array<double, 3> dipole{};  ///< transition dipole of the target state, au
    table dipole_derivatives;        ///< 3N x 3, au
    std::vector<double> forces;      ///< 3N, Hartree/Bohr; empty if there is no gradient
    table force_derivatives;         ///< 3N x 3N; empty if there are no force constants
};

/// Reads a checkpoint with sections of excited states. Throws flib::io_error if it cannot, or if it
/// holds no derivatives of a transition dipole.
checkpoint read_checkpoint(const std::string& file);

}  // namespace sgn
