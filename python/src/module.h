// The parts of the extension module.
#pragma once

#include <pybind11/pybind11.h>

#include <functional>
#include <utility>

namespace stigruz_python {

namespace py = pybind11;

/// What the libraries throw becomes stigruz.Error, or stigruz.MissingFileError.
void add_errors();
void add_facts(py::module_& module);
void add_jobs(py::module_& module);
void add_sets(py::module_& module);

/// What `work` returns, which runs without the interpreter's lock and must not touch Python.
template <class Work>
auto without_lock(Work work) {
    const py::gil_scoped_release unlocked;
    return work();
}

/// Objects of the class come from functions of the module only. Without this, one that is made by
/// __new__() alone would be of memory that nobody has written to.
void forbid_new(const py::handle& of_class);

/// For loops of the library, which run without the lock: lets signals end them, and calls
/// `progress` (None, or a callable) with the number of steps that are done.
class interruption {
  public:
    explicit interruption(py::object progress) : progress_(std::move(progress)) {}
    void at(std::size_t done) const;

  private:
    py::object progress_;
};

}  // namespace stigruz_python
