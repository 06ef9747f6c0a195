// What a terminal can show.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

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

}  // namespace tools
