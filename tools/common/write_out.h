// Output that bypasses the buffers of the standard streams.
#pragma once

#include "flib/io/write_out.h"

namespace tools {

using flib::write_out;

}  // namespace tools
