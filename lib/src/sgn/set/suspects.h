// Which signs of a set are wrong.
#pragma once

#include <cstddef>
#include <vector>

#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/sum_rules.h"

namespace sgn {

/// Signs that are wrong, so far as sums and pairs can tell, and how far that is.
struct suspects {
    /// Each is a set of jobs (places in displaced_set::jobs) whose signs, reversed together, mend
    /// the sums and the pairs; the best first, the others as good or nearly so.
    std::vector<std::vector<std::size_t>> flips;
    sum_rules mended;  ///< the sum rules with the first of them reversed

    /// Sums or second differences fail, but no few signs mend them.
    bool unsound = false;

    /// Jobs whose sign, were it wrong, would not be seen: their dipoles are too small. Those whose
    /// dipole vanishes, so that nothing depends on it, are not among them.
    std::vector<std::size_t> unseen;
    /// Signs that, reversed together, fit sums and pairs as well as what is thought to be right:
    /// more of them than are ever wrong, but nothing else speaks against them. In bright states
    /// there are none.
    std::vector<std::vector<std::size_t>> as_good;
};

/// Looks for signs whose reversal makes the sums more likely, with the noise that goes best with
/// them, and brings the second differences d(+) + d(-) - 2 d(0) of the pairs to what a small step
/// allows. Nothing is sought in a set that is not judged.
suspects find_suspects(const displaced_set& set, const derivatives& of, const sum_rules& dipole);

}  // namespace sgn
