// The SmartNIC's port model: host PFs, LIFs, mux VLAN ports, output ports, mux mode, RSS overrides, log level, aging.
#include "host/state/smartnic.h"

#include <algorithm>

#include "host/state/host.h"

namespace host {

namespace {

constexpr uint16_t tag_of_port_0 = 2048;
constexpr uint32_t default_aging_interval = 10;

constexpr uint16_t narrow(uint32_t value)
{
    return static_cast<uint16_t>(value);
}

template <class Value>
const Value* found_in(const std::map<uint32_t, Value>& table, uint32_t key)
{
    const auto found = table.find(key);
    return found == table.end() ? nullptr : &found->second;
}

// A row of the output port table, with what the port keeps of its own.
P4OutputPort row_of(const SmartNic& nic, uint16_t port, uint16_t lif, uint8_t lif_type, uint16_t status)
{
    P4OutputPort row{};
    row.destination_port = port;
    row.tag = tag_of(port);
    row.lif = lif;
    row.lif_type = lif_type;
    row.status = status;
    if (const uint16_t* default_vlan = found_in(nic.default_vlans, port))
        row.default_vlan = *default_vlan;
    return row;
}

P4OutputPort row_of(const SmartNic& nic, const P4LifPort& lif)
{
    return row_of(nic, lif.source_port, lif.lif, lif.type, lif.status);
}

P4OutputPort row_of(const SmartNic& nic, const P4VlanPort& port)
{
    P4OutputPort row = row_of(nic, port.source_port, port.pf_lifs[0], vlan_port_lif, port.status);
    row.mux_vlan = port.mux_vlan;
    return row;
}

}  // namespace

bool SmartNic::is_present() const
{
    return uplink_switch || host_pfs.count > 0 || !lifs.empty() || !vlan_ports.empty() || !mux_switches.empty();
}

const P4LifPort* SmartNic::lif(uint32_t number) const
{
    return found_in(lifs, number);
}

const P4VlanPort* SmartNic::vlan_port(uint32_t mux_vlan) const
{
    return found_in(vlan_ports, mux_vlan);
}

const MuxSwitch* SmartNic::mux_switch(uint32_t switch_number) const
{
    return found_in(mux_switches, switch_number);
}

std::map<uint32_t, P4OutputPort> SmartNic::output_ports() const
{
    std::map<uint32_t, P4OutputPort> rows;
    for (const auto& [number, lif] : lifs)
        rows[lif.source_port] = row_of(*this, lif);
    for (const auto& [vlan, port] : vlan_ports)
        rows[port.source_port] = row_of(*this, port);
    return rows;
}

// As in the whole table, which is not made for this: the last one that sends from the port counts.
std::optional<P4OutputPort> SmartNic::output_port(uint32_t port) const
{
    std::optional<P4OutputPort> row;
    for (const auto& [number, lif] : lifs)
        if (lif.source_port == port)
            row = row_of(*this, lif);
    for (const auto& [vlan, vlan_port] : vlan_ports)
        if (vlan_port.source_port == port)
            row = row_of(*this, vlan_port);
    return row;
}

std::vector<P4OutputPort> SmartNic::uplinks() const
{
    std::vector<P4OutputPort> found;
    for (const auto& [number, lif] : lifs)
        if (lif.type == uplink_lif)
            found.push_back(row_of(*this, lif));
    return found;
}

P4Traffic SmartNic::traffic_of(uint32_t port) const
{
    if (const P4Traffic* described = found_in(traffic, port))
        return *described;
    const uint64_t packet_bytes = 64 + 29 * port % 1400;
    return {{400 + 13 * port, packet_bytes}, {300 + 17 * port, packet_bytes}};
}

uint16_t SmartNic::port_of(uint32_t fc_port) const
{
    const auto found = std::ranges::find(fc_ports, fc_port, [](const auto& item) { return item.second; });
    return found == fc_ports.end() ? uint16_t{0} : narrow(found->first);
}

P4RssOverride SmartNic::rss_override(uint32_t switch_number, uint32_t port) const
{
    const auto found = rss_overrides.find({switch_number, port});
    return found == rss_overrides.end() ? P4RssOverride{narrow(switch_number), narrow(port), 0, 0} : found->second;
}

uint16_t tag_of(uint32_t port)
{
    return narrow(tag_of_port_0 + port);
}

uint32_t SmartNic::aging_interval(uint32_t selector) const
{
    const uint32_t* interval = found_in(aging_intervals, selector);
    return interval ? *interval : default_aging_interval;
}

bool SmartNic::delete_port(uint32_t port)
{
    const auto sends_from_it = [=](const auto& item) { return item.second.source_port == port; };
    default_vlans.erase(port);
    return std::erase_if(lifs, sends_from_it) + std::erase_if(vlan_ports, sends_from_it) != 0;
}

}  // namespace host
