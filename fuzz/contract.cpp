// What every call keeps to.
#include "fuzz/contract.h"

#include "fuzz/fault.h"

namespace fuzz {

namespace {

// Results are made of these types alone, keys are texts, and no place is empty.
void check_object(const char* name, PyObject* object)
{
    if (!object)
        fault("%s: the result has an empty place", name);
    if (PyList_CheckExact(object)) {
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(object); ++i)
            check_object(name, PyList_GET_ITEM(object, i));
    } else if (PyTuple_CheckExact(object)) {
        for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(object); ++i)
            check_object(name, PyTuple_GET_ITEM(object, i));
    } else if (PyDict_CheckExact(object)) {
        PyObject *key, *value;
        for (Py_ssize_t position = 0; PyDict_Next(object, &position, &key, &value);) {
            if (!PyUnicode_CheckExact(key))
                fault("%s: a key is no text", name);
            check_object(name, value);
        }
    } else if (!PyLong_CheckExact(object) && !PyBool_Check(object) && !PyUnicode_CheckExact(object) &&
               object != Py_None) {
        fault("%s: a part of the result is a %s", name, Py_TYPE(object)->tp_name);
    }
}

// What may stand beside an exception: what a refused call returns, or counters without their private part.
bool may_stand_beside_exception(PyObject* result)
{
    const bool is_zero = PyLong_CheckExact(result) && PyLong_AsLong(result) == 0;
    return result == Py_None || result == Py_False || is_zero;
}

}  // namespace

void check_outcome(const char* name, PyObject* result, bool may_be_null_alone)
{
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    if (!result && !type && !may_be_null_alone)
        fault("%s: NULL without an exception", name);
    if (result)
        check_object(name, result);
    const bool lacked_memory = type && PyErr_GivenExceptionMatches(type, PyExc_MemoryError);
    if (result && type && !may_stand_beside_exception(result) && !(may_be_null_alone && lacked_memory))
        fault("%s: a result beside an exception", name);
    Py_XDECREF(result);
    Py_XDECREF(type);
    Py_XDECREF(value);
    Py_XDECREF(traceback);
}

}  // namespace fuzz
