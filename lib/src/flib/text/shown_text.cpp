#include "flib/text/shown_text.h"

#include <algorithm>

namespace flib {
namespace {

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

}  // namespace flib
