// Endings of the libraries as exceptions of Python.

#include <cerrno>
#include <exception>
#include <filesystem>
#include <string>

#include "flib/io/stop_run.h"
#include "module.h"
#include "values.h"

namespace stigruz_python {
namespace {

/// Raises the class `name` of stigruz._errors with (message, file, line, reason).
void raise(const char* name, const std::string& message, const py::object& file,
           const py::object& line, const std::string& reason) {
    const py::object type = py::module_::import("stigruz._errors").attr(name);
    PyErr_SetObject(type.ptr(), type(text_of(message), file, line, text_of(reason)).ptr());
}

bool is_missing(const flib::io_error& error) {
    return error.reason() == "cannot be opened: " + flib::errno_text(ENOENT);
}

void translate(std::exception_ptr thrown) {
    if (!thrown) return;
    try {
        std::rethrow_exception(std::move(thrown));
    } catch (const flib::io_error& error) {
        const py::object line = error.line() > 0 ? py::cast(error.line()) : py::none();
        raise(is_missing(error) ? "MissingFileError" : "Error", error.what(),
              file_name(error.file()), line, error.reason());
    } catch (const flib::ending& error) {
        raise("Error", error.what(), py::none(), py::none(), error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        raise("Error", error.what(), file_name(error.path1().string()), py::none(),
              error.code().message());
    }
}

}  // namespace

void add_errors() {
    py::register_local_exception_translator(translate);
}

}  // namespace stigruz_python
