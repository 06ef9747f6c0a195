#include "flib/qm_file/detail/reader_steps.h"

#include "flib/io/detail/record_file.h"
#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/qm_file/detail/recognise.h"

namespace flib {

recognised_file::recognised_file(std::string_view fname) : fid(fname) {
    line_buffer version;
    recognise(fid, tag, version, class_code);
    rewind_unit(fid);
}

void recognised_file::require(std::string_view its_tag) const {
    if (!is(its_tag)) stop_not_implemented();
}

void require_positive(std::string_view name, std::int32_t value, const std::string& hint) {
    if (value >= 1) return;
    throw stop_run{
        exit_status::complete,
        {"  Error!", "  " + std::string(name) + " =" + integer_field(value, 20), "  Stop!"},
        hint};
}

void require_room(std::string_view fname, std::size_t count, std::string_view what,
                  std::size_t room) {
    if (count <= room) return;
    throw io_error(trim_right(fname), 0,
                   std::to_string(count) + " " + std::string(what) +
                       " were asked for, but there is room for " + std::to_string(room));
}

void require_found(bool found, std::int32_t fid, std::string_view word) {
    if (found) return;
    const std::string message = "the file ends without a line with '" + std::string(word) + "'";
    throw line_not_found(input_of(fid).error_here(message), word);
}

void go_to(std::int32_t fid, std::string_view word, text_span line) {
    require_found(search_word_free(fid, word, line), fid, word);
}

void go_to_del_space(std::int32_t fid, std::string_view word, text_span line) {
    require_found(search_word_del_space(fid, word, line), fid, word);
}

void go_to_columns(std::int32_t fid, std::int32_t i, std::int32_t j, std::string_view word,
                   text_span line) {
    require_found(search_word(fid, i, j, word, line), fid, word);
}

bool go_before_first_number(std::int32_t fid) {
    line_buffer line;
    const bool found = search_word_first_number(fid, line);
    step_back(fid);
    return found;
}

void read_number_rows(std::int32_t fid, std::int32_t thrown_away, std::span<std::int32_t> nat) {
    for (std::int32_t& number : nat) read_items(fid, discard{thrown_away}, number);
}

void read_orientation_numbers(std::int32_t fid, std::span<std::int32_t> nat) {
    for (std::int32_t& number : nat) {
        do {
            read_items(fid, discard{1}, number);
        } while (number < 0);
    }
}

void read_real_rows(std::int32_t fid, std::int32_t thrown_away, std::span<double> values) {
    for (double& value : values) read_items(fid, discard{thrown_away}, value);
}

void read_vector_rows(std::int32_t fid, std::int32_t thrown_away, matrix_view<double> x) {
    for (std::int32_t i = 1; i <= x.columns(); ++i) {
        read_items(fid, discard{thrown_away}, x(1, i), x(2, i), x(3, i));
    }
}

symbol_fields read_symbol_rows(std::int32_t fid, std::int32_t natom, std::int32_t thrown_away,
                               std::int32_t then_thrown_away) {
    // Grows as it is read, so that a count that no file could hold costs nothing.
    symbol_fields symbols;
    for (std::int32_t i = 0; i < natom; ++i) {
        read_items(fid, discard{thrown_away}, symbols.emplace_back(), discard{then_thrown_away});
    }
    return symbols;
}

}  // namespace flib
