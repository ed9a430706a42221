// Entries about the pipeline's ports and VLANs: those of the port model.
#include <algorithm>

#include "host/answers/hardware_entries.h"

namespace host::hardware {

namespace {

constexpr uint16_t first_segment = 1000;
constexpr uint8_t expedited = 46 << 2;
constexpr uint8_t classic_nic = 1;  // the application behind a port that is no uplink

uint16_t segment_of(const P4OutputPort& port)
{
    return static_cast<uint16_t>(first_segment + port.default_vlan);
}

// The ports that are in a VLAN unless their packets say otherwise.
bool has_ports(const Host& host, uint32_t vlan)
{
    return vlan != 0 && std::ranges::any_of(host.smartnic.output_ports(),
                                            [=](const auto& row) { return row.second.default_vlan == vlan; });
}

}  // namespace

P4InputEntry input(const Host& host, uint32_t number)
{
    P4InputEntry entry{};
    const P4LifPort* lif = host.smartnic.lif(number);
    const auto port = lif ? host.smartnic.output_port(lif->source_port) : std::nullopt;
    if (!port)
        return entry;
    const auto uplinks = host.smartnic.uplinks();
    entry.lif = lif->lif;
    entry.port = lif->source_port;
    entry.host_port = lif->source_port;
    entry.representor_port = lif->rep_port;
    entry.source_tag = port->tag;
    entry.l2_segment = segment_of(*port);
    entry.flow_key_type.set(entry.flags, lif_flow_key_type.unpacked(lif->flags));
    entry.forwarding_mode.set(entry.flags, lif_fwd_mode.unpacked(lif->flags));
    const bool is_uplink = lif->type == uplink_lif;
    entry.is_uplink.set(entry.flags, is_uplink);
    entry.is_host_port_valid.set(entry.flags, !is_uplink);
    if (!is_uplink && !uplinks.empty())
        entry.pinned_port = uplinks[number % uplinks.size()].destination_port;
    return entry;
}

// A setting of the switch's port behind it counts here too.
P4OutputEntry output(const Host& host, uint32_t number)
{
    P4OutputEntry entry{};
    const auto port = host.smartnic.output_port(number);
    if (!port)
        return entry;
    const bool is_uplink = port->lif_type == uplink_lif;
    entry.port = port->destination_port;
    entry.lif = port->lif;
    entry.destination_tag = port->tag;
    entry.vlan_strip.set(entry.flags, !is_uplink);
    entry.vlan_push.set(entry.flags, is_uplink);
    entry.rss_inner.set(entry.flags, !is_uplink);
    entry.application = is_uplink ? 0 : classic_nic;
    (is_uplink ? entry.pushed_vlan : entry.access_vlan) = port->default_vlan;
    if (is_uplink) {
        entry.num_egress_ports.set(entry.flags, 1);
        entry.egress_ports[0] = static_cast<uint8_t>(port->destination_port);
    }
    const auto fc_port = host.smartnic.fc_ports.find(number);
    if (host.smartnic.uplink_switch && fc_port != host.smartnic.fc_ports.end()) {
        const P4RssOverride setting = host.smartnic.rss_override(*host.smartnic.uplink_switch, fc_port->second);
        entry.rss_override = setting.is_override != 0;
        entry.rss_override_queue = setting.queue;
    }
    return entry;
}

P4MuxVlanEntry mux_vlan(const Host& host, uint32_t vlan)
{
    P4MuxVlanEntry entry{};
    const P4VlanPort* port = host.smartnic.vlan_port(vlan);
    if (!port)
        return entry;
    entry.vlan = port->mux_vlan;
    entry.lifs[0] = port->pf_lifs[0];
    entry.lifs[1] = port->pf_lifs[1];
    entry.source_port = port->source_port;
    entry.source_tag = tag_of(port->source_port);
    entry.representor_port = port->rep_port;
    entry.flow_key_type.set(entry.flags, port->flow_key_type);
    entry.is_valid.set(entry.flags, 1);
    return entry;
}

P4L2SegmentEntry l2_segment(const Host& host, uint32_t segment)
{
    P4L2SegmentEntry entry{};
    if (segment >= first_segment && has_ports(host, segment - first_segment)) {
        entry.host_receives_unknown_multicast.set(entry.flags, 1);
        entry.host_receives_broadcast.set(entry.flags, 1);
        entry.replication = static_cast<uint16_t>(segment - first_segment);
    }
    return entry;
}

std::optional<P4VlanMapEntry> vlan_map(const Host& host, const P4VlanMapKey& key)
{
    if (!has_ports(host, key.vlan) || key.qualifier != 0)
        return std::nullopt;
    return P4VlanMapEntry{1, static_cast<uint16_t>(first_segment + key.vlan)};
}

// The MAC address of a switch's port is registered in the segment of the port before it.
std::optional<P4RegisteredMacEntry> registered_mac(const Host& host, const P4RegisteredMacKey& key)
{
    const auto owner = std::ranges::find_if(host.switches, [&](const Switch& each) {
        return each.entry && each.entry->switch_number == host.smartnic.uplink_switch;
    });
    if (owner == host.switches.end())
        return std::nullopt;
    for (const auto& [number, row] : host.smartnic.output_ports()) {
        const auto fc_port = host.smartnic.fc_ports.find(number);
        if (row.lif_type == uplink_lif || segment_of(row) != key.qualifier || fc_port == host.smartnic.fc_ports.end())
            continue;
        const auto port =
            std::ranges::find(owner->ports, fc_port->second, [](const Port& each) { return each.entry.port; });
        if (port != owner->ports.end() && std::equal(std::rbegin(port->entry.mac), std::rend(port->entry.mac), key.mac))
            return P4RegisteredMacEntry{row.destination_port, 0, row.lif};
    }
    return std::nullopt;
}

P4DscpEntry dscp(const Host&)
{
    return {0xfc, expedited, 0xfc, expedited};
}

P4UplinkMapEntry uplink_map(const Host& host)
{
    P4UplinkMapEntry entry{};
    size_t count = 0;
    for (const P4OutputPort& uplink : host.smartnic.uplinks())
        if (count < std::size(entry.ports)) {
            entry.ports[count] = uplink.destination_port;
            entry.tags[count++] = uplink.tag;
        }
    return entry;
}

}  // namespace host::hardware
