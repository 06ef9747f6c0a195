// Numbers as people read them, and as other programs do.
#pragma once

#include <string>

#include "flib/io/fixed_field.h"

namespace tools {

using flib::decimal;

/// The shortest text that reads back to the same bits.
std::string shortest_real(double value);

}  // namespace tools
