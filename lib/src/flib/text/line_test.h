// The tests that keyword searches put to a line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "flib/text/padded_view.h"

namespace flib {

/// One test of one line of text, as the search family needs it. Only the first `width` columns of
/// a line take part, as if it stood in a blank-padded buffer of that length.
class line_test {
  public:
    /// Columns `i` to `j` equal `word`, the shorter side padded with blanks.
    static line_test columns(std::int32_t i, std::int32_t j, std::string_view word,
                             std::size_t width);
    /// `word`, at its full passed length, occurs anywhere.
    static line_test anywhere(std::string_view word, std::size_t width);
    /// `word` occurs anywhere once both are in lower case.
    static line_test anywhere_ignoring_case(std::string_view word, std::size_t width);
    /// `word` occurs anywhere once all blanks are removed from both.
    static line_test anywhere_without_blanks(std::string_view word, std::size_t width);
    /// The first token begins with a letter.
    static line_test first_letter(std::size_t width);
    /// The first token consists of decimal digits only.
    static line_test first_number(std::size_t width);

    bool accepts(std::string_view line) const;

    std::size_t width() const { return width_; }

    /// Text that every accepted line holds exactly as it stands here, so that a search can pass
    /// over all else; empty when there is no such text.
    std::string_view anchor() const { return anchor_; }

  private:
    enum class kind {
        columns,
        anywhere,
        ignoring_case,
        without_blanks,
        first_letter,
        first_number
    };

    line_test(kind what, std::string word, std::size_t width)
        : kind_(what), word_(std::move(word)), width_(width) {}

    kind kind_;
    std::int32_t first_ = 0;
    std::int32_t last_ = 0;
    std::string word_;
    std::string anchor_;
    std::size_t width_;
};

/// The first token of a line: it ends at a blank, a tab or a comma. For a blank line
/// the empty token at its end, so that what is behind a token can always be found.
std::string_view first_token(std::string_view line);

/// The position in `text` of the character that quantum-chemistry output holds most rarely.
/// `text` must not be empty.
std::size_t rarest_character(std::string_view text);

}  // namespace flib
