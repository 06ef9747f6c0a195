#include "flib/text/string.h"

#include <algorithm>

namespace flib {
namespace {

/// Left-justifies `a` and tells whether it is non-blank and made of `wanted` characters only.
template <class Predicate>
bool only(text_span a, Predicate wanted) {
    assign_text(a, trim_left(view_of(a)));
    const std::string_view word = trim_right(view_of(a));
    return !word.empty() && std::all_of(word.begin(), word.end(), wanted);
}

}  // namespace

void del_space(text_span a) {
    const auto end = std::remove(a.begin(), a.end(), ' ');
    std::fill(end, a.end(), ' ');
}

void str_delete(text_span string, std::string_view word) {
    const std::string text = strlowcase(trim_right(view_of(string)));
    const std::string wanted = strlowcase(trim_right(word));
    const std::size_t ls = text.size();
    const std::size_t lw = wanted.size();
    if (lw > ls) return;

    // i and k are 1-based: the position read next, and the position written next.
    std::string kept(string.size(), ' ');
    std::size_t i = 0;
    std::size_t k = 0;
    while (i <= ls - lw + 1) {
        ++i;
        ++k;
        if (i + lw - 1 <= ls && text.compare(i - 1, lw, wanted) == 0) {
            i += lw;
            if (i > ls) break;
        }
        if (i > ls - lw) {
            if (i != ls - lw + 1) continue;
            for (; i <= ls && k <= kept.size(); ++i, ++k) kept[k - 1] = string[i - 1];
            break;
        }
        kept[k - 1] = string[i - 1];
    }
    assign_text(string, kept);
}

std::string strlowcase(std::string_view input_string) {
    std::string lowered(input_string);
    lowercase(lowered);
    return lowered;
}

void lowercase(text_span a) {
    std::transform(a.begin(), a.end(), a.begin(), to_lower);
}

bool is_letter(text_span a) {
    return only(a, is_ascii_letter);
}

bool is_number(text_span a) {
    return only(a, is_ascii_digit);
}

std::int32_t number_of_words(std::string_view words) {
    const std::size_t walked = trim(words).size();
    std::int32_t count = 0;
    bool in_blank = true;
    for (const char c : words.substr(0, walked)) {
        if (c != ' ' && in_blank) ++count;
        in_blank = c == ' ';
    }
    return count;
}

}  // namespace flib
