// The MAC tables of ports and switches: listing, clearing, and single entries. None of the methods checks the port; the
// library does.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/mac.h"

namespace qdp {

namespace {

using E = MacEntry;
constexpr auto entry_fields = fields<sizeof(E)>({
    {"macAddr", AT(E, mac), as_mac},
    {"vlanID", AT(E, vlan)},
    {"qdpPortID", AT(E, qdp_port)},
    {"macGenDiff", AT(E, generation_difference)},
});

using H = MacTableHeader;

// The entries behind the header, as many as its count says.
PyObject* entries(Bytes table, const Field& count)
{
    const Bytes rest = table.from(sizeof(H));
    const uint64_t length = table.unsigned_at(count.where);
    SharedKeys keys{length};
    return list_of(length, [&](size_t i) { return keys.whole_dict(entry_fields, rest.from(i * sizeof(E))); });
}

constexpr auto port_table_fields = fields<sizeof(H)>({
    {"MacLimit", AT(H, mac_limit)},
    {"LimitExceeded", AT(H, limit_exceeded)},
    {"MacTableList", AT(H, count), entries},
});

constexpr auto switch_table_fields = fields<sizeof(H)>({
    {"MacLimit", AT(H, mac_limit)},
    {"MacTableList", AT(H, count), entries},
});

constexpr char cannot_clear[] = "Failed to clear mac table.\n";  // of a port and of a switch

// Adding and deleting are one method with the operation as its third parameter.
PyObject* PyQDP_MAC_Entry_Ops(PyObject*, PyObject* args, MacOperation operation)
{
    uint32_t switch_argument, port, vlan_argument;
    long long address;
    if (!PyArg_ParseTuple(args, "IILI", &switch_argument, &port, &address, &vlan_argument))
        return print_none(invalid_parameter);

    // Deliberate: the upper half of the VLAN argument replaces the lower half of the switch number. Callers name switch
    // 5 and VLAN 100 as 0x00050064; a plain VLAN id means switch 0, whatever the switch argument says.
    const uint32_t switch_number = (switch_argument & 0xffff0000) | vlan_argument >> 16;
    const auto vlan = low_16(vlan_argument);
    if (!is_switch(switch_number))
        return print_none(invalid_parameter);

    uint8_t mac[mac_bytes];  // the lowest byte of the integer comes first
    std::memcpy(mac, &address, sizeof mac);
    const char* refusal = operation == MacOperation::add ? "Failed to add a MAC entry."  // deliberately unbroken line
                                                         : "Failed to delete MAC entry.\n";
    return command_result(Qdp_MAC_Entry_Ops(switch_number, port, mac, vlan, static_cast<uint8_t>(operation)), refusal);
}

}  // namespace

PyObject* PyQDP_List_Port_MACTable(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_switch(switch_number))
        return print_none(invalid_parameter);

    const auto record = allocate<PortMacTable>();
    if (!record)
        return print_none(no_memory);

    uint32_t size = sizeof(PortMacTable);
    if (Qdp_Dump_Port_MAC_Table(switch_number, port, record.get(), &size) != 0)
        return print_none("Failed to retrieve mac table.\n");
    return dict_or_none(port_table_fields, bytes_of(*record), "Failed to allocate mac table.\n");
}

PyObject* PyQDP_List_Switch_MACTable(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || !is_switch(switch_number))
        return print_none(invalid_parameter);

    const auto record = allocate_large<SwitchMacTable>();
    if (!record)
        return print_none(no_memory);

    uint32_t size = sizeof(SwitchMacTable);
    if (Qdp_Dump_Switch_MAC_Table(switch_number, record.get(), &size) != 0)
        return print_none("Failed to retrieve switch mac table.\n");
    return dict_or_none(switch_table_fields, bytes_of(*record), "Failed to allocate switch mac table.\n");
}

PyObject* PyQDP_Clear_Port_MACTable(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_switch(switch_number))
        return print_none(invalid_parameter);
    return command_result(Qdp_Clear_Port_MAC_Table(switch_number, port), cannot_clear);
}

PyObject* PyQDP_Clear_Switch_MACTable(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    if (!PyArg_ParseTuple(args, "I", &switch_number) || !is_switch(switch_number))
        return print_none(invalid_parameter);
    return command_result(Qdp_Clear_Switch_MAC_Table(switch_number), cannot_clear);
}

PyObject* PyQDP_Add_MAC_Entry(PyObject* module, PyObject* args)
{
    return PyQDP_MAC_Entry_Ops(module, args, MacOperation::add);
}

PyObject* PyQDP_Del_MAC_Entry(PyObject* module, PyObject* args)
{
    return PyQDP_MAC_Entry_Ops(module, args, MacOperation::remove);
}

}  // namespace qdp
