#include "flib/text/line_test.h"

#include <algorithm>

#include "flib/text/string.h"

namespace flib {
namespace {

/// Whether `word` (free of blanks) occurs in `line` when the blanks of the line are passed over.
bool contains_without_blanks(std::string_view line, std::string_view word) {
    if (word.empty()) return true;
    for (std::size_t start = line.find(word.front()); start != std::string_view::npos;
         start = line.find(word.front(), start + 1)) {
        std::size_t matched = 1;
        std::size_t at = start + 1;
        while (matched < word.size() && at < line.size() &&
               (line[at] == ' ' || line[at] == word[matched])) {
            if (line[at] != ' ') ++matched;
            ++at;
        }
        if (matched == word.size()) return true;
    }
    return false;
}

}  // namespace

std::string_view first_token(std::string_view line) {
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == std::string_view::npos) return line.substr(line.size());
    return line.substr(begin, line.find_first_of(" \t,", begin) - begin);
}

std::size_t rarest_character(std::string_view text) {
    // From the most to the least frequent; a character that is not listed is rarer than all.
    constexpr std::string_view frequent_first =
        " 0123456789.-*=eotanirsECHDlcudmpf:yFAIOxSRgNMBTYPLhZXUGbKV,)(+/WkvQw";
    const auto rarity = [&](char c) {
        return std::min(frequent_first.find(c), frequent_first.size());
    };
    const auto rarest = std::max_element(text.begin(), text.end(),
                                         [&](char a, char b) { return rarity(a) < rarity(b); });
    return static_cast<std::size_t>(rarest - text.begin());
}

line_test line_test::columns(std::int32_t i, std::int32_t j, std::string_view word,
                             std::size_t width) {
    line_test test(kind::columns, std::string(trim_right(word)), width);
    test.first_ = i;
    test.last_ = j;
    test.anchor_ = test.word_;
    return test;
}

line_test line_test::anywhere(std::string_view word, std::size_t width) {
    line_test test(kind::anywhere, std::string(word), width);
    test.anchor_ = trim_right(word);
    return test;
}

line_test line_test::anywhere_ignoring_case(std::string_view word, std::size_t width) {
    return {kind::ignoring_case, strlowcase(word), width};
}

line_test line_test::anywhere_without_blanks(std::string_view word, std::size_t width) {
    std::string blankless(word);
    del_space(blankless);
    line_test test(kind::without_blanks, std::string(trim_right(blankless)), width);
    // Blanks may stand anywhere between the characters, so only a single one is sure to be there.
    if (!test.word_.empty()) test.anchor_ = test.word_[rarest_character(test.word_)];
    return test;
}

line_test line_test::first_letter(std::size_t width) {
    return {kind::first_letter, {}, width};
}

line_test line_test::first_number(std::size_t width) {
    return {kind::first_number, {}, width};
}

bool line_test::accepts(std::string_view line) const {
    const padded_view padded(line, width_);
    const std::string_view text = line.substr(0, width_);
    switch (kind_) {
        case kind::columns:
            return padded.columns(first_, last_).equals(word_);
        case kind::anywhere:
            return padded.contains(word_);
        case kind::ignoring_case:
            return padded_view(strlowcase(text), width_).contains(word_);
        case kind::without_blanks:
            return contains_without_blanks(text, word_);
        case kind::first_letter: {
            const std::string_view token = first_token(text);
            return !token.empty() && is_ascii_letter(token.front());
        }
        case kind::first_number: {
            // The token is judged in a text buffer of the usual length, which would cut it.
            const std::string_view token = first_token(text).substr(0, record_length);
            return !token.empty() && std::all_of(token.begin(), token.end(), is_ascii_digit);
        }
    }
    return false;
}

}  // namespace flib
