// What a whole set shows, and signs that are suspect: the same for all that judge sets.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "sgn/check/doubt.h"
#include "sgn/set/derivatives.h"
#include "sgn/set/suspects.h"

namespace sgn {

/// Findings of the set itself. The derivatives must be complete.
std::vector<finding> set_findings(const displaced_set& set, const derivatives& of,
                                  const sum_rules& dipole, const sum_rules& forces,
                                  const suspects& wrong);

/// A finding for every job of `flip`, whose signs are reversed together; `names` are those of the
/// jobs.
std::vector<finding> suspect_findings(const std::vector<std::size_t>& flip,
                                      const std::vector<std::string>& names);

/// Findings of the sum rules of the other moments.
std::vector<finding> moment_findings(const sum_rules& velocity, const sum_rules& magnetic);

}  // namespace sgn
