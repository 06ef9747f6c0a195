// Keyword searches over an open text file.
#pragma once

#include <cstdint>
#include <string_view>

#include "flib/text/fixed_text.h"

namespace flib {

// Each search reads records of unit `fid` into `line` (a longer record is cut at its length, a
// shorter one padded with blanks) and returns true when it stops just after a record that matches,
// which `line` then holds as read. It returns false when there is none; `line` then holds the last
// record read and, unless stated otherwise, the unit stands at the end of the file. Forward
// searches begin with the record that a plain read would return next; nothing is rewound.
//
// `word` counts at its full passed length: a blank at its end must match a blank of the line or of
// its padding. Nothing is printed, and the end of the file is no error.

/// Columns `i` to `j` (1-based, inclusive) equal `word`, the shorter side padded with blanks.
bool search_word(std::int32_t fid, std::int32_t i, std::int32_t j, std::string_view word,
                 text_span line);

/// As search_word, but reads at most `tline` records if `limit`, and stands after the last of them.
bool search_word_tline(std::int32_t fid, std::int32_t i, std::int32_t j, std::string_view word,
                       std::int32_t tline, bool limit, text_span line);

/// `word` occurs anywhere in the line; letters of different case differ.
bool search_word_free(std::int32_t fid, std::string_view word, text_span line);

/// As search_word_free, but reads at most `tline` records if `limit`, and stands after the last.
bool search_word_free_tline(std::int32_t fid, std::string_view word, std::int32_t tline, bool limit,
                            text_span line);

/// `cword` occurs anywhere in the line, both in lower case. With a positive `tline` at most
/// `tline` + 1 records are read; with any other there is no limit.
bool search_word_free_ignorecase_tline(std::int32_t fid, std::string_view cword, text_span cline,
                                       std::int32_t tline);

/// `word` without its blanks occurs anywhere in the line without its blanks.
bool search_word_del_space(std::int32_t fid, std::string_view word, text_span line);

/// As search_word, but tests the record read last, and then earlier ones. Without a match the unit
/// stands just after the first record. After an end mark it fails at once.
bool search_word_back(std::int32_t fid, std::int32_t i, std::int32_t j, std::string_view word,
                      text_span line);

/// As search_word_del_space, in the direction of search_word_back.
bool search_word_back_del_space(std::int32_t fid, std::string_view word, text_span line);

/// The last line of the whole file in which `word` occurs, wherever the unit stands before.
bool search_word_free_last(std::int32_t fid, std::string_view word, text_span line);

/// As search_word_free_last, blanks removed as in search_word_del_space. Without a match `line`
/// holds the last record without its blanks, and the unit stands at the start of the file.
bool search_word_last_del_space(std::int32_t fid, std::string_view word, text_span line);

/// The first token of the line begins with a letter.
bool search_word_first_letter(std::int32_t fid, text_span line);

/// The first token of the line consists of decimal digits only.
bool search_word_first_number(std::int32_t fid, text_span line);

}  // namespace flib
