// Values of the libraries as Python has them, and back.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "flib/util/matrix.h"
#include "sgn/set/table.h"

namespace stigruz_python {

namespace py = pybind11;

using shape_of_array = std::vector<py::ssize_t>;

/// A new array in C order, which owns its memory, of `values` row by row.
py::array_t<double> array_of(std::span<const double> values, const shape_of_array& shape);
/// (n,)
py::array_t<double> array_of(std::span<const double> values);
/// (n, 3)
py::array_t<double> array_of(std::span<const std::array<double, 3>> rows);
/// (rows, columns)
py::array_t<double> array_of(const sgn::table& rows);
/// (rows, columns), whatever the order of the matrix
py::array_t<double> array_of(flib::matrix_view<const double> of);
/// (columns, rows): a matrix with a column per atom or state
py::array_t<double> columns_of(flib::matrix_view<const double> of);
/// (n,) of int64
py::array_t<std::int64_t> whole_numbers(std::span<const std::int32_t> values);

/// None where there is nothing.
template <class Value>
py::object or_none(const std::optional<Value>& of) {
    return of ? py::cast(*of) : py::none();
}

/// Bytes that are not UTF-8 become U+FFFD.
py::str text_of(std::string_view text);
py::list texts_of(std::span<const std::string> texts);
/// The name of a file, as os.fsdecode() gives it.
py::str file_name(const std::string& name);
/// None for an empty text.
py::object text_or_none(std::string_view text);

/// The name of a file: a str, bytes or os.PathLike without NUL. Throws TypeError or ValueError.
std::string path_from(const py::handle& path);
/// A sequence of such names, which is none itself.
std::vector<std::string> paths_from(const py::handle& paths);

/// Numbers that Python hands in, copied: row by row, whatever their order was.
struct numbers {
    shape_of_array shape;
    std::vector<double> values;

    /// Extent `axis` as a count; stigruz.Error if it is beyond what the library counts.
    std::int32_t count(std::size_t axis) const;
};

/// The array-like `of`, which is told as `what`. An extent of -1 may be any. Throws TypeError for
/// what is no array of real numbers, stigruz.Error for another shape and for values that are not
/// finite.
numbers numbers_from(const py::handle& of, const char* what, const shape_of_array& shape);

/// A count or number that Python hands in, as `what`. Throws stigruz.Error beyond 32 bits.
std::int32_t whole_number_from(const py::handle& of, const char* what);

}  // namespace stigruz_python
