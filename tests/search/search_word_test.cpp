#include "flib/search/search_word.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "flib/io/record_file.h"
#include "flib/io/unit.h"
#include "flib/text/string.h"
#include "support/support.h"

namespace flib {
namespace {

using text = std::string;

/// The lines of a file and a position among them, told as plainly as can be.
struct plain_lines {
    explicit plain_lines(const text& contents) {
        for (std::size_t begin = 0; begin < contents.size(); begin = begins.back()) {
            const std::size_t end = std::min(contents.find('\n', begin), contents.size());
            text line = contents.substr(begin, end - begin);
            if (end < contents.size() && line.ends_with('\r')) line.pop_back();
            lines.push_back(line.substr(0, 300));  // no buffer is wider
            begins.push_back(std::min(end + 1, contents.size()));
        }
    }
    bool read(text& line) {
        past_end = past_end || at == lines.size();
        if (!past_end) line = (lines[at++] + text(300, ' ')).substr(0, line.size());
        return !past_end;
    }
    void go_to(std::size_t place) {
        at = place;
        past_end = false;
    }
    void step_back() { go_to(past_end || at == 0 ? at : at - 1); }

    std::vector<text> lines;
    std::vector<std::size_t> begins{0};  // of each line, and the end
    std::size_t at = 0;
    bool past_end = false;
};

/// The arguments of any search.
struct arguments {
    text word;
    std::int32_t i = 1;
    std::int32_t j = 1;
    std::int32_t tline = 0;
    bool limit = false;
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

bool matches(int m, const arguments& a, text line) {
    text word = a.word;
    if (m == word_ || m == tline_ || m == back) {
        line = (line + text(9, ' ')).substr(0, std::size_t(std::max(a.i - 1, a.j)));
        return equal_padded(line.substr(std::size_t(a.i) - 1), word);
    }
    if (m == first_letter || m == first_number) {
        const std::size_t begin = std::min(line.find_first_not_of(" \t"), line.size());
        text token = line.substr(begin, line.find_first_of(" \t,", begin) - begin);
        if (m == first_number) return is_number(token);
        return is_letter(text_span(token).first(std::min<std::size_t>(token.size(), 1)));
    }
    if (m == ignorecase) {
        lowercase(line);
        lowercase(word);
    } else if (m == del || m == back_del || m == last_del) {
        std::erase(line, ' ');
        std::erase(word, ' ');
    }
    return line.find(word) != text::npos;
}

/// The searches as they are described, by reads and steps back.
bool search_lines(int m, const arguments& a, plain_lines& file, text& line) {
    if (m == back || m == back_del) {
        for (file.step_back();; file.step_back()) {
            const bool top = file.at == 0;
            if (!file.read(line)) return false;
            if (matches(m, a, line)) return true;
            if (top) return false;
            file.step_back();
        }
    }
    if (m == last || m == last_del) {
        int n = 0;
        file.go_to(0);
        while (file.read(line)) n += matches(m, a, line) ? 1 : 0;
        if (m == last_del) del_space(line);
        if (n > 0 || m == last_del) file.go_to(0);
        const bool found = n > 0;
        while (n > 0 && file.read(line)) n -= matches(m, a, line) ? 1 : 0;
        return found;
    }
    std::int64_t most = no_limit;
    if ((m == tline_ || m == free_tline) && a.limit) most = a.tline;
    if (m == ignorecase && a.tline > 0) most = a.tline + 1;
    for (; most > 0 && file.read(line); --most) {
        if (matches(m, a, line)) return true;
    }
    return false;
}

/// A random walk of reads, steps and searches in a random file and in its plain lines. If `large`,
/// the file has many lines without a keyword, and lines around and beyond the length of the window.
void walk(std::uint64_t seed, bool large) {
    std::mt19937_64 random(seed);
    const auto below = [&](std::size_t n) { return random() % n; };
    const auto number = [&] { return static_cast<std::int32_t>(below(9)) + 1; };
    const auto one_of = [&](std::initializer_list<const char*> all) {
        return all.begin()[below(all.size())];
    };
    text all;
    for (std::size_t lines = below(large ? 20 : 9); lines > 0; --lines) {
        for (std::size_t n = below(large ? 4000 : 1); n > 0; --n) all += "   0.12  -4.5\n";
        if (large && below(4) == 0) all += text((below(3) + 1) * 262144 - below(3), '.');
        for (std::size_t n = below(6); n > 0; --n) {
            all +=
                one_of({"NAE=", "N", "A", "E", "=", " ", "  ", "nae=", "12", "-", ",", "\t", "\r"});
        }
        if (below(12) == 0) all += text(195, ' ') + "NAE= NAE=";
        all += one_of({"\r\n", "\n", "\n"});
    }
    all += one_of({"", "NAE=", "\r", "12  "});

    const support::scratch_directory scratch;
    plain_lines lines(all);
    const bool from_end = below(3) == 0;
    const input_unit fid(scratch.file("f", all), from_end ? open_at::end : open_at::start);
    if (from_end) lines.at = lines.lines.size();
    for (int step = 0; step < 60; ++step) {
        text line(std::vector<std::size_t>{200, 200, 201, 7, 1}[below(5)], '?');
        text expected = line;
        const arguments a{
            one_of({"NAE=", "NAE= ", " NAE", "E", "= ", "  ", "", "N A E", "12", "x", "absent"}),
            number(), number(), number() - 1, below(2) == 0};
        const auto m = static_cast<int>(below(members + 6));
        bool found = false;
        bool expected_found = false;
        if (m < members) {
            found = search_file(m, a, fid, line);
            expected_found = search_lines(m, a, lines, expected);
        } else if (m < members + 3) {
            found = read_record(fid, line);
            expected_found = lines.read(expected);
        } else if (m < members + 5) {
            step_back(fid);
            lines.step_back();
        } else {
            rewind_unit(fid);
            lines.go_to(0);
        }
        const std::size_t offset = lines.past_end ? all.size() : lines.begins[lines.at];
        SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << step << ", action " << m
                                        << " '" << a.word << "'");
        ASSERT_EQ(found, expected_found);
        ASSERT_EQ(line, expected);
        ASSERT_EQ(is_past_end(fid), lines.past_end);
        ASSERT_EQ(input_of(fid).bytes_left(), all.size() - offset);
    }
}

TEST(Search, AgreesWithPlainLinesOnRandomWalks) {
    for (std::uint64_t seed = 1; seed <= 800 && !HasFatalFailure(); ++seed)
        walk(seed, seed % 100 == 0);
}

TEST(Search, StopsWhereItMust) {
    const text keys = "a key\nb\nc key\nd\n";
    const text four = "1\n2\n3\nKey \n5\n";
    const struct {
        int member;
        arguments a;
        text contents;
        int before;     // records read before the search
        text expected;  // the result, the line ("?": left alone) and the next record
    } cases[] = {
        {word_, {"Keyword", 1, 7}, "xKeyword\nKeywords\nx\n", 0, "1|Keywords|x"},
        {word_, {"Keyword", 1, 9}, "Keywords\nKeyword  x\n", 0, "1|Keyword  x|END"},
        {tline_, {"Key", 1, 3, 3, true}, four, 0, "0|3|Key"},
        {free_, {"key"}, keys, 1, "1|c key|d"},
        {free_, {"Key"}, keys, 0, "0|d|END"},
        {free_, {"key"}, "", 0, "0|?|END"},
        {free_, {"NAE "}, "NAE=\nx NAE", 0, "1|x NAE|END"},
        {free_, {"key"}, text(198, '.') + "key\n", 0, "0|" + text(198, '.') + "ke|END"},
        {free_tline, {"Key", 1, 1, 3, false}, four, 0, "1|Key|5"},
        {ignorecase, {"kEY", 1, 1, 3}, four, 0, "1|Key|5"},
        {ignorecase, {"key", 1, 1, 2}, four, 0, "0|3|Key"},
        {del, {" N AE= "}, "x\n  NA E = 3\ny\n", 0, "1|  NA E = 3|y"},
        {back, {"c", 1, 1}, keys, 3, "1|c key|d"},  // the record read last
        {back, {"d", 1, 1}, keys, 3, "0|a key|b"},
        {back, {"d", 1, 1}, keys, 5, "0|?|END"},  // after the end mark
        {back_del, {"ak e y"}, keys, 4, "1|a key|b"},
        {last, {"key"}, keys, 4, "1|c key|d"},
        {last, {"x"}, keys, 0, "0|d|END"},
        {last_del, {"x"}, "a\n b c\n", 1, "0|bc|a"},
        {first_letter, {""}, "\n \t\n 1 a\n-a\n  b1 2\n3", 0, "1|  b1 2|3"},
        {first_number, {""}, "\na 1\n-1\n1.0\n1a\n  12,x\n3", 0, "1|  12,x|3"},
    };
    for (const auto& [m, a, contents, before, expected] : cases) {
        const support::scratch_directory scratch;
        const input_unit fid(scratch.file("f", contents));
        for (int i = 0; i < before; ++i) static_cast<void>(skip_record(fid));
        line_buffer line{"?"};
        text got = search_file(m, a, fid, line) ? "1|" : "0|";
        got.append(line.trimmed()).append("|");
        got += read_record(fid, line) ? line.trimmed() : "END";
        EXPECT_EQ(got, expected) << "member " << m << " on " << contents;
    }
}

}  // namespace
}  // namespace flib
