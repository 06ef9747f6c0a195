// The signs of a set's dipoles, where nobody has the amplitudes.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "sgn/set/displaced_set.h"

namespace sgn {

/// The signs of a set, one for each of displaced_set::jobs: 1 or -1, by which its dipole as given
/// is to be multiplied. The reference keeps its own. Of a dipole that rounds to zero the sign means
/// nothing: it is 1. Where that of the reference does, the largest dipole keeps its sign.
struct found_signs {
    /// One choice fits, and all others fit worse by far.
    bool decided = false;
    std::vector<int> signs;  ///< the choice that fits best, or the likeliest where none fits
    /// If undecided: the choices that fit, the best of all first, at most 16 of them. Empty if no
    /// choice fits, or if there are too many to be tried.
    std::vector<std::vector<int>> alternatives;
    /// If undecided: the jobs (places in displaced_set::jobs) whose signs, so far as was tried, are
    /// open against those of most others.
    std::vector<std::size_t> open;
    /// By how much the derivatives of the dipole differ at most between the alternatives, au; 0
    /// where the set does not span all coordinates.
    double largest_change = 0;
    std::string reason;  ///< if undecided: why, in words that name jobs
};

/// Finds the signs of a set whose dipoles have arbitrary ones. Along every direction of
/// displacement the dipole is a smooth function of the step, which decides where it is large
/// against its change. What that leaves open is tried in all ways, and the sums over all atoms,
/// which vanish when the molecule is moved or turned as a whole, choose among them. Where the set
/// does not span all coordinates there are no sums. No signs but those of an isolated molecule can
/// be found by sums: one in an outer field does not obey them.
///
/// Throws flib::run_error for a set whose jobs do not have a shift and a force of every atom.
found_signs find_signs(const displaced_set& set);

/// The same set with dipoles and other moments of every job times its sign. Throws flib::run_error
/// unless there is a sign, 1 or -1, for each job.
displaced_set with_signs(displaced_set set, std::span<const int> signs);

}  // namespace sgn
