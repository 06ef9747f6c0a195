#include "common/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>

namespace tools {
namespace {

constexpr std::size_t usual_width = 80;

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view{} : value;
}

std::size_t width_of(int descriptor) {
    winsize window{};
    if (ioctl(descriptor, TIOCGWINSZ, &window) == 0 && window.ws_col > 0) return window.ws_col;
    const std::string_view columns = environment("COLUMNS");
    std::size_t width = 0;
    const auto [end, error] =
        std::from_chars(columns.data(), columns.data() + columns.size(), width);
    const bool whole = error == std::errc{} && end == columns.data() + columns.size();
    return whole && width > 0 ? width : usual_width;
}

}  // namespace

terminal terminal_at(int descriptor) {
    if (isatty(descriptor) != 1) return {};
    const std::string_view kind = environment("TERM");
    const bool colours = environment("NO_COLOR").empty() && !kind.empty() && kind != "dumb";
    return {colours, width_of(descriptor)};
}

std::string painted(std::string_view text, paint colour, const terminal& on) {
    const auto in = [&](std::string_view code) {
        return std::string("\033[").append(code).append("m").append(text).append("\033[0m");
    };
    if (!on.colours || text.empty()) return std::string(text);
    switch (colour) {
        case paint::none:
            break;
        case paint::good:
            return in("32");
        case paint::bad:
            return in("1;31");
        case paint::faint:
            return in("2");
        case paint::strong:
            return in("1");
    }
    return std::string(text);
}

}  // namespace tools
