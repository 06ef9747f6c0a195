// A set whose reference is not the first of its files.
#pragma once

#include <span>
#include <string_view>

#include "sgn/set/displaced_set.h"

namespace tools {

/// Complains if another of the files fits as the reference, as with "h2o_*.sgn", where the first of
/// the alphabet was taken for it.
void tell_better_reference(std::string_view tool, const sgn::result_file& reference,
                           std::span<const sgn::result_file> files);

}  // namespace tools
