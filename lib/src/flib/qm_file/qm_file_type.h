// Which program wrote a text file.
#pragma once

#include <cstdint>
#include <string_view>

#include "flib/text/fixed_text.h"

namespace flib {

/// Tells by its banner texts which program wrote the file `fname`. The banner counts only within
/// the first 1000 lines.
///
/// `file_type` receives the type tag (type_tag.h), `version` the program's version as the file
/// states it, "0" for kinds that carry none, "UNKNOWN" for a formatted checkpoint. `info` is the
/// class code of the kind; -1 for an unrecognised file, and also for a formatted checkpoint and a
/// matrix-element file.
///
/// If the file cannot be opened or is not recognised, `file_type` and `version` keep their
/// values. A Gaussian banner without a line of asterisks after it sets the tag, but leaves `info`
/// at -1 and lets the other programs' banners win. Throws io_error for an empty file, and when the
/// line with the version has too few items.
void qm_file_type(std::string_view fname, text_span file_type, text_span version,
                  std::int32_t& info);

/// The type tag of `fname` alone; blank for a file that is not recognised or cannot be opened.
line_buffer type_tag_of(std::string_view fname);

}  // namespace flib
