#include "common/table.h"
#include "flib/text/shown_text.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace tools {
namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t least_words = 24;  // wide enough for words to be wrapped in
constexpr std::size_t indentation = 4;   // of words below their row

/// The columns that are shown, and how wide they are. The words are not among them.
struct layout {
    std::vector<std::size_t> shown;
    std::vector<std::size_t> width;  // of all columns

    /// Where the words begin.
    std::size_t words_at() const {
        std::size_t sum = 0;
        for (const std::size_t i : shown) sum += width[i] + gap;
        return sum;
    }
};

/// Leaves out columns until the words have the room they need, or none can be left out any more.
void make_room(layout& how, const std::vector<table_column>& columns, std::size_t least,
               std::size_t limit) {
    while (how.words_at() + least > limit) {
        const auto next =
            std::max_element(how.shown.begin(), how.shown.end(), [&](std::size_t a, std::size_t b) {
                return columns[a].expendable < columns[b].expendable;
            });
        if (next == how.shown.end() || columns[*next].expendable == 0) return;
        how.shown.erase(next);
    }
}

std::string padded(const table_cell& cell, const table_column& column, std::size_t width,
                   const terminal& on) {
    const std::string text = flib::shortened(cell.text, std::max<std::size_t>(width, 5));
    const std::size_t taken = flib::shown_width(text);
    const std::string blanks(width > taken ? width - taken : 0, ' ');
    const std::string words = painted(text, cell.colour, on);
    return column.right ? blanks + words : words + blanks;
}

}  // namespace

std::string table_text(const table& what, const terminal& on) {
    const std::size_t last = what.columns.size() - 1;
    layout how;
    for (std::size_t i = 0; i <= last; ++i) {
        std::size_t width = flib::shown_width(what.columns[i].heading);
        for (const auto& row : what.rows) width = std::max(width, flib::shown_width(row[i].text));
        how.width.push_back(width);
        if (i < last) how.shown.push_back(i);
    }
    std::size_t room = how.width[last];
    bool below = false;
    if (on.width) {
        const std::size_t least = std::min(room, least_words);
        make_room(how, what.columns, least, *on.width);
        below = how.words_at() + least > *on.width;
        if (below) {
            // Of the other columns, the first gives way.
            const std::size_t rest = how.words_at() - how.width[0] - gap;
            const std::size_t left = *on.width > rest ? *on.width - rest : 0;
            how.width[0] = std::min(how.width[0], std::max<std::size_t>(left, 5));
        }
        const std::size_t before = below ? indentation : how.words_at();
        room = *on.width > before ? *on.width - before : 1;
    }

    std::string text;
    const auto add = [&](const std::vector<table_cell>& row, bool heading) {
        std::string line;
        for (const std::size_t i : how.shown) {
            line += padded(row[i], what.columns[i], how.width[i], on) + std::string(gap, ' ');
        }
        if (below) {
            line.erase(line.find_last_not_of(' ') + 1);
            line += '\n';
        }
        const std::size_t hanging = below ? indentation : how.words_at();
        bool first = !below;
        for (const std::string& words : flib::wrapped(row[last].text, room)) {
            if (heading && below) break;
            if (!std::exchange(first, false)) line.append(hanging, ' ');
            line += painted(words, row[last].colour, on) + '\n';
        }
        text += line;
    };
    std::vector<table_cell> headings;
    for (const table_column& column : what.columns) headings.push_back({column.heading, {}});
    add(headings, true);
    for (const auto& row : what.rows) add(row, false);
    return text;
}

}  // namespace tools
