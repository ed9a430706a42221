// The sizes of an uplink's transmit and receive rings, kept in the port's data.
#include "core/fail.h"
#include "platform/uplink.h"
#include "switchid/property.h"

namespace qdp {

namespace {

constexpr UplinkRings default_rings{2048, 1024};
constexpr uint32_t ring_alignment = 32;

PyObject* rings_object(const UplinkRings& rings)
{
    return Py_BuildValue("II", rings.tx, rings.rx);
}

constexpr bool is_aligned(uint32_t ring_size)
{
    return ring_size % ring_alignment == 0;
}

}  // namespace

PyObject* PyQDP_Get_Uplink_Ring_Size(PyObject*, PyObject* args)
{
    const char *switch_text, *port_text;
    if (!PyArg_ParseTuple(args, "ss", &switch_text, &port_text))
        return print_none(invalid_parameter);

    const PropertyValue rings = get_port_data(switch_text, port_text, uplink_rings_key);
    if (rings.status == status_not_found)
        return rings_object(default_rings);
    if (rings.status != status_success)
        return print_none("ValueError: Failed to read property data length.\n");
    if (rings.length != sizeof(UplinkRings))
        return print_none("ValueError: Invalid property data length.\n");
    return rings_object(rings.bytes().load<UplinkRings>(0));
}

PyObject* PyQDP_Set_Uplink_Ring_Size(PyObject*, PyObject* args)
{
    const char *switch_text, *port_text;
    UplinkRings rings;
    if (!PyArg_ParseTuple(args, "ssII", &switch_text, &port_text, &rings.tx, &rings.rx))
        return print_none(invalid_parameter);
    if (!is_aligned(rings.tx) || !is_aligned(rings.rx))
        return print_none_format("ValueError: Ring size must be %u aligned.\n", ring_alignment);

    const uint32_t status =
        DVSHCK_PortDataSet(switch_text, port_text, uplink_rings_key, &rings, sizeof rings, port_data_flags);
    return command_result(status, "ValueError: Failed to set port property.\n");
}

}  // namespace qdp
