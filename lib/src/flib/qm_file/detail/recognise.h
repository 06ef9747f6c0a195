// Telling which program wrote an open file.
#pragma once

#include <cstdint>

#include "flib/text/fixed_text.h"

#pragma GCC visibility push(hidden)
namespace flib {

/// qm_file_type() of a file that is open, at its start.
void recognise(std::int32_t fid, text_span file_type, text_span version, std::int32_t& info);

}  // namespace flib
#pragma GCC visibility pop
