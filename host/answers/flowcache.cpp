// Answers about the flow caches: pages of the flow tables, and the counters of the lcores.
#include <algorithm>

#include "host/answers/answer.h"

namespace host {

namespace {

// Of all hits, 1 in so many.
constexpr uint64_t miss_share = 400;
constexpr uint64_t slow_path_share = 350;
constexpr uint64_t sample_share = 1000;
constexpr uint64_t rare_share = 100'000;

bool has_flowcache(const Host& host, uint32_t lcore)
{
    return lcore < max_lcores && std::ranges::any_of(host.switches, [lcore](const Switch& each) {
               return each.entry && each.entry->lcore_mask >> lcore & 1;
           });
}

// --- Flow tables ---

constexpr size_t group_offset = sizeof(FlowActionArea);

FlowKey key_of(const FlowHeaders& packets)
{
    FlowKey key{};
    std::ranges::copy(packets.source_mac, key.first_mac);
    std::ranges::copy(packets.destination_mac, key.second_mac);
    uint32_t flags = packets.is_ipv6 ? flow_key_is_ipv6 : 0;
    if (packets.layer == 4)
        flags |= flow_key_is_l4;
    else if (packets.layer == 3)
        flags |= flow_key_is_l3;
    key.flags_and_vlan = static_cast<uint8_t>(flags | uint32_t{packets.vlan} << 4);
    key.vlan_high = static_cast<uint8_t>(packets.vlan >> 4);
    key.tag_low = static_cast<uint8_t>(packets.tag);
    key.tag_high = static_cast<uint8_t>(packets.tag >> 8 & 0x7f);
    key.vni_low = static_cast<uint16_t>(packets.vni);
    key.vni_high = static_cast<uint8_t>(packets.vni >> 16);
    key.protocol = packets.protocol;
    const bool is_icmp = packets.protocol == protocol_icmp || packets.protocol == protocol_icmpv6;
    const auto port = [is_icmp](uint16_t number) { return is_icmp ? number : __builtin_bswap16(number); };
    key.first_port = port(packets.source_port);
    key.second_port = port(packets.destination_port);
    if (packets.is_ipv6) {
        std::ranges::copy(packets.source_ip, key.first_address);
        std::ranges::copy(packets.destination_ip, key.second_address);
    } else {  // both in the first place, one behind the other
        std::copy_n(packets.source_ip.begin(), 4, key.first_address);
        std::copy_n(packets.destination_ip.begin(), 4, key.first_address + 4);
    }
    return key;
}

FlowActionGroup group_of(const FlowActions& actions)
{
    FlowActionGroup group{};
    group.bitmap = actions.bitmap;
    group.destination_port = actions.destination_port;
    group.port_index = actions.port_index;
    group.vlan = actions.vlan;
    group.vni = actions.vni;
    group.ingress_mirror = actions.ingress_mirror;
    group.egress_mirror = actions.egress_mirror;
    group.output_vlan = actions.output_vlan;
    group.input_child_port = actions.input_child_port;
    return group;
}

void set_vni(uint8_t (&place)[vni_bytes], uint32_t vni)
{
    place[0] = static_cast<uint8_t>(vni >> 16);
    place[1] = static_cast<uint8_t>(vni >> 8);
    place[2] = static_cast<uint8_t>(vni);
}

FlowActionTail tail_of(const FlowActions& actions)
{
    FlowActionTail tail{};
    set_vni(tail.geneve_vni, actions.geneve_vni);
    set_vni(tail.vxlan_vni, actions.vxlan_vni);
    for (; tail.num_instances < actions.num_routing_instances; ++tail.num_instances)
        std::memcpy(tail.instances + tail.num_instances * routing_instance_bytes,
                    &actions.routing_instances[tail.num_instances], sizeof actions.routing_instances[0]);
    return tail;
}

void append(Value& value, ByteSpan part)
{
    value.insert(value.end(), part.begin(), part.end());
}

// An action area, its group or groups, and a tail where the actions have one.
Value entry_of(const Host& host, const Flow& flow)
{
    const FlowActions& actions = flow.actions;
    const bool has_tail = actions.bitmap & (action_bit(FlowAction::routing) | action_bit(FlowAction::geneve_encap) |
                                            action_bit(FlowAction::vxlan_encap));
    const uint8_t groups = actions.multicast_ports ? 2 : 1;
    const size_t length =
        sizeof(FlowActionArea) + groups * sizeof(FlowActionGroup) + (has_tail ? sizeof(FlowActionTail) : 0);

    FlowEntry entry{};
    entry.source_has_context = actions.source_context.has_value();
    entry.destination_has_context = actions.destination_context.has_value();
    entry.source_context = actions.source_context.value_or(0);
    entry.destination_context = actions.destination_context.value_or(0);
    entry.hardware_hits = hardware_hits(host, flow);
    entry.hardware_bytes = entry.hardware_hits * flow.packet_bytes;
    entry.key = key_of(flow.packets);
    const uint64_t hits = software_hits(host, flow);
    entry.area.generation = flow.generation;
    std::memcpy(entry.area.software_hits, &hits, sizeof entry.area.software_hits);
    entry.area.software_bytes = hits * flow.packet_bytes;
    entry.area.num_invalidations = flow.num_invalidations;
    entry.area.length = static_cast<uint16_t>(length);
    entry.area.num_groups = groups;
    entry.area.num_destination_ports = actions.multicast_ports ? actions.multicast_ports : 1;
    entry.area.group_flags = actions.multicast_ports ? action_group_is_multicast : 0;
    if (flow.offload) {
        entry.area.offload_flags = offload_is_offloaded | offload_has_indexes |
                                   (flow.offload->is_pointer ? offload_software_index_is_pointer : 0);
        entry.area.hardware_index = flow.offload->hardware_index;
        entry.area.software_index = flow.offload->software_index;
    }

    Value value = value_of(bytes_of(entry));
    for (uint8_t i = 0; i < groups; ++i)
        append(value, bytes_of(group_of(actions)));
    if (has_tail)
        append(value, bytes_of(tail_of(actions)));
    return value;
}

bool matches(const MacAddress& mac, uint8_t is_filtered, const uint8_t (&wanted)[mac_bytes])
{
    return !is_filtered || std::ranges::equal(mac, wanted);
}

bool matches(const FlowHeaders& packets, const IpAddress& address, uint32_t version,
             const uint8_t (&wanted)[ip_address_bytes])
{
    if (version == 0)
        return true;
    const bool is_ipv6 = version != 4;
    return packets.layer > 2 && packets.is_ipv6 == is_ipv6 &&
           std::equal(wanted, wanted + (is_ipv6 ? ip_address_bytes : 4), address.begin());
}

bool matches(const Flow& flow, const FlowTableRequest& request)
{
    const FlowHeaders& packets = flow.packets;
    return matches(packets.source_mac, request.filters_source_mac, request.source_mac) &&
           matches(packets.destination_mac, request.filters_destination_mac, request.destination_mac) &&
           matches(packets, packets.source_ip, request.source_ip_version, request.source_ip) &&
           matches(packets, packets.destination_ip, request.destination_ip_version, request.destination_ip);
}

// As many whole flows as the response holds. A flow's index is its place in the lcore's table, so that a page begins
// where the one before it ended.
uint32_t dump_flow_table(Host& host, const FlowTableRequest* request, Output output)
{
    if (!request || !has_flowcache(host, request->lcore))
        return status_refused;

    FlowTableResponse page{};
    page.next_start_index = no_more_flows;
    page.group_offset = group_offset;
    size_t end = offsetof(FlowTableResponse, entries);
    size_t valid = end;
    const std::span<const Flow> flows = host.flowcache.of(request->lcore);
    for (size_t index = request->start_index; index < flows.size(); ++index) {
        if (!matches(flows[index], *request))
            continue;
        if (end + max_flow_entry_bytes > sizeof page) {
            page.next_start_index = static_cast<uint32_t>(index);
            break;
        }
        const Value entry = entry_of(host, flows[index]);
        std::memcpy(reinterpret_cast<std::byte*>(&page) + end, entry.data(), entry.size());
        ++page.count;
        valid = end + max_flow_entry_bytes;  // an entry's room is valid, used or not
        end += entry.size();
    }
    page.valid_bytes = static_cast<uint32_t>(valid);
    return output.put(page);
}

// --- Counters ---

LcoreFlowStats stats_of(const Host& host, uint32_t lcore)
{
    const auto& cleared = host.flowcache.lcores[lcore].cleared;
    LcoreFlowStats stats{};
    stats.lcore = lcore;
    stats.num_flows_created = cleared.count;
    stats.hits = cleared.software_hits;
    stats.offload_hits = cleared.hardware_hits;
    for (const Flow& flow : host.flowcache.of(lcore)) {
        ++stats.num_flows;
        ++stats.num_flows_created;
        stats.num_model2_flows += flow.offload.has_value();
        stats.hits += software_hits(host, flow);
        stats.offload_hits += hardware_hits(host, flow);
    }
    stats.misses = stats.num_flows_created + stats.hits / miss_share;
    stats.slow_path = stats.hits / slow_path_share;
    stats.action_alloc_fails = host.clock.counter_value(host.placement.load(lcore).cache_failures);
    stats.local_hits = stats.hits / 4 * 3;
    stats.first_lookup_hits = stats.hits / 10 * 9;
    stats.first_lookup_local_hits = stats.first_lookup_hits / 2;
    stats.latency_samples = stats.hits / sample_share;
    stats.conntrack_packets_queued = stats.offload_hits / sample_share;
    stats.conntrack_packets_injected = stats.conntrack_packets_queued / 10 * 9;
    stats.conntrack_packets_continued = stats.conntrack_packets_queued - stats.conntrack_packets_injected;
    stats.conntrack_packets_dropped = stats.offload_hits / rare_share;
    stats.ephemeral_flows = stats.num_flows / 8;
    stats.transient_flows = stats.num_flows / 5;
    stats.backoff_times = stats.offload_hits / rare_share;
    stats.total_backoff_flows = stats.backoff_times * 3;
    stats.max_backoff_flows = 12;
    return stats;
}

// Of the lcores asked for, in that order; of all when none is.
uint32_t get_flow_stats(Host& host, uint32_t, ByteSpan ids, uint32_t, Output output)
{
    std::vector<uint32_t> lcores(ids.size() / sizeof(uint32_t));
    if (!ids.empty())
        std::memcpy(lcores.data(), ids.data(), lcores.size() * sizeof(uint32_t));
    else
        for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
            if (has_flowcache(host, lcore))
                lcores.push_back(lcore);

    if (lcores.size() > max_flow_stats)
        return status_refused;
    FlowStats stats{};
    for (const uint32_t lcore : lcores) {
        if (!has_flowcache(host, lcore))
            return status_refused;
        stats.entries[stats.count++] = stats_of(host, lcore);
    }
    return output.put(stats);
}

const Answer flowcache_answers[] = {
    {"Qdp_Dump_Flow_Table", dump_flow_table},
    {"Qdp_Get_Flow_Stats", get_flow_stats},
};

}  // namespace

}  // namespace host
