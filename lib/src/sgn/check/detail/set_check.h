// What a set of result files shows as a whole.
#pragma once

#include "sgn/check/check.h"

namespace sgn {

/// Judges the sum rules of the set, and adds to the verdicts what they say of single files: signs
/// that are suspect, and geometries in another frame than their dipoles. Files that cannot be
/// compared with the reference take no part. What a set shows that is not to be differentiated,
/// having no `pairs`, is left out.
void judge_set(assessment& of, bool pairs);

}  // namespace sgn
