// The measured methods with pybind11.
#include <pybind11/pybind11.h>

namespace py = pybind11;

static py::object steal(PyObject* object)
{
    return py::reinterpret_steal<py::object>(object);
}

[[noreturn]] static void fail()
{
    throw py::error_already_set();
}

#include "bench/ways/bound_methods.h"

PYBIND11_MODULE(with_pybind11, module)
{
    define_methods(module);
}
