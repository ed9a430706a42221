// The lcores of the host.
#include "core/build.h"
#include "core/render.h"
#include "platform/placement.h"

namespace qdp {

namespace {

// Fills a tuple, made with one place a set bit, with the places of the set bits, lowest first.
bool fill_bits(PyObject* tuple, uint64_t bitmap)
{
    size_t position = 0;
    for (uint64_t left = bitmap; left != 0; left &= left - 1) {
        const auto lowest = static_cast<unsigned long>(std::countr_zero(left));
        if (!set_tuple_item(tuple, position++, object_or_error(PyLong_FromUnsignedLong(lowest))))
            return false;
    }
    return true;
}

}  // namespace

// The messages deliberately end in a blank line.
PyObject* PyQDP_ListLCoreIDs(PyObject*, PyObject* args)
{
    uint32_t selector;
    if (!PyArg_ParseTuple(args, "I", &selector))
        return print_none(invalid_parameter_blank_line);

    uint64_t bitmap = 0;
    if (Qdp_Get_LCore_ID_Bitmap(selector, &bitmap) != 0)
        return print_none("TypeError: Failed to get lcore ID bitmap.\n\n");

    PyRef ids{object_or_error(PyTuple_New(bit_count(bitmap)))};
    const bool complete = ids && fill_bits(ids.get(), bitmap);
    return built_or_none(std::move(ids), complete);
}

}  // namespace qdp
