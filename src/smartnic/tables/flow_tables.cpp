// Flows: from a flow's key to its index, and from the index to what the pipeline does with it.
#include "core/arguments.h"
#include "platform/p4_counters.h"
#include "platform/p4_entries.h"
#include "smartnic/tables/keys.h"
#include "smartnic/tables/reader.h"

namespace qdp {

namespace {

using K = P4FlowKeyEntry;
constexpr auto flow_key = table<P4Table::flow_key>({
    {"flowIndex", AT(K, flow)},
});

using I = P4FlowInfoEntry;
constexpr auto flow_info = table<P4Table::flow_info>({
    {"flowIdx", AT(I, flow)},
    {"dstPort", AT(I, port)},
    {"count", AT(I, count), as_signed},
    {"timeStamp", AT(I, seconds)},
    {"srcTag", AT(I, source_tag)},
    {"dstTag", AT(I, destination_tag)},
    {"vdrTtlCheck", bits(AT(I, flags), I::checks_ttl)},
    {"vdrVld", bits(AT(I, flags), I::is_routed)},
    {"natVld", bits(AT(I, flags), I::has_nat)},
    {"encap", bits(AT(I, flags), I::encap)},
    {"decap", bits(AT(I, flags), I::decap)},
    {"ctIngressVld", bits(AT(I, flags), I::has_ingress_ct)},
    {"ctIngressDir", bits(AT(I, flags), I::ingress_ct_direction)},
    {"ctEgressVld", bits(AT(I, flags), I::has_egress_ct)},
    {"ctEgressDir", bits(AT(I, flags), I::egress_ct_direction)},
    {"ipfixIngressVld", bits(AT(I, flags), I::has_ingress_ipfix)},
    {"ipfixEgressVld", bits(AT(I, flags), I::has_egress_ipfix)},
    {"drop", bits(AT(I, flags), I::drop)},
    {"isDstUplink", bits(AT(I, flags), I::to_uplink)},
    {"isSrcUplink", bits(AT(I, flags), I::from_uplink)},
    {"dstUplinkIdx", bits(AT(I, flags), I::destination_uplink)},
    {"srcUplinkIdx", bits(AT(I, flags), I::source_uplink)},
    {"vdrHops", bits(AT(I, flags), I::hops)},
    {"ingressMirror", AT(I, ingress_mirrors)},
    {"egressMirror", AT(I, egress_mirrors)},
    {"encapIdx", AT(I, tunnel)},
    {"ctIngressStatsIdx", AT(I, ingress_ct_counters)},
    {"ctEgressStatsIdx", AT(I, egress_ct_counters)},
    {"natIdx", AT(I, nat)},
    {"ctIngressIdx", AT(I, ingress_ct)},
    {"ctEgressIdx", AT(I, egress_ct)},
    {"ipfixIngressIdx", AT(I, ingress_ipfix)},
    {"ipfixEgressIdx", AT(I, egress_ipfix)},
});

using W = P4FlowRewriteEntry;
constexpr auto flow_rewrite = table<P4Table::flow_rewrite>({
    {"vlanPop", bits(AT(W, flags), W::vlan_pop)},
    {"vlanPush", bits(AT(W, flags), W::vlan_push)},
    {"vlanSet", bits(AT(W, flags), W::vlan_set)},
    {"vlanSetPcp", bits(AT(W, flags), W::vlan_set_priority)},
    {"ipDscpSet", bits(AT(W, flags), W::dscp_set)},
    {"route", bits(AT(W, flags), W::route)},
    {"rssOverride", bits(AT(W, flags), W::rss_override)},
    {"kcpVlanPush", bits(AT(W, flags), W::kcp_vlan_push)},
    {"vlanPcp", bits(AT(W, flags), W::vlan_priority)},
    {"ipDscp", bits(AT(W, flags), W::dscp)},
    {"rssOverrideQid", bits(AT(W, flags), W::rss_override_queue)},
    {"hops", bits(AT(W, flags), W::hops)},
    {"vlanVid", bits(AT(W, vlans), W::vlan)},
    {"kcpVlanVid", bits(AT(W, vlans), W::kcp_vlan)},
    {"vni", bits(AT(W, encapsulation), W::vni)},
    {"encapSport", AT(W, outer_source_port)},
    {"flowCookie", AT(W, flow_cookie)},
    {"smac", AT(W, source_mac), as_mac},
    {"dmac", AT(W, destination_mac), as_mac},
});
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
