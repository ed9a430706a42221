// Makes the entries of the SmartNIC's hardware tables from what the pipeline works on. By index every entry exists, and
// one that nothing uses is all zeros; by key an entry may be absent.
#pragma once

#include "host/host.h"
#include "host/state/hardware_entries.h"

namespace host::hardware {

// Of a pair of tables the first is read for what comes in, the second for what goes out.
enum class Direction { ingress, egress };

// --- Ports and the whole pipeline (hardware_port_entries.cpp) ---

P4LifCounters lif_counters(const Host& host, uint32_t lif);
P4PortCounters port_counters(const Host& host, uint32_t port);
P4EgressCounters egress_counters(const Host& host, uint32_t index);
P4IngressCounters ingress_counters(const Host& host, uint32_t index);
InputEntry input(const Host& host, uint32_t lif);
OutputEntry output(const Host& host, uint32_t port);
MuxVlanEntry mux_vlan(const Host& host, uint32_t vlan);
L2SegmentEntry l2_segment(const Host& host, uint32_t segment);
std::optional<VlanMapEntry> vlan_map(const Host& host, const P4VlanMapKey& key);
std::optional<RegisteredMacEntry> registered_mac(const Host& host, const P4RegisteredMacKey& key);
DscpEntry dscp(const Host& host, uint32_t index);
UplinkMapEntry uplink_map(const Host& host, uint32_t index);

// --- Tunnels and mirrors (hardware_tunnel_entries.cpp) ---

MirrorEntry mirror(const Host& host, uint32_t index);
MirrorL3Entry mirror_l3(const Host& host, uint32_t index);
TunnelRewriteEntry tunnel_rewrite(const Host& host, uint32_t record);
std::optional<TunnelTerminationEntry> tunnel_termination(const Host& host, const P4TunnelTerminationKey& key);
std::optional<TunnelSaEntry> tunnel_sa(const Host& host, const P4TunnelSaKey& key);

// --- Flows (hardware_flow_entries.cpp) ---

IpfixEntry ipfix(const Host& host, Direction direction, uint32_t index);
CtCountersEntry ct_counters(const Host& host, Direction direction, uint32_t index);
CtStateEntry ct_state(const Host& host, Direction direction, uint32_t index);
std::optional<FlowKeyEntry> flow_key(const Host& host, const P4FlowKey& key);
FlowRewriteEntry flow_rewrite(const Host& host, uint32_t flow);
FlowInfoEntry flow_info(const Host& host, uint32_t flow);
FlowOperationsEntry flow_operations(const Host& host, uint32_t index);

// --- Shared ---

// What a counter of the pipeline that grows by `per_second` has reached: the SmartNIC had been up for an hour when the
// host came up.
uint64_t grown(const Host& host, uint64_t per_second);

// The element with a number in one of its members, or null.
template <class Element, class Number>
const Element* find(const std::vector<Element>& elements, Number Element::*member, uint64_t number)
{
    for (const Element& element : elements)
        if (element.*member == number)
            return &element;
    return nullptr;
}

template <class Key>
bool same_key(const Key& one, const Key& other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

// A MAC address in the order of its bytes on the wire.
void store_mac(uint8_t (&out)[mac_bytes], uint64_t mac);

// The same in a key: least significant byte first.
void store_mac_of_key(uint8_t (&out)[mac_bytes], uint64_t mac);

// An address in network byte order; an IPv4 one in the first four bytes.
void store_address(uint8_t (&out)[16], const Address& address);

}  // namespace host::hardware
