// The molecular-orbital coefficients, some columns at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "flib/io/free_format.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/util/matrix.h"

#pragma GCC visibility push(hidden)
namespace flib {

/// Goes to the first coefficient. Throws stop_run (status 1) if the file is of another kind,
/// io_error if it holds no coefficients.
void go_to_mo_coefficients(const recognised_file& file);

/// How many coefficients the heading of the checkpoint `fname` tells of; nullopt if it does not,
/// and for files of another kind. Throws io_error if the file cannot be opened.
std::optional<std::int32_t> count_of_mo_coefficients(std::string_view fname);

/// What qm_file_mo_coeff_nbasis_nbsuse() reads into an `nbasis` x `nbasis` matrix, for callers that
/// do not need it all at once: the same numbers, and the same errors in the same order.
class mo_columns {
  public:
    /// `at_once` is the number of columns that are in memory.
    mo_columns(std::string_view fname, std::int32_t nbasis, std::int32_t nbsuse,
               std::int32_t at_once);

    /// The next columns; none at the end. The view holds until the next call.
    matrix_view<const double> next();

    /// Makes sure that all that has not been read yet are numbers.
    void check_rest();

  private:
    std::size_t left_;  // coefficients
    recognised_file file_;
    item_reader values_;
    matrix<double> columns_;
};

}  // namespace flib
#pragma GCC visibility pop
