// All that is known of a set: derivatives, modes, and what deserves doubt.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sgn/check/doubt.h"
#include "sgn/check/proof.h"
#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/find_signs.h"
#include "sgn/set/modes.h"
#include "sgn/set/sum_rules.h"
#include "sgn/set/suspects.h"
#include "sgn/set/table.h"
#include "sgn/states/near_states.h"

namespace sgn {

struct report {
    displaced_set set;
    sgn::derivatives derivatives;  ///< complete
    sum_rules dipole_rules;
    sum_rules force_rules;
    sum_rules velocity_rules;  ///< not judged where the jobs do not tell these moments
    sum_rules magnetic_rules;
    sgn::suspects suspects;
    proof signs;                         ///< how far it reaches that no other sign is wrong
    dipole_uncertainties uncertainties;  ///< of the derivatives of the dipole

    // All of these empty or zero if the files hold no forces.
    table force_constants;           ///< 3N x 3N, Hartree/Bohr^2
    double asymmetry = 0;            ///< largest, of the force derivatives, Hartree/Bohr^2
    double largest_force = 0;        ///< component at the reference, Hartree/Bohr
    std::vector<normal_mode> modes;  ///< empty also if a mass is missing

    /// Why the dipoles are not those of the checkpoints, with the name of a file; empty if they
    /// are, or if nobody looked.
    std::string no_full_digits;
    /// What does not move with the set (surroundings_beside()); empty if nobody looked.
    std::vector<std::string> surroundings;
    /// Another state that comes near, where states were followed: told, but no doubt.
    std::optional<state_with_others> near{};

    std::vector<finding> findings;

    /// Nothing deserves doubt.
    bool fine() const { return findings.empty(); }
    /// Whether the reference is a stationary point, within what optimisations are content with.
    bool stationary() const { return largest_force <= 4.5e-4; }
};

/// Judges and differentiates a set. Throws flib::run_error if there is no result: files that do not
/// belong together, values that are not finite, coordinates that no file displaces. Without
/// `sum_rules` these are not judged, and no signs are sought by them: they do not hold in an outer
/// field, with embedding charges or link atoms.
report analyse(const result_file& reference, const std::vector<result_file>& files,
               bool sum_rules = true);

/// The same of a set that was not made of files, as set_of_arrays() gives it.
report analyse(const displaced_set& set, bool sum_rules = true);

/// The same with the signs of find_signs(); that they are undecided is a finding.
report analyse(const displaced_set& set, const found_signs& signs, bool sum_rules = true);

/// The verdict on the whole set in one sentence.
std::string verdict_of(const report& of);

/// The names of jobs, "a.sgn, b.sgn", fit to be shown.
std::string names_of(const std::vector<std::size_t>& jobs, const report& of);

}  // namespace sgn
