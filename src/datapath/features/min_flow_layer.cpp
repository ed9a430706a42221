// The lowest protocol layer on which a switch makes its flows.
#include "core/arguments.h"
#include "core/fail.h"
#include "platform/settings.h"

namespace qdp {

PyObject* PyQDP_GetSwitchMinFlowLayer(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || !is_switch(switch_number))
        return print_none(invalid_parameter_blank_line);

    uint32_t layer = 0;
    if (Qdp_GetSwitchMinFlowLayer(switch_number, &layer) != 0)
        return print_none_format("ValueError: Failed to get minimum flow layer of switch %u\n\n", switch_number);
    return PyLong_FromUnsignedLong(layer);
}

PyObject* PyQDP_SetSwitchMinFlowLayer(PyObject*, PyObject* args)
{
    uint32_t switch_number, layer;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &layer) || !is_switch(switch_number))
        return print_false(invalid_parameter_blank_line);
    if (Qdp_SetSwitchMinFlowLayer(switch_number, layer) != 0)
        return print_false("ValueError: Failed to set switch minFlowLayer.\n\n");
    return PyBool_FromLong(1);
}

}  // namespace qdp
