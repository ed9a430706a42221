// The platform libraries with fixed answers as Python sees them: their settings, marks for a profiler, and a bare call.
#include <Python.h>

#include "bench/fixed/marks.h"
#include "platform/qdp_control.h"

static PyObject* none()
{
    Py_INCREF(Py_None);
    return Py_None;
}

static PyObject* mark(PyObject*, PyObject*)
{
    Fixed_Mark();
    return none();
}

static PyObject* set_ports(PyObject*, PyObject* args)
{
    unsigned count;
    if (!PyArg_ParseTuple(args, "I", &count))
        return nullptr;
    Fixed_Set_Ports(count);
    return none();
}

static PyObject* set_macs(PyObject*, PyObject* args)
{
    unsigned count;
    if (!PyArg_ParseTuple(args, "I", &count))
        return nullptr;
    Fixed_Set_Macs(count);
    return none();
}

// What the platform's call costs with the parsing of its argument: the rest of an empty list is the binding's.
static PyObject* ask_for_ports(PyObject*, PyObject* args)
{
    static PortList ports;
    unsigned switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number))
        return nullptr;
    uint32_t size = sizeof ports;
    Qdp_Get_Port_List(switch_number, &ports, &size);
    return none();
}

static PyMethodDef methods[] = {
    {"mark", mark, METH_NOARGS, nullptr},
    {"set_ports", set_ports, METH_VARARGS, nullptr},
    {"set_macs", set_macs, METH_VARARGS, nullptr},
    {"ask_for_ports", ask_for_ports, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

static PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "fixed", nullptr, -1, methods, nullptr, nullptr, nullptr, nullptr};

PyMODINIT_FUNC PyInit_fixed()
{
    return PyModule_Create2(&definition, PYTHON_API_VERSION);
}
