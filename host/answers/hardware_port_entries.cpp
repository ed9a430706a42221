// Entries about the pipeline's ports and VLANs, and about the pipeline as a whole.
#include <algorithm>

#include "host/answers/hardware_entries.h"

namespace host::hardware {

namespace {

// Of all packets, 1 in so many.
constexpr uint64_t multicast_share = 50;
constexpr uint64_t broadcast_share = 200;
constexpr uint64_t drop_share = 10'000;
constexpr uint64_t error_share = 100'000;
constexpr uint64_t miss_share = 1'000;
constexpr uint64_t packet_bytes = 500;

constexpr uint16_t first_segment = 1000;
constexpr uint8_t by_l4 = 2;  // the flow key type
constexpr uint8_t flow_forwarding = 1;
constexpr uint8_t expedited = 46 << 2;

P4TrafficCounters traffic(uint64_t packets)
{
    P4TrafficCounters made{};
    made.multicast_packets = packets / multicast_share;
    made.broadcast_packets = packets / broadcast_share;
    made.unicast_packets = packets - made.multicast_packets - made.broadcast_packets;
    made.unicast_bytes = made.unicast_packets * packet_bytes;
    made.multicast_bytes = made.multicast_packets * packet_bytes;
    made.broadcast_bytes = made.broadcast_packets * packet_bytes;
    return made;
}

P4PortCounters counters_of(const Host& host, const Port& port)
{
    const uint64_t rx = grown(host, port.rx_packets);
    const uint64_t tx = grown(host, port.tx_packets);
    return {traffic(rx), traffic(rx / drop_share), traffic(tx), traffic(tx / drop_share)};
}

// The packets of all uplinks, or of all other ports, in one direction.
uint64_t packets(const Host& host, bool of_uplinks, uint64_t Port::*direction)
{
    uint64_t sum = 0;
    for (const Port& port : host.hardware_tables.ports)
        if (port.is_uplink == of_uplinks)
            sum += grown(host, port.*direction);
    return sum;
}

uint16_t segment_of(const Port& port)
{
    return static_cast<uint16_t>(first_segment + port.vlan);
}

}  // namespace

P4LifCounters lif_counters(const Host& host, uint32_t lif)
{
    P4LifCounters made{};
    if (const Port* port = find(host.hardware_tables.ports, &Port::lif, lif)) {
        made.traffic = counters_of(host, *port);
        made.rx_queue.empty = grown(host, port->rx_packets) / drop_share;
        made.tx_queue.error = grown(host, port->tx_packets) / error_share;
    }
    return made;
}

P4PortCounters port_counters(const Host& host, uint32_t number)
{
    const Port* port = find(host.hardware_tables.ports, &Port::port, number);
    return port ? counters_of(host, *port) : P4PortCounters{};
}

P4IngressCounters ingress_counters(const Host& host, uint32_t)
{
    P4IngressCounters made{};
    made.from_host = packets(host, false, &Port::rx_packets);
    made.from_switch = packets(host, true, &Port::rx_packets);
    made.from_cpu = made.from_host / miss_share;
    made.user_checksum_errors = made.from_host / error_share;
    made.substrate_checksum_errors = made.from_switch / error_share;
    made.malformed = made.from_switch / error_share;
    return made;
}

P4EgressCounters egress_counters(const Host& host, uint32_t)
{
    P4EgressCounters made{};
    made.to_host = packets(host, false, &Port::tx_packets);
    made.to_switch = packets(host, true, &Port::tx_packets);
    made.to_cpu = made.flow_miss = made.to_host / miss_share;
    made.conntrack_redirects = made.to_host / drop_share;
    made.drops = made.to_host / drop_share;
    return made;
}

InputEntry input(const Host& host, uint32_t lif)
{
    InputEntry made{};
    const Port* port = find(host.hardware_tables.ports, &Port::lif, lif);
    if (!port)
        return made;
    made.lif = port->lif;
    made.port = port->port;
    made.host_port = port->host_port;
    made.representor_port = port->host_port;
    made.source_tag = port->tag;
    made.pinned_port = port->pinned_port;
    made.l2_segment = segment_of(*port);
    made.flow_key_type = by_l4;
    made.forwarding_mode = flow_forwarding;
    made.is_host_port_valid = !port->is_uplink;
    made.is_uplink = port->is_uplink;
    return made;
}

OutputEntry output(const Host& host, uint32_t number)
{
    OutputEntry made{};
    const Port* port = find(host.hardware_tables.ports, &Port::port, number);
    if (!port)
        return made;
    made.port = port->port;
    made.lif = port->lif;
    made.destination_tag = port->tag;
    made.vlan_strip = !port->is_uplink;
    made.vlan_push = port->is_uplink;
    made.rss_inner = !port->is_uplink;
    made.egress_port_count = 1;
    made.application = port->application;
    made.egress_ports[0] = static_cast<uint8_t>(port->port);
    made.pushed_vlan = port->is_uplink ? port->vlan : 0;
    made.access_vlan = port->is_uplink ? 0 : port->vlan;
    return made;
}

MuxVlanEntry mux_vlan(const Host& host, uint32_t vlan)
{
    MuxVlanEntry made{};
    const Port* port = find(host.hardware_tables.ports, &Port::mux_vlan, vlan);
    if (!port || port->is_uplink)
        return made;
    made.vlan = port->mux_vlan;
    made.lifs[0] = port->lif;
    made.source_port = port->port;
    made.source_tag = port->tag;
    made.representor_port = port->host_port;
    made.flow_key_type = by_l4;
    made.valid = 1;
    return made;
}

L2SegmentEntry l2_segment(const Host& host, uint32_t segment)
{
    L2SegmentEntry made{};
    if (segment >= first_segment && find(host.hardware_tables.ports, &Port::vlan, segment - first_segment)) {
        made.host_receives_unknown_multicast = 1;
        made.host_receives_broadcast = 1;
        made.replication = static_cast<uint16_t>(segment - first_segment);
    }
    return made;
}

std::optional<VlanMapEntry> vlan_map(const Host& host, const P4VlanMapKey& key)
{
    const Port* port = find(host.hardware_tables.ports, &Port::vlan, key.vlan);
    if (!port || key.qualifier != 0)
        return std::nullopt;
    return VlanMapEntry{1, segment_of(*port)};
}

// A MAC address is registered in the segment of its port.
std::optional<RegisteredMacEntry> registered_mac(const Host& host, const P4RegisteredMacKey& key)
{
    for (const Port& port : host.hardware_tables.ports) {
        P4RegisteredMacKey registered{segment_of(port), {}};
        store_mac_of_key(registered.mac, port.mac);
        if (!port.is_uplink && same_key(registered, key))
            return RegisteredMacEntry{port.port, 0, 0, port.lif};
    }
    return std::nullopt;
}

DscpEntry dscp(const Host&, uint32_t)
{
    return {0xfc, expedited, 0xfc, expedited};
}

UplinkMapEntry uplink_map(const Host& host, uint32_t)
{
    UplinkMapEntry made{};
    size_t uplinks = 0;
    for (const Port& port : host.hardware_tables.ports)
        if (port.is_uplink && uplinks < std::size(made.ports)) {
            made.ports[uplinks] = port.port;
            made.tags[uplinks++] = port.tag;
        }
    return made;
}

}  // namespace host::hardware
