// What the tools say of a set in JSON, in one form for all of them.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "common/json_text.h"
#include "sgn/check/doubt.h"
#include "sgn/check/proof.h"
#include "sgn/set/suspects.h"

namespace tools {

/// An array of the table's rows.
json_value json_of(const sgn::table& rows);

/// "judged", and the sums with their uncertainties, or "why_not" and "satisfied" null.
json_value json_of(const sgn::sum_rules& rules);

/// The same with "suspects", "alternatives", "unsound" and what is not proven ("unseen", "as_good",
/// "reference_unseen"); `names` are those of the set's jobs.
json_value json_of(const sgn::sum_rules& rules, const sgn::suspects& suspects,
                   const sgn::proof& signs, std::span<const std::string> names);

/// An array: name and words of each.
json_value json_of(std::span<const sgn::finding> findings);

}  // namespace tools
