// What the SmartNIC's pipeline works on: the ports of the switch behind it, two tunnels, and conversations between VMs,
// and between VMs and what lies behind the tunnels.
#include "host/state/hardware_tables.h"

#include <algorithm>

#include "host/host.h"

namespace host {

namespace hardware {

namespace {

constexpr uint8_t tcp = 6;
constexpr uint8_t udp = 17;
constexpr uint16_t first_lif = 64;
constexpr uint16_t first_mux_vlan = 2000;
constexpr uint16_t first_vlan = 100;
constexpr uint16_t vlans = 4;
constexpr uint16_t uplinks = 2;
constexpr uint64_t collector_mac = 0x001b21aa00fe;  // where mirrored packets go
constexpr uint8_t classic_nic = 1;

constexpr Address ipv4(uint32_t address)
{
    return {true, 0, address};
}

constexpr Address ipv6(uint64_t high, uint64_t low)
{
    return {false, high, low};
}

uint64_t mac_number(const uint8_t (&mac)[mac_bytes])
{
    uint64_t number = 0;
    for (const uint8_t byte : mac)
        number = number << 8 | byte;
    return number;
}

// The switch whose uplinks end in a SmartNIC: the one that has representors.
const Switch* smartnic_switch(const Host& host)
{
    const auto found = std::ranges::find_if(host.switches, [](const Switch& candidate) {
        return std::ranges::any_of(candidate.ports, [](const host::Port& port) {
            return port.entry.client_type == static_cast<uint32_t>(ClientType::representor);
        });
    });
    return found == host.switches.end() ? nullptr : &*found;
}

// Two ways out, one over IPv4 and one over IPv6.
std::vector<Tunnel> tunnels(const std::vector<Port>& ports)
{
    return {
        {17, 1, ports[0].port, 300, 501, ports[0].mac, 0x001b21aa0001, ipv4(0xac100001), ipv4(0xac100002)},
        {18, 2, ports[1].port, 301, 502, ports[1].mac, 0x001b21aa0002, ipv6(0xfd00'0000'0000'0001, 1),
         ipv6(0xfd00'0000'0000'0001, 2)},
    };
}

std::vector<MirrorSession> mirrors(const std::vector<Port>& ports)
{
    return {
        {0, false, ports[0].port, 400, 0x5eed0001, ports[0].mac, collector_mac, ipv4(0xac100001), ipv4(0xac1000fe)},
        {3, true, ports[1].port, 401, 0x5eed0002, ports[1].mac, collector_mac, ipv6(0xfd00'0000'0000'0001, 1),
         ipv6(0xfd00'0000'0000'0001, 0xfe)},
    };
}

FlowEnd local(const Port& port, Address address, uint16_t transport_port)
{
    return {port.mac, address, transport_port, port.vlan, port.port, std::nullopt};
}

FlowEnd remote(const Tunnel& tunnel, uint64_t mac, Address address, uint16_t transport_port)
{
    return {mac, address, transport_port, 0, tunnel.uplink, tunnel.record};
}

// Its two directions, or only the first when its packets are dropped.
void add_conversation(std::vector<Flow>& flows, Flow first, bool has_reply)
{
    const auto add = [&](Flow flow) {
        const auto number = static_cast<uint32_t>(flows.size());
        flow.index = 3 + 7 * number;
        flow.ipfix = 1 + number;
        flows.push_back(flow);
    };
    first.conversation = flows.empty() ? 1 : flows.back().conversation + 1;
    first.is_dropped = !has_reply;
    add(first);
    if (!has_reply)
        return;
    first.is_reply = true;
    first.mirror.reset();
    std::swap(first.source, first.destination);
    add(first);
}

}  // namespace

std::vector<Port> ports_of(const Host& host)
{
    std::vector<Port> ports;
    const Switch* owner = smartnic_switch(host);
    if (!owner)
        return ports;
    for (const host::Port& port : owner->ports) {
        const auto number = static_cast<uint16_t>(port.entry.port);
        const bool is_uplink = port.entry.client_type == static_cast<uint32_t>(ClientType::uplink);
        Port& made = ports.emplace_back();
        made.port = number;
        made.lif = static_cast<uint16_t>(first_lif + number);
        made.host_port = number;
        made.tag = static_cast<uint16_t>(0x100 + number);
        made.vlan = static_cast<uint16_t>(first_vlan + number % vlans);
        made.mux_vlan = static_cast<uint16_t>(first_mux_vlan + number);
        made.is_uplink = is_uplink;
        made.pinned_port = is_uplink ? 0 : number % uplinks;
        made.application = is_uplink ? 0 : classic_nic;
        made.mac = mac_number(port.entry.mac);
        made.rx_packets = port.tx.packets;  // what the host's port sends comes in here
        made.tx_packets = port.rx.packets;
    }
    return ports;
}

std::vector<Flow> flows_of(const HardwareTables& tables)
{
    std::vector<Flow> flows;
    if (tables.ports.size() < 8 || tables.tunnels.size() < 2)
        return flows;
    const auto vm = [&](size_t number, Address address, uint16_t transport_port) {
        return local(tables.ports[2 + number], address, transport_port);
    };
    const Tunnel& first = tables.tunnels[0];
    const Tunnel& second = tables.tunnels[1];
    const auto add = [&](uint8_t protocol, uint64_t packets, uint64_t packet_bytes, FlowEnd source, FlowEnd destination,
                         std::optional<uint8_t> mirror = {}, bool has_reply = true) {
        Flow flow{};
        flow.protocol = protocol;
        flow.packets = packets;
        flow.packet_bytes = packet_bytes;
        flow.vlan = source.vlan;
        flow.vni = destination.tunnel ? 5000u + flow.vlan : 0;
        flow.source = source;
        flow.destination = destination;
        flow.mirror = mirror;
        add_conversation(flows, flow, has_reply);
    };

    add(tcp, 900, 1400, vm(0, ipv4(0x0a010002), 40001), remote(first, 0x0250560a0001, ipv4(0x0a020005), 443));
    add(udp, 40, 90, vm(1, ipv4(0x0a010003), 40002), remote(first, 0x0250560a0002, ipv4(0x0a020035), 53));
    add(tcp, 120, 700, vm(2, ipv6(0xfd00'0000'0000'00aa, 4), 40003),
        remote(second, 0x0250560a0003, ipv6(0xfd00'0000'0000'00bb, 9), 22));
    add(tcp, 300, 1000, vm(0, ipv4(0x0a010002), 40004), vm(4, ipv4(0x0a010006), 8080), 0);
    add(tcp, 5, 60, vm(3, ipv4(0x0a010005), 40005), vm(4, ipv4(0x0a010006), 23), {}, false);
    return flows;
}

}  // namespace hardware

HardwareTables default_hardware_tables(const Host& host)
{
    HardwareTables made;
    made.ports = hardware::ports_of(host);
    if (made.ports.size() >= 2) {
        made.tunnels = hardware::tunnels(made.ports);
        made.mirrors = hardware::mirrors(made.ports);
    }
    made.flows = hardware::flows_of(made);
    return made;
}

}  // namespace host
