// Large receive offload, of a port and of a whole switch.
#include "core/arguments.h"
#include "core/fail.h"
#include "platform/settings.h"

namespace qdp {

namespace {

// The port of the calls that mean the whole switch.
constexpr uint32_t no_port = 0;

PyObject* get(LroScope scope, uint32_t switch_number, uint32_t port)
{
    uint32_t value = 0;
    if (Qdp_GetLRO(scope, switch_number, port, &value) != 0)
        return print_none("ValueError: Failed to get LRO.\n\n");  // the blank line is deliberate, here and below
    return PyBool_FromLong(value != 0);
}

PyObject* set(LroScope scope, uint32_t switch_number, uint32_t port, uint32_t value)
{
    return command_result(Qdp_SetLRO(scope, switch_number, port, value), "ValueError: Failed to set LRO.\n\n");
}

}  // namespace

PyObject* PyQDP_GetPortLRO(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_port(switch_number, port))
        return print_none(invalid_parameter_blank_line);
    return get(LroScope::port, switch_number, port);
}

PyObject* PyQDP_SetPortLRO(PyObject*, PyObject* args)
{
    uint32_t switch_number, port, value;
    if (!PyArg_ParseTuple(args, "III", &switch_number, &port, &value) || !is_port(switch_number, port))
        return print_none(invalid_parameter_blank_line);
    return set(LroScope::port, switch_number, port, value);
}

PyObject* PyQDP_GetSwitchLRO(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || !is_switch(switch_number))
        return print_none(invalid_parameter_blank_line);
    return get(LroScope::whole_switch, switch_number, no_port);
}

PyObject* PyQDP_SetSwitchLRO(PyObject*, PyObject* args)
{
    uint32_t switch_number, value;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &value) || !is_switch(switch_number))
        return print_none(invalid_parameter_blank_line);
    return set(LroScope::whole_switch, switch_number, no_port, value);
}

}  // namespace qdp
