// The measured methods with nanobind.
#include <nanobind/nanobind.h>

namespace py = nanobind;

static py::object steal(PyObject* object)
{
    return py::steal(object);
}

[[noreturn]] static void fail()
{
    py::raise_python_error();
}

#include "bench/ways/bound_methods.h"

NB_MODULE(with_nanobind, module)
{
    define_methods(module);
}
