// Numbers as people read them, and as other programs do.
#pragma once

#include "flib/io/fixed_field.h"

namespace tools {

using flib::decimal;

using flib::shortest_real;

}  // namespace tools
