// What the tools say of a set in JSON, in one form for all of them.
#pragma once

#include "common/json_text.h"
#include "set/sum_rules.h"

namespace sgn_set {

/// An array of the table's rows.
tools::json_value json_of(const table& rows);

/// "judged", and the sums with their uncertainties, or "why_not" and "satisfied" null.
tools::json_value json_of(const sum_rules& rules);

}  // namespace sgn_set
