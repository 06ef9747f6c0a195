// Of the excitation amplitudes, those that the transition density needs.
#pragma once

#include <cstdint>
#include <string_view>

#include "flib/util/matrix.h"

#pragma GCC visibility push(hidden)
namespace flib {

/// Component 1 of root 1, `na` x `ni` amplitudes, of what qm_file_ci_xpy() reads, which ends as
/// that does: all the others must be numbers, too. Empty if there is no root.
zeroed_array<double> first_amplitudes(std::string_view fname, std::int32_t ni, std::int32_t na,
                                      std::int32_t nci);

}  // namespace flib
#pragma GCC visibility pop
