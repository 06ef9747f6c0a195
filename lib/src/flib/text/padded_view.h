// A text and the blank-padded length that it stands for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "flib/text/fixed_text.h"

namespace flib {

/// A view of a text as if it stood in a blank-padded buffer of `length` characters, without the
/// padding being there. Every rule about padding blanks is told here, once.
class padded_view {
  public:
    constexpr padded_view(std::string_view text, std::size_t length)
        : text_(text.substr(0, length)), length_(length) {}

    /// Columns `i` to `j`, 1-based and inclusive; columns outside the text are blanks.
    constexpr padded_view columns(std::int32_t i, std::int32_t j) const {
        if (i < 1 || j < i) return {{}, 0};
        const std::size_t first = static_cast<std::size_t>(i) - 1;
        const std::size_t width = static_cast<std::size_t>(j) - first;
        return {first < text_.size() ? text_.substr(first, width) : std::string_view{}, width};
    }

    /// Equality with `word`, the shorter of the two padded with blanks.
    constexpr bool equals(std::string_view word) const { return equal_padded(text_, word); }

    /// Whether `word`, at its full passed length, occurs anywhere. A blank at its end matches a
    /// blank of the text or of the padding.
    constexpr bool contains(std::string_view word) const {
        if (word.size() > length_) return false;
        if (text_.find(word) != std::string_view::npos) return true;
        // The match may end in the padding: then the text ends with the word's beginning, and only
        // blanks of the word lie beyond it.
        const std::string_view solid = trim_right(word);
        const std::size_t body = trim_right(text_).size();
        return solid.size() <= body && word.size() <= length_ - (body - solid.size()) &&
               text_.substr(body - solid.size(), solid.size()) == solid;
    }

  private:
    std::string_view text_;
    std::size_t length_;
};

}  // namespace flib
