// The SmartNIC's port model: host PFs, LIFs, mux VLAN ports, output ports, mux mode, RSS overrides, log level, aging.
#include "host/state/smartnic.h"

#include <algorithm>

#include "host/host.h"

namespace host {

namespace {

constexpr uint16_t tag_of_port_0 = 2048;
constexpr uint32_t default_aging_interval = 10;

// The built-in model. LIF n sends from port n, its representor is port n + 512; so it is with mux VLAN ports.
constexpr uint32_t first_pf = 1, pf_count = 4;
constexpr uint32_t first_uplink = 8, uplink_count = 2;
constexpr uint32_t first_vf = 16, vf_count = 180;
constexpr uint32_t first_vlan = 100, first_vlan_source = 256, vlan_count = 180;
constexpr uint32_t first_rep_port = 512;
constexpr uint32_t first_fc_port = 64;

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

void add_lifs(SmartNic& nic, uint32_t first, uint32_t count, LifType type)
{
    for (uint32_t lif = first; lif < first + count; ++lif) {
        const uint32_t flow_key_type = type == vf_lif ? lif % max_flow_key_types : 0;
        nic.lifs[lif] = {
            .lif = narrow(lif),
            .source_port = narrow(lif),
            .rep_port = narrow(first_rep_port + lif),
            .unused = 0,
            .type = type,
            .flags = lif_flags(flow_key_type, type == vf_lif && lif % 2, type == pf_lif),
            .status = lif % 16 == 15 ? uint16_t{0} : port_is_up,
        };
        if (type == vf_lif && lif % 4 == 0)
            nic.default_vlans[lif] = narrow(10 + lif % 8);
    }
}

// A mux VLAN port on a pair of PFs, with the FC port that it stands for.
void add_vlan_port(SmartNic& nic, MuxSwitch& owner, uint32_t index)
{
    const uint16_t vlan = narrow(first_vlan + index);
    const uint16_t source_port = narrow(first_vlan_source + index);
    const uint16_t pf = narrow(first_pf + index % 2 * 2);
    const uint16_t fc_port = narrow(first_fc_port + index);
    nic.vlan_ports[vlan] = {
        .mux_vlan = vlan,
        .pf_lifs = {pf, narrow(pf + 1u)},
        .source_port = source_port,
        .unused = 0,
        .rep_port = narrow(first_rep_port + source_port),
        .flow_key_type = static_cast<uint8_t>(index % max_flow_key_types),
        .flags = 0,
        .status = port_is_up,
    };
    nic.fc_ports[source_port] = fc_port;
    owner.vlans[fc_port] = {fc_port, vlan, source_port};
    owner.shadow_ports[fc_port] = {fc_port, pf, vlan};
}

// The switch's uplinks are the SmartNIC's; behind each of its other ports lies a VF.
void add_fc_ports(SmartNic& nic, const Host& host)
{
    uint32_t uplink = first_uplink, vf = first_vf;
    for (const Switch& owner : host.switches)
        for (const Port& port : owner.ports)
            if (owner.entry && owner.entry->switch_number == nic.uplink_switch)
                nic.fc_ports[is_a(port, ClientType::uplink) ? uplink++ : vf++] = narrow(port.entry.port);
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

SmartNic default_smartnic(const Host& host)
{
    constexpr uint16_t smartnic_switch = 2;
    SmartNic nic{};
    nic.uplink_switch = smartnic_switch;
    nic.host_pfs.count = pf_count;
    for (uint32_t i = 0; i < pf_count; ++i)
        nic.host_pfs.lifs[i] = narrow(first_pf + i);
    add_lifs(nic, first_pf, pf_count, pf_lif);
    add_lifs(nic, first_uplink, uplink_count, uplink_lif);
    add_lifs(nic, first_vf, vf_count, vf_lif);

    MuxSwitch& mux_switch = nic.mux_switches[smartnic_switch];
    for (uint32_t i = 0; i < vlan_count; ++i)
        add_vlan_port(nic, mux_switch, i);

    for (const uint16_t fc_port : {uint16_t{70}, uint16_t{96}})
        nic.rss_overrides[{smartnic_switch, fc_port}] = {smartnic_switch, fc_port,
                                                         static_cast<uint8_t>(fc_port % max_rss_queues), 1};
    add_fc_ports(nic, host);
    nic.log_level = {3};
    return nic;
}

}  // namespace host
