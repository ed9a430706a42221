// What a scenario says of flows.
#pragma once

#include "host/scenario/ports.h"

namespace host::scenario {

inline constexpr size_t max_described_flows = 1 << 22;

constexpr Name named(const char* name, FlowAction action)
{
    return {name, action_bit(action)};
}
inline constexpr Name flow_actions[] = {
    named("inputChildPort", FlowAction::input_child_port),
    named("lro", FlowAction::lro),
    named("ipfixIngress", FlowAction::ipfix_ingress),
    named("drop", FlowAction::drop),
    named("firewallSource", FlowAction::firewall_source),
    named("destinationPort", FlowAction::destination_port),
    named("slowPath", FlowAction::slow_path),
    named("vlanInsert", FlowAction::vlan_insert),
    named("vlanRemove", FlowAction::vlan_remove),
    named("portInsert", FlowAction::port_insert),
    named("portRemove", FlowAction::port_remove),
    named("guestVlanInsert", FlowAction::guest_vlan_insert),
    named("mirrorIngress", FlowAction::mirror_ingress),
    named("destinationMac", FlowAction::destination_mac),
    named("routing", FlowAction::routing),
    named("vni", FlowAction::vni),
    named("geneveDecap", FlowAction::geneve_decap),
    named("vxlanDecap", FlowAction::vxlan_decap),
    named("geneveEncap", FlowAction::geneve_encap),
    named("vxlanEncap", FlowAction::vxlan_encap),
    named("guestVlanRemove", FlowAction::guest_vlan_remove),
    named("ipfixEgress", FlowAction::ipfix_egress),
    named("firewallDestination", FlowAction::firewall_destination),
    named("mirrorEgress", FlowAction::mirror_egress),
    named("outputVlan", FlowAction::output_vlan),
    named("innerLookup", FlowAction::inner_lookup),
    named("l3VlanRouted", FlowAction::l3_vlan_routed),
    named("lta", FlowAction::lta),
    named("metaFlow", FlowAction::meta_flow),
};
inline constexpr Name protocols[] = {
    {"icmp", protocol_icmp}, {"tcp", protocol_tcp}, {"udp", protocol_udp}, {"icmpv6", protocol_icmpv6}};

// The flows of all lcores while they are read, or written.
class FlowList {
public:
    using value_type = Flow;

    explicit FlowList(const FlowTables& tables)
    {
        for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
            tables_[lcore] = tables.of(lcore);
    }
    FlowList() = default;

    void clear() { *this = {}; }
    size_t size() const { return size_; }
    void push_back(Flow&& flow)
    {
        tables_[flow.lcore].push_back(std::move(flow));
        ++size_;
    }
    std::array<std::vector<Flow>, max_lcores> take() { return std::move(tables_); }

    class Iterator {
    public:
        Iterator(const FlowList& list, uint32_t lcore) : list_{list}, lcore_{lcore} { skip(); }
        const Flow& operator*() const { return list_.tables_[lcore_][index_]; }
        Iterator& operator++()
        {
            ++index_;
            skip();
            return *this;
        }
        bool operator!=(const Iterator& other) const { return lcore_ != other.lcore_ || index_ != other.index_; }

    private:
        void skip()
        {
            for (; lcore_ < max_lcores && index_ == list_.tables_[lcore_].size(); index_ = 0)
                ++lcore_;
        }

        const FlowList& list_;
        uint32_t lcore_;
        size_t index_ = 0;
    };
    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, max_lcores}; }

private:
    std::array<std::vector<Flow>, max_lcores> tables_;
    size_t size_ = 0;
};

// The switch of each lcore, or null.
using LcoreOwners = std::array<const Switch*, max_lcores>;

inline LcoreOwners lcore_owners(const Host& host)
{
    LcoreOwners made{};
    for (const Switch& each : host.switches)
        for (uint32_t lcore = 0; each.entry && lcore < max_lcores; ++lcore)
            if (each.entry->lcore_mask >> lcore & 1)
                made[lcore] = &each;
    return made;
}

inline MacAddress mac_of(const Port* port)
{
    return port ? std::to_array(port->entry.mac) : MacAddress{};
}

// An IP address, which a flow below layer 3 lacks.
template <class V>
void describe_address(V& v, const char* key, FlowPackets& packets, IpAddress& address, const char* help)
{
    std::optional<Ip> ip;
    if (packets.layer > 2)
        ip = Ip{packets.is_ipv6, address};
    v.derive([&] { ip.reset(); });
    v.optional(key, ip, maybe(IpKind{}), help);
    v.derive([&] {
        if (ip) {
            packets.is_ipv6 = ip->is_ipv6;
            address = ip->bytes;
        }
    });
}

template <class V>
void describe_packets(V& v, Flow& flow, const Host& host, const Switch* owner)
{
    FlowPackets& packets = flow.packets;
    v.derive([&] {
        const Port* from = find_port(*owner, flow.input_port);
        packets.source_mac = mac_of(from);
        packets.destination_mac = mac_of(find_port(*owner, flow.actions.destination_port));
        if (owner->entry->switch_number == host.smartnic.uplink_switch)
            packets.tag = tag_of(host.smartnic.port_of(flow.input_port));
    });
    v.optional("sourceMac", packets.source_mac, Mac48{}, "Absent: that of the input port.");
    v.optional("destinationMac", packets.destination_mac, Mac48{}, "Absent: that of the output port.");
    v.optional("vlan", packets.vlan, number(0, last_vlan), "");
    v.optional("tag", packets.tag, number(0, 0x7fff), "Absent: 0; from a port of the SmartNIC that port's tag.");
    v.optional("packetVni", packets.vni, number(0, last_vni), "Of the tunnel that its packets come in by.");
    v.derive([&] { packets.layer = 4; });
    v.optional("layer", packets.layer, number(2, 4), "What it is told apart by. Absent: 4.");
    describe_address(v, "source", packets, packets.source_ip, "Its IP address, from layer 3 on.");
    describe_address(v, "destination", packets, packets.destination_ip, "");
    v.optional("protocol", packets.protocol, OneOf{protocols}, "On layer 4.");
    v.optional("sourcePort", packets.source_port, number(), "On layer 4; of ICMP its type.");
    v.optional("destinationPort", packets.destination_port, number(), "On layer 4; of ICMP its code.");
}

template <class V>
void describe_actions(V& v, FlowActions& actions)
{
    v.optional("actions", actions.bitmap, Bits{flow_actions}, "What the datapath does with its packets.");
    v.optional("portIndex", actions.port_index, number(), "Of portInsert.");
    v.optional("insertedVlan", actions.vlan, number(0, last_vlan), "Of vlanInsert.");
    v.optional("vni", actions.vni, number(0, last_vni), "Of vni.");
    v.optional("ingressMirror", actions.ingress_mirror, number(), "The sessions of mirrorIngress, a bit each.");
    v.optional("egressMirror", actions.egress_mirror, number(), "The sessions of mirrorEgress, a bit each.");
    v.optional("outputVlan", actions.output_vlan, number(0, last_vlan), "Of outputVlan.");
    v.optional("inputChildPort", actions.input_child_port, number(), "Of inputChildPort.");
    v.optional("geneveVni", actions.geneve_vni, number(0, last_vni), "Of geneveEncap.");
    v.optional("vxlanVni", actions.vxlan_vni, number(0, last_vni), "Of vxlanEncap.");
    describe_counted(v, "routingInstances", actions.routing_instances, actions.num_routing_instances, "Of routing.");
    v.optional("multicastPorts", actions.multicast_ports, number(), "To how many ports it goes, if it is multicast.");
    v.optional("sourceContext", actions.source_context, maybe(number()), "Of firewallSource.");
    v.optional("destinationContext", actions.destination_context, maybe(number()), "Of firewallDestination.");
}

// The SmartNIC knows an offloaded flow by an index; another NIC by a pointer.
template <class V>
void describe_offload(V& v, Flow& flow, const Host& host, const Switch* owner, Order& order)
{
    bool is_offloaded = flow.offload.has_value();
    v.optional("offloaded", is_offloaded, Flag{}, "Whether a NIC has taken it over. Absent: false.");
    FlowOffload offload = flow.offload.value_or(FlowOffload{});
    v.derive([&] {
        offload.is_pointer = owner->entry->switch_number != host.smartnic.uplink_switch;
        offload.hardware_index = offload.is_pointer ? 0 : order.next_hardware_flow;
    });
    if (is_offloaded || std::is_same_v<V, SchemaMaker>) {
        v.optional("hardwareIndex", offload.hardware_index, number(),
                   "Of an offloaded flow. Absent: counted up from 100 in the SmartNIC, else 0.");
        v.optional("softwareIndex", offload.software_index, number(), "Of an offloaded flow.");
        v.derive([&] {
            order.next_hardware_flow += !offload.is_pointer;
            flow.offload = offload;
        });
    }
}

template <class V>
void describe_flow(V& v, Flow& flow, const Host& host, const LcoreOwners& owners, Order& order)
{
    v.required("lcore", flow.lcore, number(0, max_lcores - 1), "Which has it in its table.");
    const Switch* owner = owners[flow.lcore];
    v.check(owner, "lcore", "an lcore of a switch");
    v.optional("inputPort", flow.input_port, number(0, max_ports - 1), "The switch's port that it comes in by.");
    v.check(!owner || find_port(*owner, flow.input_port), "inputPort", "a port of the lcore's switch");
    v.optional("outputPort", flow.actions.destination_port, number(), "The switch's port that it leaves by.");
    describe_packets(v, flow, host, owner);
    describe_actions(v, flow.actions);
    v.optional("generation", flow.generation, number(), "");
    v.optional("invalidations", flow.num_invalidations, number(), "");
    v.optional("packets", flow.software_rate, number(), "That the datapath sees of it, a second.");
    v.optional("hardwarePackets", flow.hardware_rate, number(), "That a NIC sees of it, a second.");
    v.derive([&] { flow.packet_bytes = 512; });
    v.optional("packetBytes", flow.packet_bytes, number(), "Bytes of each packet. Absent: 512.");
    describe_offload(v, flow, host, owner, order);
}

template <class V>
void describe_flows(V& v, Host& host, Order& order)
{
    const LcoreOwners owners = lcore_owners(host);
    FlowList flows;
    if constexpr (std::is_same_v<V, Writer>)
        flows = FlowList{*host.flow_caches.tables};
    v.optional(
        "flows", flows,
        list(object([&](auto& w, Flow& flow) { describe_flow(w, flow, host, owners, order); }), max_described_flows),
        "The traffic of all switches, by the lcores that forward it. Absent: none.");
    std::vector<uint32_t> cleared;
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        if (!host.flow_caches.lcores[lcore].since)
            cleared.push_back(lcore);
    v.optional("clearedLcores", cleared, list(number(0, max_lcores - 1), max_lcores),
               "Those whose flows have been cleared.");
    v.derive([&] {
        host.flow_caches.tables = std::make_shared<FlowTables>(flows.take());
        for (const uint32_t lcore : cleared)
            host.flow_caches.lcores[lcore].since.reset();
        for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
            if (owners[lcore] && !owners[lcore]->setting.has_flow_cache)
                host.flow_caches.lcores[lcore].since.reset();
    });
}

}  // namespace host::scenario
