// The string_utility group: further names for the same text helpers.
#pragma once

#include "flib/text/string.h"

namespace flib::string_utility {

using flib::strlowcase;

}  // namespace flib::string_utility
