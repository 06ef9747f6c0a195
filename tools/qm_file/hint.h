// Files that no reader takes, though they may look as if one did.
#pragma once

#include <string>

namespace qm_file {

/// What `file` is, and what to do with it, for files that are often given by mistake: compressed
/// ones, inputs, imitations of a log. Empty for all others, and if it cannot be read.
std::string hint_for(const std::string& file);

}  // namespace qm_file
