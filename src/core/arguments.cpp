// Arguments that many methods share.
#include "core/arguments.h"

#include "core/fail.h"

namespace qdp {

bool parse_integer(PyObject* object, uint32_t& value)
{
    const long taken = PyLong_AsLong(object);
    if (taken == -1 && PyErr_Occurred())
        return false;
    value = static_cast<uint32_t>(taken);
    return true;
}

bool parse_lcores(PyObject* object, Lcores& lcores)
{
    if (!PyTuple_Check(object))
        return false;
    const Py_ssize_t count = PyTuple_Size(object);
    if (count > static_cast<Py_ssize_t>(max_lcores))
        return false;
    lcores.count = static_cast<uint32_t>(count);
    for (uint32_t i = 0; i < lcores.count; ++i)
        if (!parse_integer(PyTuple_GetItem(object, i), lcores.ids[i]))
            return false;
    return true;
}

PyObject* enable_on_switch(PyObject* args, uint32_t (*command)(uint32_t, uint32_t), const char* refusal)
{
    uint32_t switch_number, enable;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &enable) || !is_switch(switch_number) || enable > 1)
        return print_none(invalid_parameter);
    if (command(switch_number, enable) != 0)
        return print_none_format(refusal, enable ? "enable" : "disable");
    return none();
}

}  // namespace qdp
