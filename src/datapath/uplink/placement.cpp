// Where the datapath's work runs: affinity of the physical NICs, lcores, and the slabs that packets are taken from.
#include <algorithm>
#include <bit>

#include "datapath/uplink/uplink.h"
#include "module/fields.h"
#include "module/render.h"
#include "platform/qdp_control.h"
#include "switchid/property.h"

namespace qdp {

namespace {

using R = DeviceAffinity;
constexpr auto device_fields = fields<sizeof(R)>(ROWS({
    {"devname", AT(R, device), as_text},
    {"affinity", AT(R, affinity)},
}));

// Fills a tuple, made with one place a set bit, with the places of the set bits, lowest first.
bool fill_bits(PyObject* tuple, uint64_t bitmap)
{
    size_t position = 0;
    for (uint64_t left = bitmap; left != 0; left &= left - 1) {
        const auto lowest = static_cast<unsigned long>(std::countr_zero(left));
        if (!set_tuple_item(tuple, position++, made(PyLong_FromUnsignedLong(lowest))))
            return false;
    }
    return true;
}

// The terminator of a word counts only where the value is long enough to reach it: "po" is a marker, "pollmode" is not,
// and an empty value is.
bool is_marker_value(std::string_view value)
{
    constexpr char words[][5] = {"true", "poll", "intr"};
    return std::ranges::any_of(words, [&](const char(&word)[5]) {
        return std::strncmp(value.data(), word, std::min(value.size(), sizeof word)) == 0;
    });
}

// The terminator of the name counts.
bool is_fast_datapath_marker(DVSData* property)
{
    const char* name = DVSData_Name(property);
    if (!name || std::strncmp(name, fast_datapath_property, sizeof fast_datapath_property) != 0)
        return false;
    const auto value = data_value(property);
    return value && is_marker_value(*value);
}

uint32_t match_marker(DVSData* property, void* context)
{
    const bool is_marker = is_fast_datapath_marker(property);
    if (is_marker)
        *static_cast<bool*>(context) = true;
    return is_marker;
}

uint32_t look_for_marker(DVSSwitch* handle, void* context)
{
    DVSState_GlobalPropForEach(handle, match_marker, context);
    return 0;  // every switch is visited
}

bool any_switch_is_fast()
{
    bool found = false;
    DVSState_SwitchForEach(look_for_marker, &found);
    return found;
}

}  // namespace

PyObject* PyQDP_List_Device_Affinity(PyObject*, PyObject*)
{
    const auto record = allocate<DeviceAffinityList>();
    if (!record)
        return print_none(no_memory);

    uint32_t size = sizeof(DeviceAffinityList);
    if (Qdp_List_Dev_Affinity(record.get(), &size) != 0)
        return print_none("ValueError: Failed to list device affinity.\n");

    // The text is that of another list, deliberately.
    return dicts_or_none(record->count, device_fields, entries_of(*record), "Failed to allocate port list.\n");
}

PyObject* PyQDP_Set_Device_Affinity(PyObject*, PyObject* args)
{
    const char* device;
    uint32_t affinity;
    if (!PyArg_ParseTuple(args, "sI", &device, &affinity))
        return print_none(invalid_parameter);

    return commanded(Qdp_Set_Dev_Affinity(device, affinity), "ValueError: Failed to set device affinity.\n");
}

// The messages of these two methods deliberately end in a blank line.
PyObject* PyQDP_ListLCoreIDs(PyObject*, PyObject* args)
{
    uint32_t selector;
    if (!PyArg_ParseTuple(args, "I", &selector))
        return print_none(invalid_parameter_blank_line);

    uint64_t bitmap = 0;
    if (Qdp_Get_LCore_ID_Bitmap(selector, &bitmap) != 0)
        return print_none("TypeError: Failed to get lcore ID bitmap.\n\n");

    PyRef ids{made(PyTuple_New(bit_count(bitmap)))};
    const bool complete = ids && fill_bits(ids.get(), bitmap);
    return built_or_none(std::move(ids), complete);
}

PyObject* PyQDP_InitMbufFastslabs(PyObject*, PyObject*)
{
    if (!any_switch_is_fast())
        return PyBool_FromLong(0);
    if (Qdp_Init_Mbuf_Fastslabs() != 0)
        return print_false("TypeError: Failed to init QDP mbuf fastslabs.\n\n");
    return PyBool_FromLong(1);
}

}  // namespace qdp
