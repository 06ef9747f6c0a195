// Character helpers on blank-padded text. Only the blank counts as white space, and only the ASCII
// letters as letters; a tab is an ordinary character.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "flib/text/fixed_text.h"

namespace flib {

/// Removes all blanks of `a`; the rest moves to the front and blanks fill the end.
void del_space(text_span a);

/// Removes `word` (trailing blanks not counting, letters of either case) from `string` in place.
///
/// The character after a match is kept without being tested for a new match, and a match that
/// leaves fewer characters than the word has (but at least one) drops those: "XYXY" without "xy"
/// is "XY", "abXYc" without "XY" is "ab".
void str_delete(text_span string, std::string_view word);

/// A copy of `input_string`, of the same length, in lower case.
std::string strlowcase(std::string_view input_string);

/// Lowers the case of `a` in place.
void lowercase(text_span a);

/// Whether `a` holds letters only, at least one. Left-justifies `a`, which callers see.
bool is_letter(text_span a);

/// Whether `a` holds decimal digits only, at least one: no sign, no point, no exponent.
/// Left-justifies `a`, which callers see.
bool is_number(text_span a);

/// The number of blank-separated words of left-justified text.
///
/// Text with k leading blanks is walked as given, but only as far as it would reach without them,
/// so that it loses its last k positions: "  a b" counts 1.
std::int32_t number_of_words(std::string_view words);

/// The text after the first `c` of `text`; all of it if it has none.
constexpr std::string_view after_first(char c, std::string_view text) {
    const std::size_t at = text.find(c);
    return at == std::string_view::npos ? text : text.substr(at + 1);
}

/// A character as is_letter() and is_number() judge it.
constexpr bool is_ascii_letter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
constexpr bool is_ascii_digit(char c) {
    return c >= '0' && c <= '9';
}
constexpr char to_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace flib
