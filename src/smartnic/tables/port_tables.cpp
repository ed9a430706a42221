// The SmartNIC's ports and VLANs as the pipeline sees them, and the tables of its classic forwarding mode.
#include "core/arguments.h"
#include "platform/p4_counters.h"
#include "platform/p4_entries.h"
#include "smartnic/tables/keys.h"
#include "smartnic/tables/reader.h"

namespace qdp {

namespace {

constexpr Names<3> flow_key_types{{"L2", "L3", "L4"}, "Unknown"};
constexpr Names<2> forwarding_modes{{"classic", "flow"}, "classic"};
constexpr Names<12> applications{{"default", "classic nic", "rdma", "tcptls", "ipsec", "storage",
                                  "elemetry",  // its first letter is missing: deliberate
                                  "cpu", "raw redir", "p4pt", "ipsec transport", "kovnet3 upt"},
                                 "unknown"};

// What a packet from a LIF is tagged with. An entry without a valid port of the host has the first keys only.
using I = P4InputEntry;
constexpr Place is_wyx_valid = bits(AT(I, flags), I::is_host_port_valid);
constexpr auto invalid_input = fields<p4_table_shape(P4Table::input).entry_bytes>({
    {"lifId", AT(I, lif)},
    {"portId", AT(I, port)},
    {"pinnedPortId", AT(I, pinned_port)},
    {"l2Seg", AT(I, l2_segment)},
    {"isUplink", bits(AT(I, flags), I::is_uplink)},
    {"isP2P", bits(AT(I, flags), I::is_point_to_point)},
    {"skipUkucRepl", bits(AT(I, flags), I::skip_unknown_unicast_replication)},
    {"isWyxValid", is_wyx_valid},
});
constexpr auto more_of_valid_input = fields<p4_table_shape(P4Table::input).entry_bytes>({
    {"wyxPortId", AT(I, host_port)},
    {"repPortId", AT(I, representor_port)},
    {"srcTag", AT(I, source_tag)},
    {"pktCapture", bits(AT(I, flags), I::packet_capture)},
    {"useVlanMapping", bits(AT(I, flags), I::use_vlan_mapping)},
    {"flowKeyType", bits(AT(I, flags), I::flow_key_type), as_name<flow_key_types>},
    {"fwdMode", bits(AT(I, flags), I::forwarding_mode), as_name<forwarding_modes>},
});
constexpr auto input = joined<p4_table_shape(P4Table::input).entry_bytes>(invalid_input, more_of_valid_input);

// How a packet that leaves by a port is edited, and where it goes.
using O = P4OutputEntry;
constexpr auto output = table<P4Table::output>({
    {"portId", AT(O, port)},
    {"lifId", AT(O, lif)},
    {"dstTag", AT(O, destination_tag)},
    {"vlanStrip", bits(AT(O, flags), O::vlan_strip)},
    {"pktCapture", bits(AT(O, flags), O::packet_capture)},
    {"rssInner", bits(AT(O, flags), O::rss_inner)},
    {"vlanPush", bits(AT(O, flags), O::vlan_push)},
    {"hckMetadata", bits(AT(O, flags), O::metadata)},
    {"nports", bits(AT(O, flags), O::num_egress_ports)},
    {"egressPort1", AT(O, egress_ports[0])},
    {"egressPort2", AT(O, egress_ports[1])},
    {"vlanPushId", AT(O, pushed_vlan)},
    {"accessVlanId", AT(O, access_vlan)},
    {"rssOverride", AT(O, rss_override)},
    {"rssOverrideQid", AT(O, rss_override_queue)},
    {"p4plusAppId", AT(O, application), as_name<applications>},
});

using X = P4MuxVlanEntry;
constexpr auto mux_vlan = table<P4Table::mux_vlan>({
    {"vlanId", AT(X, vlan)},
    {"valid", bits(AT(X, flags), X::is_valid)},
    {"lif0", AT(X, lifs[0])},
    {"lif1", AT(X, lifs[1])},
    {"srcPortId", AT(X, source_port)},
    {"repPortId", AT(X, representor_port)},
    {"srcTag", AT(X, source_tag)},
    {"pktCapture", bits(AT(X, flags), X::packet_capture)},
    {"flowKeyType", bits(AT(X, flags), X::flow_key_type), as_name<flow_key_types>},
});

using V = P4VlanMapEntry;
constexpr auto vlan_map = table<P4Table::vlan_map>({
    {"rmac_vrf", AT(V, registered_mac_vrf)},
    {"l2Seg", AT(V, l2_segment)},
});

using S = P4L2SegmentEntry;
constexpr auto l2_segment = table<P4Table::l2_segment>({
    {"host_rcvr_ukuc", bits(AT(S, flags), S::host_receives_unknown_unicast)},
    {"host_rcvr_ukmc", bits(AT(S, flags), S::host_receives_unknown_multicast)},
    {"host_rcvr_bcast", bits(AT(S, flags), S::host_receives_broadcast)},
    {"replicate_idx", AT(S, replication)},
});

using R = P4RegisteredMacEntry;
constexpr auto registered_mac = table<P4Table::registered_mac>({
    {"dstPort", AT(R, port)},
    {"dstPinnedPort", bits(AT(R, pinned_port_and_multicast), R::pinned_port)},
    {"multicastEn", bits(AT(R, pinned_port_and_multicast), R::is_multicast)},
    {"qid", AT(R, queue)},
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
