// How far a long run has come.
#pragma once

#include "sgn_states/run.h"

namespace sgn_states {

/// Keeps a line on standard error that tells how many jobs are done, if that is a terminal, and
/// removes it after the last; else does nothing.
progress progress_line();

}  // namespace sgn_states
