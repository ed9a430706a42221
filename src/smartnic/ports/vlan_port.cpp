// The SmartNIC's mux VLAN ports, each of which is reached through an internal VLAN of a mux switch.
#include "core/arguments.h"
#include "platform/p4_ports.h"
#include "smartnic/channel/channel.h"
#include "smartnic/ports/page.h"

namespace qdp {

namespace {

using R = P4VlanPort;
constexpr auto vlan_port_fields = fields<sizeof(R)>({
    {"muxVLAN", AT(R, mux_vlan)},
    {"pfLif0", AT(R, pf_lifs[0])},
    {"pfLif1", AT(R, pf_lifs[1])},
    {"srcPort", AT(R, source_port)},
    {"repPort", AT(R, rep_port)},
    {"flowKeyType", AT(R, flow_key_type)},
    {"status", AT(R, status)},
});

}  // namespace

// The PF LIFs are checked as LIFs, but only their low 8 bits are sent, deliberately. They come late among the arguments
// and early in the record.
PyObject* PyQDP_VlanPortCreate(PyObject*, PyObject* args)
{
    uint32_t mux_vlan, source_port, rep_port, flow_key_type, pf_lif_0, pf_lif_1, status;
    if (!PyArg_ParseTuple(args, "IIIIIII", &mux_vlan, &source_port, &rep_port, &flow_key_type, &pf_lif_0, &pf_lif_1,
                          &status) ||
        mux_vlan >= max_mux_vlans || source_port >= max_p4_ports || rep_port >= max_p4_ports ||
        flow_key_type >= max_flow_key_types || pf_lif_0 >= max_lifs || pf_lif_1 >= max_lifs ||
        status >= vlan_port_status_end)
        return print_none(invalid_parameter);

    const P4VlanPort port{
        .mux_vlan = low_16(mux_vlan),
        .pf_lifs = {low_8(pf_lif_0), low_8(pf_lif_1)},
        .source_port = low_16(source_port),
        .unused = 0,
        .rep_port = low_16(rep_port),
        .flow_key_type = low_8(flow_key_type),
        .flags = 0,
        .status = low_16(status),
    };
    return command_result(send(P4Opcode::vlan_port_create, port), "Failed to create/update the mux vlan port\n");
}

PyObject* PyQDP_VlanPortUpdate(PyObject*, PyObject* args)
{
    uint32_t mux_vlan, flow_key_type;
    if (!PyArg_ParseTuple(args, "II", &mux_vlan, &flow_key_type) || mux_vlan >= max_mux_vlans ||
        flow_key_type >= max_flow_key_types)
        return print_none(invalid_parameter);

    return command_result(send(P4Opcode::vlan_port_update, P4VlanPortUpdate{low_16(mux_vlan), low_8(flow_key_type), 0}),
                          "Failed to update mux vlan based port\n");
}

// The start index has its own, wider bound, deliberately.
PyObject* PyQDP_VlanPortList(PyObject*, PyObject* args)
{
    uint32_t start;
    if (!PyArg_ParseTuple(args, "I", &start) || start >= vlan_port_list_end)
        return print_none(invalid_parameter);

    P4VlanPortList page{};
    if (ask(P4Opcode::vlan_port_list, P4ListRequest{low_16(start)}, page) != 0)
        return print_none(no_port_list);
    return page_object("vlanlist", page, vlan_port_fields);
}

}  // namespace qdp
