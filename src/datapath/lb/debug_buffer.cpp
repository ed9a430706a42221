// The debug buffer of a switch's load balancer: its text, and emptying it.
#include <algorithm>

#include "core/arguments.h"
#include "core/fail.h"
#include "platform/lb.h"

namespace qdp {

namespace {

// Kept for all calls, so that a dump needs no allocation. The last byte stays NUL.
char debug_text[lb_debug_bytes + 1];

}  // namespace

PyObject* PyQDP_DumpLBDebugBuf(PyObject*, PyObject* args)
{
    uint32_t switch_number, flag;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &flag) || !is_switch(switch_number))
        return print_none(invalid_parameter);

    std::memset(debug_text, 0, sizeof debug_text);
    uint32_t length = lb_debug_bytes;
    const auto low_byte = static_cast<int8_t>(flag);  // all of the flag that is passed on
    if (const uint32_t status = Qdp_DumpLBDebugBuf(switch_number, low_byte, debug_text, &length); status != 0)
        return print_none_format("ValueError: Failed to dump debug buffer: %#x.\n", status);
    return PyUnicode_FromStringAndSize(debug_text, std::min<Py_ssize_t>(length, sizeof debug_text));
}

PyObject* PyQDP_FlushLBDebugBuf(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || !is_switch(switch_number))
        return print_none(invalid_parameter);

    if (const uint32_t status = Qdp_FlushLBDebugBuf(switch_number); status != 0)
        return print_none_format("ValueError: Failed to flush debug buffer: %#x.\n", status);
    return none();
}

}  // namespace qdp
