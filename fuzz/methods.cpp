// The module's methods, and what they tell of themselves.
#include "fuzz/methods.h"

#include <cstdarg>

#include "fuzz/fault.h"
#include "fuzz/platform.h"

extern "C" PyObject* PyInit__libqdp();

// The linker lets the module parse its tuples here.
extern "C" int __wrap_PyArg_ParseTuple(PyObject* args, const char* format, ...);

namespace {

std::string last_format;

}  // namespace

int __wrap_PyArg_ParseTuple(PyObject* args, const char* format, ...)
{
    last_format = format;
    va_list places;
    va_start(places, format);
    const int is_parsed = PyArg_VaParse(args, format, places);
    va_end(places);
    return is_parsed;
}

namespace fuzz {

namespace {

std::string format_of(PyObject* function)
{
    Input nothing{{}};
    begin_platform(nothing);
    last_format.clear();
    PyObject* no_arguments = PyTuple_New(0);
    Py_XDECREF(PyCFunction_GetFunction(function)(PyCFunction_GetSelf(function), no_arguments));
    Py_DECREF(no_arguments);
    PyErr_Clear();
    end_platform();
    return last_format;
}

}  // namespace

std::vector<MethodUnderTest> methods_of_module()
{
    std::vector<MethodUnderTest> methods;
    PyObject* module = PyInit__libqdp();
    if (!module)
        fault("the module does not initialise");
    PyObject *name, *value;
    for (Py_ssize_t position = 0; PyDict_Next(PyModule_GetDict(module), &position, &name, &value);)
        if (PyCFunction_Check(value))
            methods.push_back({PyUnicode_AsUTF8(name), value, format_of(value)});
    return methods;
}

}  // namespace fuzz
