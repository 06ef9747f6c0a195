// What a set of result files shows as a whole.
#pragma once

#include "sgn_check/check.h"

namespace sgn_check {

/// Judges the sum rules of the set, and adds to the verdicts what they say of single files: signs
/// that are suspect, and geometries in another frame than their dipoles. Files that cannot be
/// compared with the reference take no part.
void judge_set(assessment& of);

}  // namespace sgn_check
