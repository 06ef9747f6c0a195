// Text in columns: how wide it is, broken into lines, shortened.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace flib {

/// Columns that UTF-8 text takes: its characters, not its bytes.
std::size_t shown_width(std::string_view text);

/// `text` in lines of at most `width` columns, broken at blanks; a longer word is broken anywhere.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// `text`, its middle left out ("...") if it is wider than `width`, which must be at least 5.
std::string shortened(std::string_view text, std::size_t width);

}  // namespace flib
