#include "common/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
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

bool continues_character(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// Bytes of the first `count` characters.
std::size_t bytes_of(std::string_view text, std::size_t count) {
    std::size_t i = 0;
    while (i < text.size() && (continues_character(text[i]) || count-- > 0)) ++i;
    return i;
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

std::size_t shown_width(std::string_view text) {
    return text.size() -
           static_cast<std::size_t>(std::count_if(text.begin(), text.end(), continues_character));
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    std::vector<std::string> lines(1);
    std::size_t taken = 0;  // columns of the last line
    while (!text.empty()) {
        const std::size_t begin = text.find_first_not_of(' ');
        if (begin == std::string_view::npos) break;
        text.remove_prefix(begin);
        std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(word.size());
        if (taken > 0 && taken + 1 + shown_width(word) <= width) {
            lines.back() += ' ';
            ++taken;
        } else if (taken > 0) {
            lines.emplace_back();
            taken = 0;
        }
        for (; shown_width(word) > width; taken = 0) {
            const std::size_t part = bytes_of(word, std::max<std::size_t>(width, 1));
            lines.back() += word.substr(0, part);
            lines.emplace_back();
            word.remove_prefix(part);
        }
        lines.back() += word;
        taken += shown_width(word);
    }
    return lines;
}

std::string shortened(std::string_view text, std::size_t width) {
    constexpr std::string_view gap = "...";
    const std::size_t all = shown_width(text);
    if (all <= width) return std::string(text);
    const std::size_t kept = width - gap.size();
    const std::size_t front = bytes_of(text, kept / 2);
    const std::size_t back = bytes_of(text, all - (kept - kept / 2));
    return std::string(text.substr(0, front)).append(gap).append(text.substr(back));
}

}  // namespace tools
