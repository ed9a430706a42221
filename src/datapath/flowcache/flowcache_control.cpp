// Commands to the flow cache of a switch.
#include "core/arguments.h"
#include "core/fail.h"
#include "platform/flowcache.h"

namespace qdp {

PyObject* PyQDP_Clear_Switch_Flow_Table(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || !is_switch(switch_number))
        return print_none(invalid_parameter);
    return command_result(Qdp_Clear_Switch_Flow_Table(switch_number),
                          "Failed clear switch flow table\n");  // deliberately without "to" and full stop
}

PyObject* PyQDP_Enable_Switch_Flow_Cache(PyObject*, PyObject* args)
{
    return enable_on_switch(args, Qdp_Enable_Switch_Flow_Cache, "Failed to %s switch flow cache.\n");
}

}  // namespace qdp
