// The steps that readers of quantum-chemistry output have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/search/search_word.h"
#include "flib/text/fixed_text.h"
#include "flib/util/matrix.h"

#pragma GCC visibility push(hidden)
namespace flib {

/// A file that was opened and whose program was recognised; the unit stands at its start. Throws
/// io_error if it cannot be opened or is empty.
struct recognised_file {
    explicit recognised_file(std::string_view fname);

    bool is(std::string_view its_tag) const { return tag == its_tag; }
    /// Ends the run as stop_not_implemented() does if the file is of another kind.
    void require(std::string_view its_tag) const;

    input_unit fid;
    line_buffer tag;
    std::int32_t class_code = -1;  ///< as qm_file_type() gives it
};

/// One row of a reader's table: how it reads the files of one program. The unit stands at the start
/// of the file, and what is read goes to `out`. Steps that return true have the reader report the
/// table as read (`info` 0); those that return nothing report nothing.
template <class Output>
struct reader_row {
    using output = Output;
    using reporting_steps = bool (*)(std::int32_t fid, Output out);
    using quiet_steps = void (*)(std::int32_t fid, Output out);

    constexpr reader_row(std::string_view its_tag, reporting_steps steps)
        : tag(its_tag), reporting(steps) {}
    constexpr reader_row(std::string_view its_tag, quiet_steps steps)
        : tag(its_tag), quiet(steps) {}

    bool read(std::int32_t fid, Output out) const {
        if (reporting != nullptr) return reporting(fid, out);
        quiet(fid, out);
        return false;
    }

    std::string_view tag;
    reporting_steps reporting = nullptr;
    quiet_steps quiet = nullptr;
};

/// Whether there is a row for files of kind `tag`.
template <class Row, std::size_t rows>
bool has_row(const Row (&table)[rows], std::string_view tag) {
    for (const Row& row : table) {
        if (equal_padded(row.tag, tag)) return true;
    }
    return false;
}

/// Follows the row for the program of `file`, if there is one. `info` becomes 0 if it reports its
/// table as read, else -1.
template <class Row, std::size_t rows>
void read_by_row(const recognised_file& file, const Row (&table)[rows], typename Row::output out,
                 std::int32_t& info) {
    info = -1;
    for (const Row& row : table) {
        if (!file.is(row.tag)) continue;
        if (row.read(file.fid, out)) info = 0;
        return;
    }
}

/// Ends the run when a count that must be positive is not (status 0): "Error!", "NAME =" and the
/// value in 20 columns, "Stop!".
void require_positive(std::string_view name, std::int32_t value, const std::string& hint = {});

/// The io_error of an array handed in that has room for `room` values where `count` are to be read
/// from `fname`; nothing happens if they fit.
void require_room(std::string_view fname, std::size_t count, std::string_view what,
                  std::size_t room);

/// The end of a file in which a line that holds `word` was looked for.
class line_not_found : public io_error {
  public:
    line_not_found(const io_error& at, std::string_view word) : io_error(at), word_(word) {}
    const std::string& word() const { return word_; }

  private:
    std::string word_;
};

/// Throws line_not_found if not `found`.
void require_found(bool found, std::int32_t fid, std::string_view word);

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

/// Reads the atomic numbers of a Gaussian log's orientation table. Those below 0 are of dummy atoms
/// of a Z-matrix, which are passed over.
void read_orientation_numbers(std::int32_t fid, std::span<std::int32_t> nat);

/// Reads rows with a real number each.
void read_real_rows(std::int32_t fid, std::int32_t thrown_away, std::span<double> values);

/// Reads rows with a vector each into the columns of the 3 x natom matrix `x`.
void read_vector_rows(std::int32_t fid, std::int32_t thrown_away, matrix_view<double> x);

/// Reads `natom` rows with an element symbol each, followed by `then_thrown_away` tokens.
symbol_fields read_symbol_rows(std::int32_t fid, std::int32_t natom, std::int32_t thrown_away,
                               std::int32_t then_thrown_away = 0);

}  // namespace flib
#pragma GCC visibility pop
