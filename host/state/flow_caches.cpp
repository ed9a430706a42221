// The flow caches of the lcores.
#include "host/state/flow_caches.h"

#include <algorithm>

#include "host/host.h"

namespace host {

namespace {

// Of the SmartNIC's switch: the uplinks where tunnels begin and end.
constexpr uint16_t geneve_uplink = 0;
constexpr uint16_t vxlan_uplink = 1;

MacAddress mac_of(const Port& port)
{
    MacAddress mac;
    std::memcpy(mac.data(), port.entry.mac, sizeof mac);
    return mac;
}

// Addresses of a tenant's network: 10.<switch>.<network>.<host>, and its like.
IpAddress address(const Switch& owner, bool is_ipv6, uint32_t network, uint32_t number)
{
    const auto switch_number = static_cast<uint8_t>(owner.entry->switch_number);
    const auto subnet = static_cast<uint8_t>(network);
    const auto last = static_cast<uint8_t>(number);
    if (is_ipv6)
        return {0x20, 0x01, 0x0d, 0xb8, 0, switch_number, 0, subnet, 0, 0, 0, 0, 0, 0, 0x10, last};
    return {10, switch_number, subnet, last};
}

// A flow under construction, and what its recipe may draw on.
struct Draft {
    Flow& flow;
    const Switch& owner;
    uint32_t number;  // of the flow among all

    void act(std::initializer_list<FlowAction> actions) const
    {
        for (const FlowAction action : actions)
            flow.actions.bitmap |= action_bit(action);
    }

    void is_ip(uint32_t layer, bool is_ipv6) const
    {
        flow.packets.layer = layer;
        flow.packets.is_ipv6 = is_ipv6;
        flow.packets.source_ip = address(owner, is_ipv6, number % 5, 1 + number % 250);
        flow.packets.destination_ip = address(owner, is_ipv6, 16 + number % 3, 1 + number * 7 % 250);
    }

    void is_transport(uint8_t protocol, bool is_ipv6, uint16_t service) const
    {
        is_ip(4, is_ipv6);
        flow.packets.protocol = protocol;
        flow.packets.source_port = static_cast<uint16_t>(32768 + number * 131 % 28000);
        flow.packets.destination_port = service;
    }

    void is_echo(bool is_ipv6) const
    {
        is_ip(4, is_ipv6);
        flow.packets.protocol = is_ipv6 ? protocol_icmpv6 : protocol_icmp;
        flow.packets.source_port = is_ipv6 ? 128 : 8;
    }
};

void web_into_geneve(const Draft& draft)
{
    draft.is_transport(protocol_tcp, false, 443);
    draft.act({FlowAction::ipfix_ingress, FlowAction::destination_port, FlowAction::geneve_encap});
    draft.flow.actions.vni = 69632 + draft.number % 4;
    draft.flow.actions.geneve_vni = draft.flow.actions.vni;
}

void web_out_of_geneve(const Draft& draft)
{
    draft.is_transport(protocol_tcp, false, 8443);
    draft.act({FlowAction::destination_port, FlowAction::vni, FlowAction::geneve_decap, FlowAction::ipfix_egress});
    draft.flow.packets.vni = 69632 + draft.number % 4;
    draft.flow.actions.vni = draft.flow.packets.vni;
}

void database_into_vxlan(const Draft& draft)
{
    draft.is_transport(protocol_tcp, true, 5432);
    draft.act({FlowAction::destination_port, FlowAction::vxlan_encap, FlowAction::inner_lookup});
    draft.flow.actions.vni = 5000 + draft.number % 3;
    draft.flow.actions.vxlan_vni = draft.flow.actions.vni;
}

void names_out_of_vxlan(const Draft& draft)
{
    draft.is_transport(protocol_udp, true, 53);
    draft.act({FlowAction::destination_port, FlowAction::destination_mac, FlowAction::vxlan_decap});
    draft.flow.packets.vni = 5000 + draft.number % 3;
}

void echo_through_firewall(const Draft& draft)
{
    draft.is_echo(false);
    draft.act({FlowAction::firewall_source, FlowAction::destination_port, FlowAction::firewall_destination});
    draft.flow.actions.source_context = 0x100000000 + draft.number;
    draft.flow.actions.destination_context = 0x200000000 + draft.number;
}

void echo_through_stateless_firewall(const Draft& draft)
{
    draft.is_echo(true);
    draft.act({FlowAction::firewall_source, FlowAction::destination_port, FlowAction::firewall_destination});
}

void names_mirrored(const Draft& draft)
{
    draft.is_transport(protocol_udp, false, 53);
    draft.act({FlowAction::destination_port, FlowAction::mirror_ingress, FlowAction::mirror_egress});
    draft.flow.actions.ingress_mirror = static_cast<uint8_t>(1 + draft.number % 3);
    draft.flow.actions.egress_mirror = 7;
}

void routed(const Draft& draft)
{
    draft.is_ip(3, draft.number % 2 == 1);
    draft.act({FlowAction::destination_port, FlowAction::destination_mac, FlowAction::routing});
    for (uint32_t i = 0; i < 1 + draft.number % max_routing_instances; ++i)
        draft.flow.actions.routing_instances[draft.flow.actions.num_routing_instances++] = 0x1770 + i;
}

void vlan_inserted(const Draft& draft)
{
    draft.flow.packets.layer = 2;
    draft.act({FlowAction::destination_port, FlowAction::vlan_insert, FlowAction::port_insert});
    draft.flow.actions.vlan = static_cast<uint16_t>(100 + draft.number % 20);
    draft.flow.actions.port_index = static_cast<uint8_t>(draft.number % 8);
}

void vlan_removed(const Draft& draft)
{
    draft.flow.packets.layer = 2;
    draft.flow.packets.vlan = static_cast<uint16_t>(100 + draft.number % 20);
    draft.flow.packets.tag = static_cast<uint16_t>(draft.number * 97 % 0x8000);
    draft.act({FlowAction::destination_port, FlowAction::vlan_remove, FlowAction::port_remove});
}

void routed_between_vlans(const Draft& draft)
{
    draft.is_transport(protocol_udp, false, 4789);
    draft.act({FlowAction::input_child_port, FlowAction::guest_vlan_insert, FlowAction::output_vlan,
               FlowAction::l3_vlan_routed});
    draft.flow.actions.input_child_port = 0x4000 + draft.number;
    draft.flow.actions.output_vlan = static_cast<uint16_t>(200 + draft.number % 20);
}

void dropped(const Draft& draft)
{
    draft.is_transport(protocol_tcp, false, 23);
    draft.act({FlowAction::drop, FlowAction::vni});
}

void to_the_slow_path(const Draft& draft)
{
    draft.is_transport(protocol_udp, true, 546);
    draft.act({FlowAction::lro, FlowAction::slow_path, FlowAction::lta, FlowAction::meta_flow});
}

void multicast(const Draft& draft)
{
    draft.is_transport(protocol_udp, false, 5353);
    draft.flow.packets.destination_mac = {0x01, 0x00, 0x5e, 0, 0, 0xfb};
    draft.flow.packets.destination_ip = {224, 0, 0, 251};
    draft.flow.actions.multicast_ports = static_cast<uint8_t>(2 + draft.number % 6);
}

using Recipe = void(const Draft& draft);

constexpr Recipe* recipes[] = {
    web_into_geneve,       web_out_of_geneve,
    database_into_vxlan,   names_out_of_vxlan,
    echo_through_firewall, echo_through_stateless_firewall,
    names_mirrored,        routed,
    vlan_inserted,         vlan_removed,
    routed_between_vlans,  dropped,
    to_the_slow_path,      multicast,
};

bool is_of_smartnic(const Host& host, const Switch& owner)
{
    return owner.entry->switch_number == host.smartnic.uplink_switch;
}

// A SmartNIC takes over what it can; other uplinks take some established connections, if their NIC knows how to.
bool is_offloaded(const Host& host, const Switch& owner, const Flow& flow, uint32_t number)
{
    if (flow.actions.multicast_ports || has(flow, FlowAction::slow_path))
        return false;
    if (is_of_smartnic(host, owner))
        return flow.packets.layer > 2 && number % 4 != 1;
    return owner.features.nic.models && number % 7 == 0;
}

// What lies behind a tunnel comes and goes by the uplink where the tunnel ends. A flow's tag is that of the port it
// comes in by.
void go_by_uplink(const Host& host, Flow& flow, uint32_t number)
{
    const MacAddress remote{0x02, 0x50, 0x56, 0x0a, 0x00, static_cast<uint8_t>(number)};
    const bool is_geneve = has(flow, FlowAction::geneve_encap) || has(flow, FlowAction::geneve_decap);
    const uint16_t uplink = is_geneve ? geneve_uplink : vxlan_uplink;
    if (has(flow, FlowAction::geneve_encap) || has(flow, FlowAction::vxlan_encap)) {
        flow.actions.destination_port = uplink;
        flow.packets.destination_mac = remote;
    } else if (has(flow, FlowAction::geneve_decap) || has(flow, FlowAction::vxlan_decap)) {
        flow.input_port = uplink;
        flow.packets.source_mac = remote;
    }
    flow.packets.tag = tag_of(host.smartnic.port_of(flow.input_port));
}

Flow flow(const Host& host, const Switch& owner, uint32_t lcore, uint32_t number)
{
    const Port& from = owner.ports[number % owner.ports.size()];
    const Port& to = owner.ports[(number * 5 + 1) % owner.ports.size()];

    Flow made{};
    made.lcore = lcore;
    made.input_port = static_cast<uint16_t>(from.entry.port);
    made.packets.source_mac = mac_of(from);
    made.packets.destination_mac = mac_of(to);
    made.actions.destination_port = static_cast<uint16_t>(to.entry.qdp_port);
    made.generation = 40 + number % 9;
    made.num_invalidations = number % 11;
    made.software_rate = 5 + number * 13 % 900;
    made.packet_bytes = 64 + number * 37 % 1400;
    recipes[number % std::size(recipes)]({made, owner, number});
    if (is_of_smartnic(host, owner))
        go_by_uplink(host, made, number);

    if (is_offloaded(host, owner, made, number)) {
        const uint64_t pointer = 0x430a5c000000 + uint64_t{number} * 0x80;
        made.offload = is_of_smartnic(host, owner) ? FlowOffload{0, number, false} : FlowOffload{0, pointer, true};
        made.hardware_rate = made.software_rate * 20;
        made.software_rate = 1;  // the packets that came before it was offloaded, and its refreshes
    }
    return made;
}

bool has_lcore(const Switch& owner, uint32_t lcore)
{
    return lcore < max_lcores && (owner.entry->lcore_mask >> lcore & 1);
}

}  // namespace

FlowTables::FlowTables(std::array<std::vector<Flow>, max_lcores> tables) : tables_{std::move(tables)}
{
    for (const auto& table : tables_)
        for (const Flow& flow : table)
            if (is_in_pipeline(flow))
                in_pipeline_.emplace(flow.offload->hardware_index, &flow);
}

const Flow* FlowTables::in_pipeline(uint32_t hardware_index) const
{
    const auto found = in_pipeline_.find(hardware_index);
    return found == in_pipeline_.end() ? nullptr : found->second;
}

std::span<const Flow> FlowCaches::of(uint32_t lcore) const
{
    return lcores[lcore].since ? std::span{tables->of(lcore)} : std::span<const Flow>{};
}

const Flow* FlowCaches::offloaded(uint32_t hardware_index) const
{
    const Flow* flow = tables->in_pipeline(hardware_index);
    return flow && lcores[flow->lcore].since ? flow : nullptr;
}

uint64_t FlowCaches::num_offloaded() const
{
    uint64_t count = 0;
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        count += static_cast<uint64_t>(std::ranges::count_if(of(lcore), is_in_pipeline));
    return count;
}

FlowCaches default_flow_caches(const Host& host)
{
    std::array<std::vector<Flow>, max_lcores> made;
    uint32_t number = 0;
    for (const Switch& owner : host.switches)
        for (uint32_t lcore = 0; owner.entry && lcore < max_lcores; ++lcore)
            if (has_lcore(owner, lcore))
                for (const uint32_t end = number + 24 + lcore * 11 % 30; number < end; ++number)
                    made[lcore].push_back(flow(host, owner, lcore, number));

    uint32_t index = first_hardware_flow;
    for (auto& flows : made)
        for (Flow& each : flows)
            if (is_in_pipeline(each))
                each.offload->hardware_index = index++;
    FlowCaches caches;
    caches.tables = std::make_shared<FlowTables>(std::move(made));
    return caches;
}

uint64_t software_hits(const Host& host, const Flow& flow)
{
    return host.clock.grown(flow.software_rate, host.flow_caches.lcores[flow.lcore].since.value_or(0));
}

uint64_t hardware_hits(const Host& host, const Flow& flow)
{
    return host.clock.grown(flow.hardware_rate, host.flow_caches.lcores[flow.lcore].since.value_or(0));
}

void clear_flows(Host& host, const Switch& owner)
{
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore) {
        LcoreFlows& state = host.flow_caches.lcores[lcore];
        if (!has_lcore(owner, lcore) || !state.since)
            continue;
        for (const Flow& each : host.flow_caches.of(lcore)) {
            ++state.cleared.count;
            state.cleared.software_hits += software_hits(host, each);
            state.cleared.hardware_hits += hardware_hits(host, each);
        }
        state.since.reset();
    }
}

// The same flows come again; those that were offloaded get their indexes back.
void fill_flows(Host& host, const Switch& owner)
{
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        if (has_lcore(owner, lcore))
            host.flow_caches.lcores[lcore].since = host.clock.nanoseconds();
}

}  // namespace host
