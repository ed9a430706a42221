// The inventory of the datapath: its switches, and the ports of a switch.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/ports.h"

namespace qdp {

namespace {

using S = SwitchListEntry;
constexpr auto switch_fields = fields<sizeof(S)>({
    {"name", AT(S, name), as_text},
    {"swID", AT(S, switch_number)},
    {"maxPorts", AT(S, max_ports)},
    {"numActivePorts", AT(S, num_active_ports)},
    {"numPorts", AT(S, num_ports)},
    {"mtu", AT(S, mtu)},
    {"numLcores", AT(S, num_lcores)},
    {"lcores", AT(S, lcore_mask), as_signed},  // a mask with lcore 63 reads negative
});

// Representors by type, plain and pass-through.
constexpr Names<16> representor_names{{"REP.INV", "REP.M2VF", "REP.M2PHY", "REP.M2UPT", "REP.M3VF", "REP.M3PHY",
                                       "REP.M3PF", "REP.M3UPT", "REP.M3EMU", "REP.M3MUXPF", "REP.P4SHRD", "REP.P4PHY",
                                       "REP.P4EMU", "REP.P4VF", "REP.P4PF", "REP.P4NIC"},
                                      "REP.UNKN"};
constexpr Names<16> pass_through_representor_names{
    {"REP.INV", "REP.M2VF", "REP.M2PHY", "REP.M2UPT.PT", "REP.M3VF", "REP.M3PHY", "REP.M3PF", "REP.M3UPT.PT",
     "REP.M3EMU.PT", "REP.M3MUXPF", "REP.P4SHRD", "REP.P4PHY", "REP.P4EMU.PT", "REP.P4VF", "REP.P4PF", "REP.P4NIC"},
    "REP.UNKN"};

const char* client_name(Bytes port, uint64_t type)
{
    using R = PortListEntry;
    const bool is_pass_through = port.unsigned_at(AT(R, flags)) & port_flag_pass_through;
    switch (static_cast<ClientType>(type)) {
    case ClientType::vnic:
        return is_pass_through ? "VNIC.PT" : "VNIC";
    case ClientType::uplink:
        return "UPLINK";
    case ClientType::generic:
        return "GENERIC";
    case ClientType::representor:
        return (is_pass_through ? pass_through_representor_names
                                : representor_names)[port.unsigned_at(AT(R, representor_type))];
    }
    return "UNKNOWN";
}

PyObject* client(Bytes port, const Field& field)
{
    return text_object(client_name(port, port.unsigned_at(field.where)));
}

using P = PortListEntry;
constexpr auto port_fields = fields<sizeof(P)>({
    {"portID", AT(P, port)},
    {"qdpPortID", AT(P, qdp_port)},
    {"numTxQ", AT(P, num_tx_queues)},
    {"numRxQ", AT(P, num_rx_queues)},
    {"hwAddr", AT(P, mac), as_mac},
    {"numMACs", AT(P, num_macs)},
    {"clientType", AT(P, client_type), client},
    {"txQLM", AT(P, tx_queue_lcores), as_list<uint8_t, AT(P, num_tx_queues)>},
    {"rxQLM", AT(P, rx_queue_lcores), as_list<uint8_t, AT(P, num_rx_queues)>},
});

}  // namespace

PyObject* PyQDP_List_Switches(PyObject*, PyObject*)
{
    const auto record = allocate<SwitchList>();
    if (!record)
        return print_none(no_memory);

    uint32_t size = sizeof(SwitchList);
    if (Qdp_Get_Switch_List(record.get(), &size) != 0)
        return print_none("Failed to retrieve list of switches.\n");

    return dicts_or_none(record->count, switch_fields, entries_of(*record));
}

PyObject* PyQDP_List_Ports(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || !is_switch(switch_number))
        return print_none("TypeError: Invalid switch ID passed.\n");

    const auto record = allocate_list<PortList>();
    if (!record)
        return print_none(no_memory);

    uint32_t size = sizeof(PortList);
    if (Qdp_Get_Port_List(switch_number, record.get(), &size) != 0)
        return print_none("Failed to retrieve list of ports.\n");

    return dicts_or_none(record->count, port_fields, entries_of(*record), "Failed to allocate port list.\n");
}

}  // namespace qdp
