// The ways a method fails.
#include "core/fail.h"

#include <cstdarg>
#include <cstdio>

namespace qdp {

PyObject* none()
{
    Py_INCREF(Py_None);
    return Py_None;
}

void print(const char* text)
{
    std::fputs(text, stderr);
}

void print_format(const char* format, ...)
{
    va_list values;
    va_start(values, format);
    std::vfprintf(stderr, format, values);
    va_end(values);
}

PyObject* print_none(const char* text)
{
    print(text);
    return none();
}

PyObject* print_none_format(const char* format, ...)
{
    va_list values;
    va_start(values, format);
    std::vfprintf(stderr, format, values);
    va_end(values);
    return none();
}

PyObject* command_result(uint32_t status, const char* refusal)
{
    return status == 0 ? none() : print_none(refusal);
}

PyObject* print_null(const char* text)
{
    print(text);
    return nullptr;
}

PyObject* print_false(const char* text)
{
    print(text);
    return PyBool_FromLong(0);
}

PyObject* raise(PyObject* exception, const char* text)
{
    PyErr_SetString(exception, text);
    return nullptr;
}

void set_system_error(const char* text)
{
    PyErr_SetString(PyExc_SystemError, text);
}

PyObject* not_built()
{
    return PyErr_Occurred() && !PyErr_ExceptionMatches(PyExc_SystemError) ? nullptr : none();
}

}  // namespace qdp
