// The flow caches of the lcores.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "platform/flowcache.h"

namespace host {

struct Host;
struct Switch;

using MacAddress = std::array<uint8_t, mac_bytes>;
inline constexpr size_t max_routing_instances = 3;

using IpAddress = std::array<uint8_t, ip_address_bytes>;  // of IPv4 the first four bytes

// What a flow's packets look like. A flow of layer 2 has no addresses, one below layer 4 no protocol and no ports.
struct FlowHeaders {
    uint32_t layer;
    MacAddress source_mac, destination_mac;
    uint16_t vlan;
    uint16_t tag;
    uint32_t vni;
    bool is_ipv6;
    IpAddress source_ip, destination_ip;
    uint8_t protocol;
    uint16_t source_port, destination_port;  // of ICMP: its type and its code
};

// What the datapath does with them.
struct FlowActions {
    uint64_t bitmap;
    uint16_t destination_port;
    uint8_t port_index;
    uint16_t vlan;
    uint32_t vni;
    uint8_t ingress_mirror, egress_mirror;
    uint16_t output_vlan;
    uint32_t input_child_port;
    uint32_t geneve_vni, vxlan_vni;  // of the header that is put before a packet
    uint32_t routing_instances[max_routing_instances];
    uint8_t num_routing_instances;
    uint8_t multicast_ports;  // 0: not a multicast group
    std::optional<uint64_t> source_context, destination_context;
};

// Where a NIC keeps an offloaded flow. The SmartNIC's pipeline knows it by an index of its own, other NICs by a
// pointer.
struct FlowOffload {
    uint32_t hardware_index;
    uint64_t software_index;
    bool is_pointer;
};

struct Flow {
    uint32_t lcore;
    uint16_t input_port;  // of the switch
    FlowHeaders packets;
    FlowActions actions;
    uint64_t generation;
    uint32_t num_invalidations;
    std::optional<FlowOffload> offload;
    uint64_t software_rate;  // packets a second
    uint64_t hardware_rate;
    uint64_t packet_bytes;
};

// Whether an action is among a flow's.
inline bool has(const Flow& flow, FlowAction action)
{
    return flow.actions.bitmap & action_bit(action);
}

inline constexpr uint32_t first_hardware_flow = 100;  // the index of the first offloaded flow

// Whether the SmartNIC's pipeline has taken over the flow.
inline bool is_in_pipeline(const Flow& flow)
{
    return flow.offload && !flow.offload->is_pointer;
}

// The flows that the host's traffic consists of: those of a lcore in the order of their table. Once made they stay, so
// that a copy of a host shares them.
class FlowTables {
public:
    FlowTables() = default;
    explicit FlowTables(std::array<std::vector<Flow>, max_lcores> tables);

    const std::vector<Flow>& of(uint32_t lcore) const { return tables_[lcore]; }
    const Flow* in_pipeline(uint32_t hardware_index) const;  // null when there is none

private:
    std::array<std::vector<Flow>, max_lcores> tables_;
    std::unordered_map<uint32_t, const Flow*> in_pipeline_;
};

// The flow table of a lcore as it stands: it has all its flows, or none.
struct LcoreFlows {
    std::optional<uint64_t> since = 0;  // when they came, in nanoseconds of the host's clock

    // What the counters keep of flows that have been cleared.
    struct Cleared {
        uint64_t count = 0;
        uint64_t software_hits = 0;
        uint64_t hardware_hits = 0;
    } cleared;
};

struct Flowcache {
    std::shared_ptr<const FlowTables> tables = std::make_shared<FlowTables>();
    std::array<LcoreFlows, max_lcores> lcores;

    std::span<const Flow> of(uint32_t lcore) const;

    // The flow that the SmartNIC's pipeline has under an index, or null; and how many it has.
    const Flow* offloaded(uint32_t hardware_index) const;
    uint64_t num_offloaded() const;
};

// The packets that a flow has met so far.
uint64_t software_hits(const Host& host, const Flow& flow);
uint64_t hardware_hits(const Host& host, const Flow& flow);

// Clears the flow tables of a switch's lcores, whose counters go on; and fills them, as its traffic goes on.
void clear_flows(Host& host, const Switch& owner);
void fill_flows(Host& host, const Switch& owner);

}  // namespace host
