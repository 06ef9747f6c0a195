// Which signs of a set are wrong.
#pragma once

#include <cstddef>
#include <vector>

#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/sum_rules.h"

namespace sgn {

/// Signs that are wrong, so far as sums and pairs can tell.
struct suspects {
    /// Each is a set of jobs (places in displaced_set::jobs) whose signs, reversed together, mend
    /// the sums and the pairs; the best first, the others as good or nearly so.
    std::vector<std::vector<std::size_t>> flips;
    sum_rules mended;  ///< the sum rules with the first of them reversed

    /// Sums or second differences fail, but no few signs mend them.
    bool unsound = false;
};

/// Looks for signs whose reversal brings the sums down to their uncertainties, and the second
/// differences d(+) + d(-) - 2 d(0) of the pairs to what a small step allows. Nothing is sought in
/// a set that is not judged.
suspects find_suspects(const displaced_set& set, const derivatives& of, const sum_rules& dipole);

}  // namespace sgn
