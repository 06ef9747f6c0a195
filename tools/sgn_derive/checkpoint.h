// Formatted checkpoints with derivatives, as vibronic programs read them.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "set/displaced_set.h"
#include "set/table.h"
#include "sgn_derive/report.h"

namespace sgn_derive {

/// A checkpoint of its own: atoms, masses, gradient, force constants and the sections of the
/// excited state. There is no energy in it.
std::string checkpoint_of(const report& of);

/// The checkpoint `template_file` with these sections replaced or, at its end, added. Throws
/// flib::io_error if it is not a whole formatted checkpoint, or one of another molecule or
/// geometry.
std::string checkpoint_of(const report& of, const std::string& template_file);

/// What a checkpoint holds of derivatives.
struct checkpoint {
    std::vector<sgn_set::atom> atoms;   ///< masses are left out
    std::array<double, 3> dipole{};     ///< transition dipole of the target state, au
    sgn_set::table dipole_derivatives;  ///< 3N x 3, au
    std::vector<double> forces;         ///< 3N, Hartree/Bohr; empty if there is no gradient
    sgn_set::table force_derivatives;   ///< 3N x 3N; empty if there are no force constants
};

/// Reads a checkpoint with sections of excited states. Throws flib::io_error if it cannot, or if it
/// holds no derivatives of a transition dipole.
checkpoint read_checkpoint(const std::string& file);

}  // namespace sgn_derive
