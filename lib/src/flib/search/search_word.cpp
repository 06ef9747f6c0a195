#include "flib/search/search_word.h"

#include "flib/io/unit.h"
#include "flib/text/line_test.h"
#include "flib/text/string.h"

namespace flib {
namespace {

std::int64_t most_lines(std::int32_t tline, bool limit) {
    return limit ? tline : no_limit;
}

}  // namespace

bool search_word(std::int32_t fid, std::int32_t i, std::int32_t j, std::string_view word,
                 text_span line) {
    return find_forward(fid, line_test::columns(i, j, word, line.size()), line);
}

bool search_word_tline(std::int32_t fid, std::int32_t i, std::int32_t j, std::string_view word,
                       std::int32_t tline, bool limit, text_span line) {
    return find_forward(fid, line_test::columns(i, j, word, line.size()), line,
                        most_lines(tline, limit));
}

bool search_word_free(std::int32_t fid, std::string_view word, text_span line) {
    return find_forward(fid, line_test::anywhere(word, line.size()), line);
}

bool search_word_free_tline(std::int32_t fid, std::string_view word, std::int32_t tline, bool limit,
                            text_span line) {
    return find_forward(fid, line_test::anywhere(word, line.size()), line,
                        most_lines(tline, limit));
}

bool search_word_free_ignorecase_tline(std::int32_t fid, std::string_view cword, text_span cline,
                                       std::int32_t tline) {
    // One line more than `tline`: the lines are counted before the first is tested, but after each
    // of the others.
    const std::int64_t most = tline > 0 ? std::int64_t{tline} + 1 : no_limit;
    return find_forward(fid, line_test::anywhere_ignoring_case(cword, cline.size()), cline, most);
}

bool search_word_del_space(std::int32_t fid, std::string_view word, text_span line) {
    return find_forward(fid, line_test::anywhere_without_blanks(word, line.size()), line);
}

bool search_word_back(std::int32_t fid, std::int32_t i, std::int32_t j, std::string_view word,
                      text_span line) {
    return find_backward(fid, line_test::columns(i, j, word, line.size()), line);
}

bool search_word_back_del_space(std::int32_t fid, std::string_view word, text_span line) {
    return find_backward(fid, line_test::anywhere_without_blanks(word, line.size()), line);
}

bool search_word_free_last(std::int32_t fid, std::string_view word, text_span line) {
    return find_last(fid, line_test::anywhere(word, line.size()), line);
}

bool search_word_last_del_space(std::int32_t fid, std::string_view word, text_span line) {
    if (find_last(fid, line_test::anywhere_without_blanks(word, line.size()), line)) return true;
    del_space(line);
    rewind_unit(fid);
    return false;
}

bool search_word_first_letter(std::int32_t fid, text_span line) {
    return find_forward(fid, line_test::first_letter(line.size()), line);
}

bool search_word_first_number(std::int32_t fid, text_span line) {
    return find_forward(fid, line_test::first_number(line.size()), line);
}

}  // namespace flib
