// Makes the entries of the SmartNIC's hardware tables from what the pipeline works on. By index every entry exists, and
// one that nothing uses is all zeros; by key an entry may be absent.
#pragma once

#include "host/state/host.h"
#include "platform/p4_entries.h"

namespace host::hardware {

// --- Ports and VLANs (hardware_port_entries.cpp) ---

P4InputEntry input(const Host& host, uint32_t lif);
P4OutputEntry output(const Host& host, uint32_t port);
P4MuxVlanEntry mux_vlan(const Host& host, uint32_t vlan);
P4L2SegmentEntry l2_segment(const Host& host, uint32_t segment);
std::optional<P4VlanMapEntry> vlan_map(const Host& host, const P4VlanMapKey& key);
std::optional<P4RegisteredMacEntry> registered_mac(const Host& host, const P4RegisteredMacKey& key);
P4DscpEntry dscp(const Host& host);
P4UplinkMapEntry uplink_map(const Host& host);

// --- Tunnels and mirrors (hardware_tunnel_entries.cpp) ---

P4MirrorEntry mirror(const Host& host, uint32_t index);
P4MirrorL3Entry mirror_l3(const Host& host, uint32_t index);
P4TunnelRewriteEntry tunnel_rewrite(const Host& host, uint32_t record);
std::optional<P4TunnelTerminationEntry> tunnel_termination(const Host& host, const P4TunnelTerminationKey& key);
std::optional<P4TunnelSaEntry> tunnel_sa(const Host& host, const P4TunnelSaKey& key);

// --- Flows (hardware_flow_entries.cpp) ---

P4IpfixEntry ipfix(const Host& host, uint32_t record);
P4CtCountersEntry ct_counters(const Host& host, uint32_t port);
P4CtStateEntry ct_state(const Host& host, uint32_t record);
std::optional<P4FlowKeyEntry> flow_key(const Host& host, const P4FlowKey& key);
P4FlowRewriteEntry flow_rewrite(const Host& host, uint32_t flow);
P4FlowInfoEntry flow_info(const Host& host, uint32_t flow);
P4FlowOperationsEntry flow_operations(const Host& host);

// --- Shared ---

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

// The bytes of an address on the wire as a number, as keys have it.
uint64_t number_of(ByteSpan bytes);

// An address in network byte order; an IPv4 one in the first four bytes.
void store_address(uint8_t (&out)[16], const Address& address);

}  // namespace host::hardware
