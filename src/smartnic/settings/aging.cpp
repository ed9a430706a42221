// The interval at which the flow table's entries are aged.
#include "core/fail.h"
#include "platform/pipeline.h"

namespace qdp {

PyObject* PyQDP_Get_Aging_Interval(PyObject*, PyObject* args)
{
    uint32_t selector;
    if (!PyArg_ParseTuple(args, "I", &selector))
        return print_none(invalid_parameter);

    uint32_t interval = 0;
    if (Qdp_GetAgingInterval(selector, &interval) != 0)
        return print_none("Failed to get aging interval\n");
    return PyLong_FromUnsignedLong(interval);
}

PyObject* PyQDP_Set_Aging_Interval(PyObject*, PyObject* args)
{
    uint32_t selector, interval;
    if (!PyArg_ParseTuple(args, "II", &selector, &interval))
        return print_none(invalid_parameter);

    return command_result(Qdp_SetAgingInterval(selector, interval), "Failed to set aging interval\n");
}

}  // namespace qdp
