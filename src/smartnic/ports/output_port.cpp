// The SmartNIC's output port table, which has a row for each destination port.
#include "core/arguments.h"
#include "platform/p4_ports.h"
#include "smartnic/channel/channel.h"
#include "smartnic/ports/page.h"

namespace qdp {

namespace {

// The tag comes second in the record and last in the dict.
using R = P4OutputPort;
constexpr auto output_port_fields = fields<sizeof(R)>({
    {"dstPort", AT(R, destination_port)},
    {"lifID", AT(R, lif)},
    {"defaultVLAN", bits(offsetof(R, default_vlan), 0, default_vlan_bits)},
    {"muxVLAN", AT(R, mux_vlan)},
    {"lifType", AT(R, lif_type)},
    {"status", AT(R, status)},
    {"tag", AT(R, tag)},
});

}  // namespace

PyObject* PyQDP_PortUpdate(PyObject*, PyObject* args)
{
    uint32_t port, default_vlan;
    if (!PyArg_ParseTuple(args, "II", &port, &default_vlan) || port >= max_p4_ports ||
        default_vlan >= max_default_vlans)
        return print_none(invalid_parameter);

    return command_result(send(P4Opcode::port_update, P4PortUpdate{low_16(port), low_16(default_vlan)}),
                          "Failed to update the defaultVLAN of a port\n");
}

PyObject* PyQDP_PortDelete(PyObject*, PyObject* args)
{
    uint32_t port;
    if (!PyArg_ParseTuple(args, "I", &port) || port >= max_p4_ports)
        return print_none(invalid_parameter);

    return command_result(send(P4Opcode::port_delete, P4PortDelete{low_16(port)}), "Failed to delete a port\n");
}

PyObject* PyQDP_PortList(PyObject*, PyObject* args)
{
    uint32_t start;
    if (!PyArg_ParseTuple(args, "I", &start) || start >= max_p4_ports)
        return print_none(invalid_parameter);

    P4OutputPortList page{};
    if (ask(P4Opcode::port_list, P4ListRequest{low_16(start)}, page) != 0)
        return print_none(no_port_list);
    return page_object("portlist", page, output_port_fields);
}

}  // namespace qdp
