// The affinity of the physical NICs.
#include "core/build.h"
#include "platform/placement.h"

namespace qdp {

namespace {

using R = DeviceAffinity;
constexpr auto device_fields = fields<sizeof(R)>({
    {"devname", AT(R, device), as_text},
    {"affinity", AT(R, affinity)},
});

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

    return command_result(Qdp_Set_Dev_Affinity(device, affinity), "ValueError: Failed to set device affinity.\n");
}

}  // namespace qdp
