// The steps that readers of quantum-chemistry output have in common.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "flib/io/free_format.h"
#include "flib/io/unit.h"
#include "flib/search/search_word.h"
#include "flib/text/fixed_text.h"
#include "flib/util/matrix.h"

namespace flib {

/// One row of a reader's table: what to do with the files of one program.
template <class Steps>
struct reader_row {
    std::string_view tag;
    Steps steps;
};

/// The steps for files of kind `tag`, trailing blanks not counting; null if the reader has none.
template <class Steps>
Steps steps_for(std::span<const reader_row<Steps>> table, std::string_view tag) {
    for (const reader_row<Steps>& row : table) {
        if (equal_padded(row.tag, tag)) return row.steps;
    }
    return nullptr;
}

/// Ends the run when a count that must be positive is not (status 0): "Error!", "NAME =" and the
/// value in 20 columns, "Stop!".
void fail_unless_positive(std::string_view name, std::int32_t value);

/// Throws the io_error of a file that ends without a line that holds `word`, if not `found`.
void fail_unless_found(bool found, std::int32_t fid, std::string_view word);

/// Goes on to the first line with `word`, which `line` then holds; io_error if there is none.
void go_to(std::int32_t fid, std::string_view word, text_span line);

/// The same with blanks counting nowhere.
void go_to_del_space(std::int32_t fid, std::string_view word, text_span line);

/// The same with columns `i` to `j` equal to `word`.
void go_to_columns(std::int32_t fid, std::int32_t i, std::int32_t j, std::string_view word,
                   text_span line);

/// Goes on to the first line whose first token is a number and steps back, so that it is read
/// next. False, and the unit at the end of the file, if there is none.
bool go_before_first_number(std::int32_t fid);

/// Text fields for the element symbols of a table, as wide as the longest symbol.
using symbol_fields = std::vector<fixed_text<3>>;

// Atom tables: one line per atom, of which `thrown_away` tokens come before the value wanted.

/// Reads `nat.size()` rows with an atomic number each.
void read_number_rows(std::int32_t fid, std::int32_t thrown_away, std::span<std::int32_t> nat);

/// Reads rows with a real number each.
void read_real_rows(std::int32_t fid, std::int32_t thrown_away, std::span<double> values);

/// Reads rows with a vector each into the columns of the 3 x natom matrix `x`.
void read_vector_rows(std::int32_t fid, std::int32_t thrown_away, matrix_view<double> x);

/// Reads `natom` rows with an element symbol each, followed by `then_thrown_away` tokens.
symbol_fields read_symbol_rows(std::int32_t fid, std::int32_t natom, std::int32_t thrown_away,
                               std::int32_t then_thrown_away = 0);

}  // namespace flib
