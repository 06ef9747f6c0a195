// stigruz._core: the libraries as functions of values. What users see stands in ../stigruz.

#include "module.h"

#include "flib/util/units.h"
#include "sgn/set/modes.h"
#include "sgn/states/follow.h"

namespace stigruz_python {
namespace {

extern "C" PyObject* refuse_new(PyTypeObject* type, PyObject*, PyObject*) {
    PyErr_Format(PyExc_TypeError, "%s cannot be made directly", type->tp_name);
    return nullptr;
}

}  // namespace

void forbid_new(const py::handle& of_class) {
    reinterpret_cast<PyTypeObject*>(of_class.ptr())->tp_new = refuse_new;
}

void interruption::at(std::size_t done) const {
    const py::gil_scoped_acquire locked;
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    if (!progress_.is_none()) progress_(done);
}

}  // namespace stigruz_python

PYBIND11_MODULE(_core, module) {
    module.doc() = "What stigruz takes from its libraries.";
    stigruz_python::add_errors();
    stigruz_python::add_facts(module);
    stigruz_python::add_jobs(module);
    stigruz_python::add_sets(module);
    module.attr("bohr") = flib::bohr_radius;
    module.attr("hartree") = flib::hartree_energy;
    module.attr("atomic_mass_unit") = sgn::electron_masses_per_u;
    module.attr("hartree_in_wavenumbers") = sgn::wavenumber_per_hartree;
    const sgn::overlap_limits limits;
    module.attr("mixed_below") = limits.mixed_below;
    module.attr("lost_below") = limits.lost_below;
    module.attr("near_energies") = sgn::near_energies;
    module.attr("version") = STIGRUZ_VERSION;
}
