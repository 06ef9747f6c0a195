// All that is known of a set, as the outputs show it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/modes.h"
#include "sgn/set/sum_rules.h"
#include "sgn/set/suspects.h"
#include "sgn/set/table.h"

namespace sgn_derive {

/// Something that deserves doubt.
struct finding {
    std::string name;          ///< for other programs: "suspect_sign"
    std::string text;          ///< for people
    std::size_t job = no_job;  ///< the file in question (place in displaced_set::jobs), if any

    static constexpr std::size_t no_job = static_cast<std::size_t>(-1);
};

struct report {
    sgn::displaced_set set;
    sgn::derivatives derivatives;  ///< complete
    sgn::sum_rules dipole_rules;
    sgn::sum_rules force_rules;
    sgn::suspects suspects;

    // All of these empty or zero if the files hold no forces.
    sgn::table force_constants;           ///< 3N x 3N, Hartree/Bohr^2
    double asymmetry = 0;                 ///< largest, of the force derivatives, Hartree/Bohr^2
    double largest_force = 0;             ///< component at the reference, Hartree/Bohr
    std::vector<sgn::normal_mode> modes;  ///< empty also if a mass is missing

    std::vector<finding> findings;

    /// Nothing deserves doubt.
    bool fine() const { return findings.empty(); }
    /// Whether the reference is a stationary point, within what optimisations are content with.
    bool stationary() const { return largest_force <= 4.5e-4; }
};

/// Judges and differentiates a set. Throws flib::run_error if there is no result: files that do not
/// belong together, values that are not finite, coordinates that no file displaces.
report analyse(const sgn::result_file& reference, const std::vector<sgn::result_file>& files);

/// The verdict on the whole set in one sentence.
std::string verdict_of(const report& of);

/// The names of jobs, "a.sgn, b.sgn", fit to be shown.
std::string names_of(const std::vector<std::size_t>& jobs, const report& of);

}  // namespace sgn_derive
