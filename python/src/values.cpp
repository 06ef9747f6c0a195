#include "values.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "flib/io/stop_run.h"

namespace stigruz_python {
namespace {

constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();

std::string text_of_shape(const shape_of_array& shape) {
    std::string text = "(";
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (i > 0) text += ", ";
        text += shape[i] < 0 ? "any" : std::to_string(shape[i]);
    }
    return text + (shape.size() == 1 ? ",)" : ")");
}

bool fits(const shape_of_array& shape, const shape_of_array& wanted) {
    return std::ranges::equal(shape, wanted, [](py::ssize_t extent, py::ssize_t its) {
        return its < 0 ? extent <= most : extent == its;
    });
}

template <class Element>
Element* data_of(py::array_t<Element>& array) {
    return static_cast<Element*>(array.mutable_data());
}

}  // namespace

py::array_t<double> array_of(std::span<const double> values, const shape_of_array& shape) {
    py::array_t<double> array(shape);
    std::ranges::copy(values, data_of(array));
    return array;
}

py::array_t<double> array_of(std::span<const double> values) {
    return array_of(values, {static_cast<py::ssize_t>(values.size())});
}

py::array_t<double> array_of(std::span<const std::array<double, 3>> rows) {
    py::array_t<double> array(shape_of_array{static_cast<py::ssize_t>(rows.size()), 3});
    double* to = data_of(array);
    for (const auto& row : rows) to = std::ranges::copy(row, to).out;
    return array;
}

py::array_t<double> array_of(const sgn::table& rows) {
    return array_of(rows.values,
                    {static_cast<py::ssize_t>(rows.rows), static_cast<py::ssize_t>(rows.columns)});
}

py::array_t<double> array_of(flib::matrix_view<const double> of) {
    py::array_t<double> array(shape_of_array{of.rows(), of.columns()});
    double* to = data_of(array);
    for (std::int32_t i = 1; i <= of.rows(); ++i) {
        for (std::int32_t j = 1; j <= of.columns(); ++j) *to++ = of(i, j);
    }
    return array;
}

py::array_t<double> columns_of(flib::matrix_view<const double> of) {
    return array_of(of.all(), {of.columns(), of.rows()});
}

py::array_t<std::int64_t> whole_numbers(std::span<const std::int32_t> values) {
    py::array_t<std::int64_t> array(static_cast<py::ssize_t>(values.size()));
    std::ranges::copy(values, data_of(array));
    return array;
}

py::str text_of(std::string_view text) {
    PyObject* made =
        PyUnicode_DecodeUTF8(text.data(), static_cast<py::ssize_t>(text.size()), "replace");
    if (made == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(made);
}

py::list texts_of(std::span<const std::string> texts) {
    py::list list;
    for (const std::string& each : texts) list.append(text_of(each));
    return list;
}

py::str file_name(const std::string& name) {
    PyObject* made =
        PyUnicode_DecodeFSDefaultAndSize(name.data(), static_cast<py::ssize_t>(name.size()));
    if (made == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(made);
}

py::object text_or_none(std::string_view text) {
    if (text.empty()) return py::none();
    return text_of(text);
}

std::string path_from(const py::handle& path) {
    PyObject* bytes = nullptr;
    if (PyUnicode_FSConverter(path.ptr(), &bytes) == 0) throw py::error_already_set();
    return py::reinterpret_steal<py::bytes>(bytes);
}

std::vector<std::string> paths_from(const py::handle& paths) {
    // The characters of one name would be taken for names.
    if (py::isinstance<py::str>(paths) || py::isinstance<py::bytes>(paths)) {
        throw py::type_error("files must be a sequence of names, not one name");
    }
    std::vector<std::string> names;
    for (const py::handle each : py::iter(paths)) names.push_back(path_from(each));
    return names;
}

std::int32_t numbers::count(std::size_t axis) const {
    return static_cast<std::int32_t>(shape[axis]);  // fits() has seen to it
}

numbers numbers_from(const py::handle& of, const char* what, const shape_of_array& shape) {
    const py::array given = py::array(py::reinterpret_borrow<py::object>(of));
    const char kind = given.dtype().kind();
    if (std::strchr("biuf", kind) == nullptr) {
        throw py::type_error(std::string(what) + " must be an array of real numbers");
    }
    numbers result{{given.shape(), given.shape() + given.ndim()}, {}};
    if (!fits(result.shape, shape)) {
        throw flib::run_error(std::string(what) + " must be of the shape " + text_of_shape(shape) +
                              ", not " + text_of_shape(result.shape));
    }
    const py::array_t<double, py::array::c_style | py::array::forcecast> in_order(given);
    const std::span<const double> all(in_order.data(), static_cast<std::size_t>(in_order.size()));
    result.values.assign(all.begin(), all.end());
    if (!std::ranges::all_of(result.values, [](double value) { return std::isfinite(value); })) {
        throw flib::run_error(std::string(what) + " must be finite numbers");
    }
    return result;
}

std::int32_t whole_number_from(const py::handle& of, const char* what) {
    const py::object index = py::reinterpret_steal<py::object>(PyNumber_Index(of.ptr()));
    if (!index) throw py::error_already_set();
    int overflow = 0;
    const long long value = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
    if (value == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
    if (overflow != 0 || value > most || value < -most) {
        throw flib::run_error(std::string(what) + " is too large a number");
    }
    return static_cast<std::int32_t>(value);
}

}  // namespace stigruz_python
