// The module `_libqdp`: its table of methods, which is also the map of the source. The comment above a run of methods
// names the file that they live in.
#include "datapath/ports/ports.h"
#include "datapath/stats/stats.h"
#include "module/python.h"

namespace {

using namespace qdp;

// The interpreter takes the parameter names for help() and inspect.signature() from the text before "--", and leaves
// the text behind it as the method's __doc__.
#define METHOD(name, function, parameters, doc)                                     \
    {                                                                               \
        name, function, METH_VARARGS, name "($module" parameters ", /)\n--\n\n" doc \
    }

// The order is part of the interface.
PyMethodDef methods[] = {
    // datapath/ports/inventory.cpp
    METHOD("ListSwitches", PyQDP_List_Switches, "", "List All QDP switches"),
    METHOD("ListPorts", PyQDP_List_Ports, ", switch", "List all ports on a QDP switch."),
    // datapath/stats/port_stats.cpp
    METHOD("GetPortStats", PyQDP_Get_Port_Stats, ", switch, port", "Get a port's statistics"),
    METHOD("GetRepPortStats", PyQDP_Get_Rep_Port_Stats, "", "Get rep port stats for a port in switch"),
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT,
    "_libqdp",
    "Python binding for qdp",
    -1,  // no state, and so no second module in a sub-interpreter
    methods,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

}  // namespace

// The interpreter's version of the module interface, fixed for every CPython that the binary runs on.
static_assert(PYTHON_API_VERSION == 1013);

PyMODINIT_FUNC PyInit__libqdp()
{
    return PyModule_Create2(&definition, PYTHON_API_VERSION);
}
