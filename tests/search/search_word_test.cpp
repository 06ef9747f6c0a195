#include "flib/search/search_word.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <regex>
#include <sstream>
#include <vector>

#include "flib/io/unit.h"
#include "flib/text/string.h"
#include "support/support.h"

namespace flib {
namespace {

using text = std::string;

/// The lines of a file and a position among them, told as plainly as can be.
struct plain_lines {
    explicit plain_lines(const text& contents) {
        std::istringstream in(contents);
        for (text line; std::getline(in, line);) {
            if (!in.eof() && line.ends_with('\r')) line.pop_back();
            lines.push_back(line.substr(0, 300));  // no buffer is wider
        }
    }
    bool read(text& line) {
        if (at < lines.size()) {
            line = (lines[at] + text(300, ' ')).substr(0, line.size());
            last = at + 1;
        }
        at = std::min(at, lines.size()) + 1;
        return at <= lines.size();
    }
    void step_back() { at -= at > 0 ? 1 : 0; }

    std::vector<text> lines;
    std::size_t at = 0;    // lines.size() + 1: after the end mark
    std::size_t last = 1;  // number of the line read last
};

/// The arguments of any search.
struct arguments {
    text word;
    std::int32_t i, j, tline;
    bool limit;
};

// clang-format off
enum member { word_, tline_, free_, free_tline, ignorecase, del, back, back_del, last, last_del,
              first_letter, first_number, members };

bool search_file(int m, const arguments& a, std::int32_t fid, text_span line) {
    const auto& [word, i, j, tline, limit] = a;
    switch (m) {
        case word_: return search_word(fid, i, j, word, line);
        case tline_: return search_word_tline(fid, i, j, word, tline, limit, line);
        case free_: return search_word_free(fid, word, line);
        case free_tline: return search_word_free_tline(fid, word, tline, limit, line);
        case ignorecase: return search_word_free_ignorecase_tline(fid, word, line, tline);
        case del: return search_word_del_space(fid, word, line);
        case back: return search_word_back(fid, i, j, word, line);
        case back_del: return search_word_back_del_space(fid, word, line);
        case last: return search_word_free_last(fid, word, line);
        case last_del: return search_word_last_del_space(fid, word, line);
        case first_letter: return search_word_first_letter(fid, line);
        default: return search_word_first_number(fid, line);
    }
}
// clang-format on

bool matches(int m, arguments a, text line) {
    if (m == word_ || m == tline_ || m == back) {
        line = (line + text(9, ' ')).substr(0, std::size_t(std::max(a.i - 1, a.j)));
        return equal_padded(line.substr(std::size_t(a.i) - 1), a.word);
    }
    static const std::regex letter("[ \t]*[A-Za-z]");
    static const std::regex number("[ \t]*[0-9]+[ \t,]");
    if (m == first_letter || m == first_number) {
        return std::regex_search(line + ' ', m == first_letter ? letter : number,
                                 std::regex_constants::match_continuous);
    }
    for (text* each : {&line, &a.word}) {
        if (m == ignorecase) lowercase(*each);
        if (m == del || m == back_del || m == last_del) std::erase(*each, ' ');
    }
    return line.find(a.word) != text::npos;
}

/// The searches as they are described, by reads and steps back.
bool search_lines(int m, const arguments& a, plain_lines& file, text& line) {
    if (m == back || m == back_del) {
        for (file.step_back(); file.read(line); file.at -= 2) {
            if (matches(m, a, line)) return true;
            if (file.at == 1) return false;
        }
        return false;
    }
    if (m == last || m == last_del) {
        std::size_t found = 0;
        for (file.at = 0; file.read(line);) found = matches(m, a, line) ? file.at : found;
        if (m == last_del) del_space(line);
        if (m == last_del || found > 0) file.at = std::max<std::size_t>(found, 1) - 1;
        return found > 0 && file.read(line);
    }
    std::int64_t most = no_limit;
    if ((m == tline_ || m == free_tline) && a.limit) most = a.tline;
    if (m == ignorecase && a.tline > 0) most = a.tline + 1;
    for (; most > 0 && file.read(line); --most) {
        if (matches(m, a, line)) return true;
    }
    return false;
}

/// A random walk of reads, steps and searches in a random file and in its plain lines. Some files
/// are large, with many lines without a keyword, and lines around and beyond the window's length.
void walk(std::uint64_t seed) {
    std::mt19937_64 random(seed);
    const auto below = [&](std::uint32_t n) { return static_cast<std::int32_t>(random() % n); };
    const auto one_of = [&](std::initializer_list<const char*> all) {
        return all.begin()[random() % all.size()];
    };
    text all;
    for (int pieces = below(60); pieces > 0; --pieces) {
        all += one_of({"", "NAE=", "N", "A", "E", "=", " ", "nae=", "12", "-", ",", "\t", "\r",
                       "N AE  =", "123456789012345678901"});
        if (below(4) == 0) all += one_of({"\n", "\n", "\r\n"});
        if (below(60) == 0) all += text(195, ' ') + "NAE= NAE=";
        if (seed % 50 > 0 || below(4) > 0) continue;
        all += text(std::size_t(below(4) * 262144 + below(3)), '.') + '\n';
        for (int lines = below(4000); lines > 0; --lines) all += "   0.12  -4.5\n";
    }

    const support::scratch_directory scratch;
    const text path = scratch.file("f", all);
    const input_unit fid(path, open_at::end);
    plain_lines lines(all);
    lines.at = lines.lines.size();
    for (int step = 0; step < 60; ++step) {
        text line(std::vector<std::size_t>{200, 200, 201, 7, 1}[random() % 5], '?');
        text expected = line;
        const auto* word = one_of({"NAE=", "NAE= ", " NAE", "E", "= ", "  ", "", "N A E", "x"});
        const arguments a{word, below(9) + 1, below(9) + 1, below(9), below(2) == 0};
        const int m = below(members + 6);
        SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << step);
        if (m < members) {
            ASSERT_EQ(search_file(m, a, fid, line), search_lines(m, a, lines, expected));
        } else if (m < members + 3) {
            ASSERT_EQ(read_record(fid, line), lines.read(expected));
        } else if (m < members + 5) {
            step_back(fid);
            lines.step_back();
        } else {
            rewind_unit(fid);
            lines.at = 0;
        }
        ASSERT_EQ(line, expected);
        ASSERT_EQ(is_past_end(fid), lines.at > lines.lines.size());
        ASSERT_EQ(error_at_last_record(fid, "here").what(),
                  path + ": line " + std::to_string(lines.last) + ": here");
    }
}

TEST(Search, AgreesWithPlainLinesOnRandomWalks) {
    for (std::uint64_t seed = 1; seed <= 400 && !HasFatalFailure(); ++seed) walk(seed);
}

}  // namespace
}  // namespace flib
