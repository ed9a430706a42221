// What a scenario says of flows.
#pragma once

#include "host/scenario/ports.h"

namespace host::scenario {

inline constexpr size_t max_described_flows = 1 << 22;

constexpr NamedValue named(const char* name, FlowAction action)
{
    return {name, action_bit(action)};
}
inline constexpr NamedValue flow_actions[] = {
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
inline constexpr NamedValue protocols[] = {
    {"icmp", protocol_icmp}, {"tcp", protocol_tcp}, {"udp", protocol_udp}, {"icmpv6", protocol_icmpv6}};

// The flows of all lcores: those of a host, and in their place those that are read. Of repeated ones that are not kept
// only the number is.
class FlowList {
public:
    using value_type = Flow;

    FlowList() = default;
    FlowList(std::shared_ptr<const FlowTables> present, bool keeps_repeated)
        : present_{std::move(present)}, keeps_repeated_{keeps_repeated}
    {
    }

    void will_read(const Json::Array& list) { is_kept_ = keeps_repeated_ || !stays_repeated(list); }
    void clear()
    {
        present_ = std::make_shared<FlowTables>();
        size_ = 0;
    }
    size_t size() const { return size_; }
    void push_back(Flow&& flow)
    {
        if (is_kept_)
            read_[flow.lcore].push_back(std::move(flow));
        ++size_;
    }
    std::array<std::vector<Flow>, max_lcores> take() { return std::move(read_); }

    class Iterator {
    public:
        Iterator(const FlowTables& tables, uint32_t lcore) : tables_{tables}, lcore_{lcore} { skip(); }
        Flow operator*() const { return tables_.of(lcore_)[index_]; }
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
            for (; lcore_ < max_lcores && index_ == tables_.of(lcore_).size(); index_ = 0)
                ++lcore_;
        }

        const FlowTables& tables_;
        uint32_t lcore_;
        size_t index_ = 0;
    };
    Iterator begin() const { return {*present_, 0}; }
    Iterator end() const { return {*present_, max_lcores}; }

private:
    std::shared_ptr<const FlowTables> present_ = std::make_shared<FlowTables>();
    bool keeps_repeated_ = true;
    bool is_kept_ = true;
    std::array<std::vector<Flow>, max_lcores> read_;
    size_t size_ = 0;
};

// The switch of each lcore, or null.
using LcoreOwners = std::array<const Switch*, max_lcores>;

inline LcoreOwners lcore_owners(const Host& host)
{
    LcoreOwners result{};
    for (const Switch& each : host.switches)
        for (uint32_t lcore = 0; each.entry && lcore < max_lcores; ++lcore)
            if (each.entry->lcore_mask >> lcore & 1)
                result[lcore] = &each;
    return result;
}

inline MacAddress mac_of(const Port* port)
{
    return port ? std::to_array(port->entry.mac) : MacAddress{};
}

// IP addresses, which a flow below layer 3 lacks.
template <class V>
void describe_addresses(V& v, FlowHeaders& packets)
{
    std::optional<Ip> source, destination;
    if (packets.layer > 2) {
        source = Ip{packets.is_ipv6, packets.source_ip};
        destination = Ip{packets.is_ipv6, packets.destination_ip};
    }
    v.derive([&] {
        source.reset();
        destination.reset();
    });
    v.derived("source", source, optional_format(IpFormat{}), "Its IP address, from layer 3 on. Absent: zeros.");
    v.derived("destination", destination, optional_format(IpFormat{}), "Of the same family. Absent: zeros.");
    v.check(!source || !destination || source->is_ipv6 == destination->is_ipv6, "destination", same_family);
    v.derive([&] {
        packets.is_ipv6 = (source && source->is_ipv6) || (destination && destination->is_ipv6);
        packets.source_ip = source ? source->bytes : IpAddress{};
        packets.destination_ip = destination ? destination->bytes : IpAddress{};
    });
}

template <class V>
void describe_packets(V& v, Flow& flow, const Host& host, const Switch* owner)
{
    FlowHeaders& packets = flow.packets;
    v.derive([&] {
        const Port* from = find_port(*owner, flow.input_port);
        packets.source_mac = mac_of(from);
        packets.destination_mac = mac_of(find_port(*owner, flow.actions.destination_port));
        if (owner->entry->switch_number == host.smartnic.uplink_switch)
            packets.tag = tag_of(host.smartnic.port_of(flow.input_port));
    });
    v.derived("sourceMac", packets.source_mac, MacFormat{}, "Absent: that of the input port.");
    v.derived("destinationMac", packets.destination_mac, MacFormat{}, "Absent: that of the output port.");
    v.optional("vlan", packets.vlan, number(0, max_vlan), "");
    v.derived("tag", packets.tag, number(0, 0x7fff), "Absent: 0; from a port of the SmartNIC that port's tag.");
    v.optional("packetVni", packets.vni, number(0, last_vni), "Of the tunnel that its packets come in by.");
    v.defaults([&] { packets.layer = 4; });
    v.optional("layer", packets.layer, number(2, 4), "What it is told apart by.");
    describe_addresses(v, packets);
    v.optional("protocol", packets.protocol, OneOf{protocols}, "On layer 4.");
    v.optional("sourcePort", packets.source_port, number(), "On layer 4; of ICMP its type.");
    v.optional("destinationPort", packets.destination_port, number(), "On layer 4; of ICMP its code.");
}

template <class V>
void describe_actions(V& v, FlowActions& actions)
{
    v.optional("actions", actions.bitmap, Bits{flow_actions}, "What the datapath does with its packets.");
    v.optional("portIndex", actions.port_index, number(), "Of portInsert.");
    v.optional("insertedVlan", actions.vlan, number(0, max_vlan), "Of vlanInsert.");
    v.optional("vni", actions.vni, number(0, last_vni), "Of vni.");
    v.optional("ingressMirror", actions.ingress_mirror, number(), "The sessions of mirrorIngress, a bit each.");
    v.optional("egressMirror", actions.egress_mirror, number(), "The sessions of mirrorEgress, a bit each.");
    v.optional("outputVlan", actions.output_vlan, number(0, max_vlan), "Of outputVlan.");
    v.optional("inputChildPort", actions.input_child_port, number(), "Of inputChildPort.");
    v.optional("geneveVni", actions.geneve_vni, number(0, last_vni), "Of geneveEncap.");
    v.optional("vxlanVni", actions.vxlan_vni, number(0, last_vni), "Of vxlanEncap.");
    describe_counted(v, "routingInstances", actions.routing_instances, actions.num_routing_instances, "Of routing.");
    v.optional("multicastPorts", actions.multicast_ports, number(), "To how many ports it goes, if it is multicast.");
    v.derived("sourceContext", actions.source_context, optional_format(number()), "Of firewallSource. Absent: none.");
    v.derived("destinationContext", actions.destination_context, optional_format(number()),
              "Of firewallDestination. Absent: none.");
}

// The SmartNIC knows an offloaded flow by an index; another NIC by a pointer.
template <class V>
void describe_offload(V& v, Flow& flow, const Host& host, const Switch* owner, Order& order)
{
    bool is_offloaded = flow.offload.has_value();
    v.optional("offloaded", is_offloaded, Flag{}, "Whether a NIC has taken it over.");
    FlowOffload offload = flow.offload.value_or(FlowOffload{});
    v.derive([&] {
        offload.is_pointer = owner->entry->switch_number != host.smartnic.uplink_switch;
        offload.hardware_index = offload.is_pointer ? 0 : order.next_hardware_flow;
    });
    v.when(is_offloaded, [&] {
        v.derived("hardwareIndex", offload.hardware_index, number(),
                  "Of an offloaded flow. Absent: counted up from 100 in the SmartNIC, else 0.");
        v.optional("softwareIndex", offload.software_index, number(), "Of an offloaded flow.");
        v.derive([&] {
            order.next_hardware_flow += !offload.is_pointer;
            flow.offload = offload;
        });
    });
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
    v.defaults([&] { flow.packet_bytes = 512; });
    v.optional("packetBytes", flow.packet_bytes, number(), "Bytes of each packet.");
    describe_offload(v, flow, host, owner, order);
}

template <class V>
void describe_flows(V& v, Host& host, Order& order)
{
    const LcoreOwners owners = lcore_owners(host);
    FlowList flows{host.flowcache.tables, order.keeps_repeated_flows};
    v.optional("flows", flows,
               list(object_format([&](auto& w, Flow& flow) { describe_flow(w, flow, host, owners, order); }),
                    max_described_flows),
               "The traffic of all switches, by the lcores that forward it.");
    std::vector<uint32_t> cleared;
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        if (!host.flowcache.lcores[lcore].since)
            cleared.push_back(lcore);
    v.optional("clearedLcores", cleared, list(number(0, max_lcores - 1), max_lcores),
               "Those whose flows have been cleared.");
    v.derive([&] {
        host.flowcache.tables = std::make_shared<FlowTables>(flows.take());
        for (const uint32_t lcore : cleared)
            host.flowcache.lcores[lcore].since.reset();
        for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
            if (owners[lcore] && !owners[lcore]->setting.has_flowcache)
                host.flowcache.lcores[lcore].since.reset();
    });
}

}  // namespace host::scenario
