// Text buffers of fixed length, blank-padded on the right.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace flib {

/// A caller's text buffer of any length: assignments cut or blank-pad to that length.
using text_span = std::span<char>;

/// Length of a text record, and of every line, token, keyword, name and type-tag buffer.
inline constexpr std::size_t record_length = 200;

/// `text` without its trailing blanks. Only the blank counts; a tab is an ordinary character.
constexpr std::string_view trim_right(std::string_view text) {
    const std::size_t last = text.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string_view{} : text.substr(0, last + 1);
}

/// `text` without its leading blanks.
constexpr std::string_view trim_left(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string_view{} : text.substr(first);
}

/// `text` without its leading and trailing blanks.
constexpr std::string_view trim(std::string_view text) {
    return trim_left(trim_right(text));
}

/// Equality of texts of any lengths, trailing blanks not counting.
constexpr bool equal_padded(std::string_view a, std::string_view b) {
    // The common length first: most comparisons are over with the first character.
    const std::size_t common = std::min(a.size(), b.size());
    if (a.substr(0, common) != b.substr(0, common)) return false;
    return trim_right(a.substr(common)).empty() && trim_right(b.substr(common)).empty();
}

/// Stores `value` in `target`: cut at its length, or padded with blanks. The two may overlap.
constexpr void assign_text(text_span target, std::string_view value) {
    const std::size_t n = std::min(target.size(), value.size());
    if (n != 0) std::char_traits<char>::move(target.data(), value.data(), n);
    std::fill(target.begin() + static_cast<std::ptrdiff_t>(n), target.end(), ' ');
}

/// The characters of a buffer, padding included.
constexpr std::string_view view_of(std::span<const char> text) {
    return {text.data(), text.size()};
}

/// N characters, blank-padded on the right.
template <std::size_t N>
class fixed_text {
  public:
    constexpr fixed_text() { chars_.fill(' '); }
    constexpr fixed_text(std::string_view value) { assign_text(chars_, value); }
    constexpr fixed_text& operator=(std::string_view value) {
        assign_text(chars_, value);
        return *this;
    }

    constexpr char* data() { return chars_.data(); }
    constexpr const char* data() const { return chars_.data(); }
    static constexpr std::size_t size() { return N; }

    constexpr operator text_span() { return chars_; }

    /// All N characters.
    constexpr std::string_view padded() const { return {chars_.data(), N}; }
    /// The characters without trailing blanks.
    constexpr std::string_view trimmed() const { return trim_right(padded()); }

    friend constexpr bool operator==(const fixed_text& a, std::string_view b) {
        return equal_padded(a.padded(), b);
    }

  private:
    std::array<char, N> chars_;
};

/// A line, token or name buffer of the usual length.
using line_buffer = fixed_text<record_length>;

}  // namespace flib
