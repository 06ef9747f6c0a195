#include "flib/excited/detail/mo_columns.h"

#include <algorithm>
#include <span>

#include "flib/excited/basis_functions.h"
#include "flib/io/number.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"
#include "flib/text/line_test.h"

namespace flib {

// Alpha MO coefficients                      R   N=         484
//   9.95564210E-01  2.07893465E-02 -1.11022302E-16  1.23456789E-02  0.00000000E+00
void go_to_mo_coefficients(const recognised_file& file) {
    file.require(tag::gaussian_fchk);
    line_buffer line;
    go_to(file.fid, keyword::fchk_mo_coefficients, line);
}

std::optional<std::int32_t> count_of_mo_coefficients(std::string_view fname) {
    const recognised_file file(fname);
    line_buffer line;
    if (!file.is(tag::gaussian_fchk)) return {};
    if (!search_word_free(file.fid, keyword::fchk_mo_coefficients, line)) return {};
    constexpr std::string_view label = "N=";
    const std::string_view heading = line.trimmed();
    const std::size_t at = heading.find(label);
    if (at == std::string_view::npos) return {};
    std::int32_t count = 0;
    const std::string_view number = first_token(trim_left(heading.substr(at + label.size())));
    if (parse_integer(number, count) != number_error::none) return {};
    return count;
}

namespace {

/// The number of coefficients that an `nbasis` x `nbasis` matrix is to take.
std::size_t count_of(std::string_view fname, std::int32_t nbasis, std::int32_t nbsuse) {
    require_basis_functions(fname, nbasis);
    const char* const what = "the MO coefficients";
    const std::size_t count = element_count({nbsuse, nbasis}, what);
    require_room(fname, count, "MO coefficients", element_count({nbasis, nbasis}, what));
    return count;
}

item_reader reader_of(const recognised_file& file, std::size_t count) {
    go_to_mo_coefficients(file);
    item_reader reader(file.fid);
    reader.begin_reals(count);
    return reader;
}

}  // namespace

mo_columns::mo_columns(std::string_view fname, std::int32_t nbasis, std::int32_t nbsuse,
                       std::int32_t at_once)
    : left_(count_of(fname, nbasis, nbsuse)),
      file_(fname),
      values_(reader_of(file_, left_)),
      columns_(nbsuse, std::min(at_once, nbasis), "the MO coefficients") {}

matrix_view<const double> mo_columns::next() {
    const std::int32_t rows = columns_.view().rows();
    if (left_ == 0) return {nullptr, rows, 0};
    const std::span<double> room = columns_.view().all();
    const std::span<double> values = room.first(std::min(room.size(), left_));
    values_.take_part(values);
    left_ -= values.size();
    if (left_ == 0) values_.finish();
    const auto columns = values.size() / static_cast<std::size_t>(rows);
    return {values.data(), rows, static_cast<std::int32_t>(columns)};
}

void mo_columns::check_rest() {
    values_.check_part(left_);
    left_ = 0;
    values_.finish();
}

}  // namespace flib
