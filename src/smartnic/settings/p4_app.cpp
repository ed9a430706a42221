// The switch of the SmartNIC's P4 user application. A refusing library leaves None, and deliberately no message.
#include "core/fail.h"
#include "platform/pipeline.h"

namespace qdp {

PyObject* PyQDP_P4AppSet(PyObject*, PyObject* args)
{
    uint32_t is_enabled;
    if (!PyArg_ParseTuple(args, "I", &is_enabled))
        return print_none(invalid_parameter);
    return Qdp_P4AppSet(is_enabled) == 0 ? PyBool_FromLong(1) : none();
}

PyObject* PyQDP_P4AppGet(PyObject*, PyObject*)
{
    uint32_t is_enabled = 0;
    return Qdp_P4AppGet(&is_enabled) == 0 ? PyBool_FromLong(is_enabled != 0) : none();
}

}  // namespace qdp
