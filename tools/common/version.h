// The version of the tools.
#pragma once

#include <string_view>

namespace tools {

/// As CMakeLists.txt gives it.
std::string_view version();

}  // namespace tools
