// An extension without anything: what every import costs.
#include <Python.h>

static PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "empty", nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};

PyMODINIT_FUNC PyInit_empty()
{
    return PyModule_Create2(&definition, PYTHON_API_VERSION);
}
