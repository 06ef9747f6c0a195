// What a terminal can show, and text made for it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

/// Where text is shown. A file or a pipe has neither colours nor a width.
struct terminal {
    bool colours = false;
    std::optional<std::size_t> width{};  ///< columns
};

/// The terminal behind a file descriptor. No colours if NO_COLOR is set to something, or TERM is
/// "dumb" or not set. The width is that of the window, else that of COLUMNS, else 80.
terminal terminal_at(int descriptor);

enum class paint { none, good, bad, faint, strong };

/// `text` in a colour, if there are colours.
std::string painted(std::string_view text, paint colour, const terminal& on);

/// Columns that UTF-8 text takes: its characters, not its bytes.
std::size_t shown_width(std::string_view text);

/// `text` in lines of at most `width` columns, broken at blanks; a longer word is broken anywhere.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// `text`, its middle left out ("...") if it is wider than `width`, which must be at least 5.
std::string shortened(std::string_view text, std::size_t width);

}  // namespace tools
