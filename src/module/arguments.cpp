// Integers that come in tuples and dicts.
#include "module/arguments.h"

namespace qdp {

bool take_integer(PyObject* object, uint32_t& value)
{
    const long taken = PyLong_AsLong(object);
    if (taken == -1 && PyErr_Occurred())
        return false;
    value = static_cast<uint32_t>(taken);
    return true;
}

bool take_lcores(PyObject* object, Lcores& lcores)
{
    if (!PyTuple_Check(object))
        return false;
    const Py_ssize_t count = PyTuple_Size(object);
    if (count > static_cast<Py_ssize_t>(max_lcores))
        return false;
    lcores.count = static_cast<uint32_t>(count);
    for (uint32_t i = 0; i < lcores.count; ++i)
        if (!take_integer(PyTuple_GetItem(object, i), lcores.ids[i]))
            return false;
    return true;
}

}  // namespace qdp
