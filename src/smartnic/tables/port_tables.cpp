// The SmartNIC's ports and VLANs as the pipeline sees them, and the tables of its classic forwarding mode.
#include "core/arguments.h"
#include "platform/p4_counters.h"
#include "smartnic/tables/keys.h"
#include "smartnic/tables/reader.h"
#include "smartnic/tables/tables.h"

namespace qdp {

namespace {

constexpr Names<3> flow_key_types{{"L2", "L3", "L4"}, "Unknown"};
constexpr Names<2> forwarding_modes{{"classic", "flow"}, "classic"};
constexpr Names<12> applications{{"default", "classic nic", "rdma", "tcptls", "ipsec", "storage",
                                  "elemetry",  // its first letter is missing: deliberate
                                  "cpu", "raw redir", "p4pt", "ipsec transport", "kovnet3 upt"},
                                 "unknown"};

// What a packet from a LIF is tagged with. An entry without a valid port of the host has the first keys only.
constexpr Place is_wyx_valid = bits(17, 0, 1);
constexpr auto invalid_input = fields<p4_table_shape(P4Table::input).entry_bytes>({
    {"lifId", bytes(0, 2)},
    {"portId", bytes(2, 2)},
    {"pinnedPortId", bytes(10, 2)},
    {"l2Seg", bytes(12, 2)},
    {"isUplink", bits(17, 1, 1)},
    {"isP2P", bits(17, 2, 1)},
    {"skipUkucRepl", bits(17, 3, 1)},
    {"isWyxValid", is_wyx_valid},
});
constexpr auto more_of_valid_input = fields<p4_table_shape(P4Table::input).entry_bytes>({
    {"wyxPortId", bytes(4, 2)},
    {"repPortId", bytes(6, 2)},
    {"srcTag", bytes(8, 2)},
    {"pktCapture", bits(16, 4, 1)},
    {"useVlanMapping", bits(16, 3, 1)},
    {"flowKeyType", bits(16, 0, 3), as_name<flow_key_types>},
    {"fwdMode", bits(16, 5, 3), as_name<forwarding_modes>},
});
constexpr auto input = joined<p4_table_shape(P4Table::input).entry_bytes>(invalid_input, more_of_valid_input);

// How a packet that leaves by a port is edited, and where it goes.
constexpr auto output = table<P4Table::output>({
    {"portId", bytes(0, 2)},
    {"lifId", bytes(2, 2)},
    {"dstTag", bytes(4, 2)},
    {"vlanStrip", bits(6, 0, 1)},
    {"pktCapture", bits(6, 1, 1)},
    {"rssInner", bits(6, 2, 1)},
    {"vlanPush", bits(6, 3, 1)},
    {"hckMetadata", bits(6, 4, 1)},
    {"nports", bits(6, 5, 3)},
    {"egressPort1", bytes(8, 1)},
    {"egressPort2", bytes(9, 1)},
    {"vlanPushId", bytes(10, 2)},
    {"accessVlanId", bytes(12, 2)},
    {"rssOverride", bytes(14, 1)},
    {"rssOverrideQid", bytes(15, 1)},
    {"p4plusAppId", bytes(7, 1), as_name<applications>},
});

constexpr auto mux_vlan = table<P4Table::mux_vlan>({
    {"vlanId", bytes(0, 2)},
    {"valid", bits(12, 4, 1)},
    {"lif0", bytes(2, 2)},
    {"lif1", bytes(4, 2)},
    {"srcPortId", bytes(6, 2)},
    {"repPortId", bytes(10, 2)},
    {"srcTag", bytes(8, 2)},
    {"pktCapture", bits(12, 3, 1)},
    {"flowKeyType", bits(12, 0, 3), as_name<flow_key_types>},
});

constexpr auto vlan_map = table<P4Table::vlan_map>({
    {"rmac_vrf", bytes(0, 2)},
    {"l2Seg", bytes(2, 2)},
});

constexpr auto l2_segment = table<P4Table::l2_segment>({
    {"host_rcvr_ukuc", bits(0, 0, 1)},
    {"host_rcvr_ukmc", bits(0, 1, 1)},
    {"host_rcvr_bcast", bits(0, 2, 1)},
    {"replicate_idx", bytes(2, 2)},
});

constexpr auto registered_mac = table<P4Table::registered_mac>({
    {"dstPort", bytes(0, 2)},
    {"dstPinnedPort", bits(2, 0, 15)},
    {"multicastEn", bits(2, 15, 1)},
    {"qid", bytes(4, 4)},
});

}  // namespace

PyObject* PyQDP_TableInputGet(PyObject*, PyObject* args)
{
    uint32_t lif;
    if (!PyArg_ParseTuple(args, "I", &lif) || lif >= max_lifs)
        return print_none(invalid_parameter);

    Entry<P4Table::input> entry;
    if (!entry.read_at(lif))
        return none();
    const bool is_valid = entry.bytes().unsigned_at(is_wyx_valid) != 0;
    return dict_or_none(is_valid ? Fields{input} : Fields{invalid_input}, entry.bytes());
}

PyObject* PyQDP_TableOutputGet(PyObject*, PyObject* args)
{
    return read_by_index(args, output, max_p4_ports);
}

PyObject* PyQDP_TableMuxVlanGet(PyObject*, PyObject* args)
{
    uint32_t vlan, selector;
    if (!PyArg_ParseTuple(args, "II", &vlan, &selector) || vlan == 0 || vlan > max_vlan)
        return print_none(invalid_parameter);
    return read_entry(mux_vlan, vlan, selector);
}

// Both values keep their low 16 bits, before the check: deliberate.
PyObject* PyQDP_TableVlanMapGet(PyObject*, PyObject* args)
{
    uint32_t vlan, qualifier;
    if (!PyArg_ParseTuple(args, "II", &vlan, &qualifier) || low_16(vlan) > max_vlan)
        return print_none(invalid_parameter);
    return read_by_key(vlan_map, P4VlanMapKey{low_16(vlan), low_16(qualifier)});
}

// Any segment is asked for: the hardware knows its bound.
PyObject* PyQDP_TableL2SegGet(PyObject*, PyObject* args)
{
    uint32_t segment;
    if (!PyArg_ParseTuple(args, "I", &segment))
        return print_none(invalid_parameter);
    return read_entry(l2_segment, segment);
}

PyObject* PyQDP_TableRegMACGet(PyObject*, PyObject* args)
{
    uint32_t qualifier;
    long long mac;
    if (!PyArg_ParseTuple(args, "IL", &qualifier, &mac))
        return print_none(invalid_parameter);

    P4RegisteredMacKey key{};
    key.qualifier = low_16(qualifier);
    store_48_bits(key.mac, mac);
    return read_by_key(registered_mac, key);
}

}  // namespace qdp
