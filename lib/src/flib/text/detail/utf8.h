// Well-formed UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

#pragma GCC visibility push(hidden)
namespace flib {

/// Length of the well-formed UTF-8 sequence at the start of `text`, which must not be empty; 0 if
/// there is none.
constexpr std::size_t utf8_length(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    // After these leads the second byte is confined: no overlong forms, no surrogates, none beyond
    // U+10FFFF.
    const unsigned least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (byte(1) < least || byte(1) > most) return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
    }
    return length;
}

}  // namespace flib
#pragma GCC visibility pop
