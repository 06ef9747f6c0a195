// How far what is said of the signs of a set is proven, and what derivatives are uncertain by.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/sum_rules.h"
#include "sgn/set/suspects.h"
#include "sgn/set/table.h"

namespace sgn {

/// What would not be seen. Nothing is known of a set that is not judged.
struct proof {
    /// Jobs (places in displaced_set::jobs) whose sign, were it wrong, would not be seen, and would
    /// make a derivative wrong by more than it is uncertain.
    std::vector<std::size_t> unseen;
    double largest_dipole = 0;  ///< of theirs, au
    double largest_error = 0;   ///< of a derivative, if one of them were wrong, au by Bohr
    /// The same of the reference, on whose sign no derivative depends: only that of its own dipole
    /// against all derivatives.
    bool reference_unseen = false;
    /// Other signs that fit as well, many at once: suspects::as_good.
    std::vector<std::vector<std::size_t>> as_good;

    bool complete() const { return unseen.empty() && !reference_unseen && as_good.empty(); }
};

/// What derivatives of the dipole are uncertain by: standard deviations, 3N x 3, au by Bohr.
struct dipole_uncertainties {
    table total;  ///< rounding, noise, the size of the steps, and signs that would not be seen
    table signs;  ///< the last of these alone
};

proof proof_of(const displaced_set& set, const derivatives& of, const sum_rules& dipole,
               const suspects& found);

dipole_uncertainties uncertainties_of(const displaced_set& set, const derivatives& of,
                                      const sum_rules& dipole, const proof& signs);

/// What is to be said behind "no sign is wrong", a sentence or several; empty if that is proven.
/// `names` are those of the jobs.
std::string reservation_of(const proof& signs, const std::vector<std::string>& names);

}  // namespace sgn
