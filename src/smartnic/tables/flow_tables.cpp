// Flows: from a flow's key to its index, and from the index to what the pipeline does with it.
#include "core/arguments.h"
#include "platform/p4_counters.h"
#include "smartnic/tables/keys.h"
#include "smartnic/tables/reader.h"
#include "smartnic/tables/tables.h"

namespace qdp {

namespace {

constexpr auto flow_key = table<P4Table::flow_key>({
    {"flowIndex", bytes(0, 4)},
});

constexpr auto flow_info = table<P4Table::flow_info>({
    {"flowIdx", bytes(0, 4)},
    {"dstPort", bytes(4, 2)},
    {"count", bytes(8, 8), as_signed},
    {"timeStamp", bytes(16, 4)},
    {"srcTag", bytes(20, 2)},
    {"dstTag", bytes(22, 2)},
    {"vdrTtlCheck", bits(24, 0, 1)},
    {"vdrVld", bits(24, 1, 1)},
    {"natVld", bits(24, 2, 1)},
    {"encap", bits(24, 3, 1)},
    {"decap", bits(24, 4, 1)},
    {"ctIngressVld", bits(24, 5, 1)},
    {"ctIngressDir", bits(24, 6, 1)},
    {"ctEgressVld", bits(24, 7, 1)},
    {"ctEgressDir", bits(25, 0, 1)},
    {"ipfixIngressVld", bits(25, 1, 1)},
    {"ipfixEgressVld", bits(25, 2, 1)},
    {"drop", bits(25, 3, 1)},
    {"isDstUplink", bits(25, 4, 1)},
    {"isSrcUplink", bits(25, 5, 1)},
    {"dstUplinkIdx", bits(25, 6, 2)},
    {"srcUplinkIdx", bits(26, 0, 2)},
    {"vdrHops", bytes(27, 1)},
    {"ingressMirror", bytes(28, 1)},
    {"egressMirror", bytes(29, 1)},
    {"encapIdx", bytes(30, 2)},
    {"ctIngressStatsIdx", bytes(32, 2)},
    {"ctEgressStatsIdx", bytes(34, 2)},
    {"natIdx", bytes(36, 4)},
    {"ctIngressIdx", bytes(40, 4)},
    {"ctEgressIdx", bytes(44, 4)},
    {"ipfixIngressIdx", bytes(48, 4)},
    {"ipfixEgressIdx", bytes(52, 4)},
});

// clang-format off
constexpr auto flow_rewrite = table<P4Table::flow_rewrite>({
    {"vlanPop", bits(0, 0, 1)},
    {"vlanPush", bits(0, 1, 1)},
    {"vlanSet", bits(0, 2, 1)},
    {"vlanSetPcp", bits(0, 3, 1)},
    {"ipDscpSet", bits(0, 4, 1)},
    {"route", bits(0, 5, 1)},
    {"rssOverride", bits(0, 6, 1)},
    {"kcpVlanPush", bits(0, 7, 1)},
    {"vlanPcp", bits(0, 9, 3)},
    {"ipDscp", bits(0, 12, 6)},
    {"rssOverrideQid", bits(0, 18, 6)},
    {"hops", bytes(3, 1)},
    {"vlanVid", bits(4, 0, 12)},
    {"kcpVlanVid", bits(4, 12, 12)},
    {"vni", bits(8, 0, 24)},
    {"encapSport", bytes(12, 2)},
    {"flowCookie", bytes(28, 4)},
    {"smac", bytes(14, 6), as_mac},
    {"dmac", bytes(20, 6), as_mac},
});
// clang-format on

}  // namespace

// An index is checked with all its 22 bits, though only 16 of them travel in the key: deliberate.
PyObject* PyQDP_TableFlowKeyGet(PyObject*, PyObject* args)
{
    uint32_t qualifier, port, flow_index, vni, protocol, is_ipv4, port_1, port_2;
    long long mac_1, mac_2, address_1_low, address_1_high, address_2_low, address_2_high;
    if (!PyArg_ParseTuple(args, "ILLIIIIILLLLII", &qualifier, &mac_1, &mac_2, &port, &flow_index, &vni, &protocol,
                          &is_ipv4, &address_1_low, &address_1_high, &address_2_low, &address_2_high, &port_1,
                          &port_2) ||
        qualifier > max_vlan || !fits_48_bits(mac_2) || !fits_48_bits(mac_1) || port >= max_p4_ports ||
        flow_index >= max_flows || protocol > UINT8_MAX || port_1 > UINT16_MAX || port_2 > UINT16_MAX ||
        vni >= max_vnis ||
        (is_ipv4 && (!fits_ipv4(address_1_low, address_1_high) || !fits_ipv4(address_2_low, address_2_high))))
        return print_none(invalid_parameter);

    P4FlowKey key{};
    key.qualifier = low_16(qualifier);
    store_48_bits(key.mac_1, mac_1);
    store_48_bits(key.mac_2, mac_2);
    key.flow_index = low_16(flow_index);
    key.address_1_low = static_cast<uint64_t>(address_1_low);
    key.address_1_high = static_cast<uint64_t>(address_1_high);
    key.address_2_low = static_cast<uint64_t>(address_2_low);
    key.address_2_high = static_cast<uint64_t>(address_2_high);
    key.port = low_16(port);
    key.port_1 = low_16(port_1);
    key.port_2 = low_16(port_2);
    key.is_ipv4 = is_ipv4 != 0;
    key.protocol_and_vni = vni << flow_key_vni_shift | protocol;
    return read_by_key(flow_key, key);
}

PyObject* PyQDP_TableFlowInfoGet(PyObject*, PyObject* args)
{
    return read_by_index(args, flow_info, max_flows);
}

PyObject* PyQDP_TableFlowRewriteGet(PyObject*, PyObject* args)
{
    return read_by_index(args, flow_rewrite, max_flows);
}

}  // namespace qdp
