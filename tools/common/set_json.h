// What the tools say of a set in JSON, in one form for all of them.
#pragma once

#include "common/json_text.h"
#include "sgn/set/sum_rules.h"

namespace tools {

/// An array of the table's rows.
json_value json_of(const sgn::table& rows);

/// "judged", and the sums with their uncertainties, or "why_not" and "satisfied" null.
json_value json_of(const sgn::sum_rules& rules);

}  // namespace tools
