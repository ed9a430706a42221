// Entries about offloaded flows: their keys, what happens to their packets, their counters and their connections'
// state.
#include <algorithm>

#include "host/answers/hardware_entries.h"
#include "host/state/offloaded_flows.h"

namespace host::hardware {

namespace {

constexpr uint16_t first_outer_port = 0xc000;
constexpr uint32_t first_cookie = 0x0f100000;

bool is_decapsulated(const Flow& flow)
{
    return has(flow, FlowAction::geneve_decap) || has(flow, FlowAction::vxlan_decap);
}

// The tunnel that the flow's packets enter, or null.
const Tunnel* tunnel_of(const Host& host, const Flow& flow)
{
    if (!has(flow, FlowAction::geneve_encap) && !has(flow, FlowAction::vxlan_encap))
        return nullptr;
    return find(host.hardware_tables.tunnels, &Tunnel::is_geneve, has(flow, FlowAction::geneve_encap));
}

// Which of the uplinks a port is.
std::optional<uint8_t> uplink_index(const Host& host, uint16_t port)
{
    const auto uplinks = host.smartnic.uplinks();
    const auto found = std::ranges::find(uplinks, port, &P4OutputPort::destination_port);
    return found == uplinks.end() ? std::nullopt : std::optional{static_cast<uint8_t>(found - uplinks.begin())};
}

uint16_t source_port(const Host& host, const Flow& flow)
{
    return host.smartnic.port_of(flow.input_port);
}

void store(uint64_t& high, uint64_t& low, const IpAddress& address, bool is_ipv6)
{
    const ByteSpan bytes = std::as_bytes(std::span{address});
    high = is_ipv6 ? number_of(bytes.first(8)) : 0;
    low = is_ipv6 ? number_of(bytes.last(8)) : number_of(bytes.first(4));
}

// MAC addresses lie least significant byte first.
P4FlowKey key_of(const Host& host, const Flow& flow)
{
    const FlowHeaders& packets = flow.packets;
    P4FlowKey key{};
    key.qualifier = packets.vlan;
    std::ranges::reverse_copy(packets.source_mac, key.mac_1);
    std::ranges::reverse_copy(packets.destination_mac, key.mac_2);
    uint64_t high, low;
    store(high, low, packets.source_ip, packets.is_ipv6);
    key.address_1_high = high;
    key.address_1_low = low;
    store(high, low, packets.destination_ip, packets.is_ipv6);
    key.address_2_high = high;
    key.address_2_low = low;
    key.port = source_port(host, flow);
    key.port_1 = packets.source_port;
    key.port_2 = packets.destination_port;
    key.is_ipv4 = !packets.is_ipv6;
    key.protocol_and_vni = packets.vni << flow_key_vni_shift | packets.protocol;
    return key;
}

}  // namespace

void store_mac(uint8_t (&out)[mac_bytes], uint64_t mac)
{
    for (size_t i = 0; i < mac_bytes; ++i)
        out[mac_bytes - 1 - i] = static_cast<uint8_t>(mac >> (8 * i));
}

uint64_t number_of(ByteSpan bytes)
{
    uint64_t number = 0;
    for (const std::byte byte : bytes)
        number = number << 8 | std::to_integer<uint64_t>(byte);
    return number;
}

void store_address(uint8_t (&out)[16], const Address& address)
{
    const uint64_t words[] = {__builtin_bswap64(address.high), __builtin_bswap64(address.low)};
    const uint32_t word = __builtin_bswap32(static_cast<uint32_t>(address.low));
    if (address.is_ipv4)
        std::memcpy(out, &word, sizeof word);
    else
        std::memcpy(out, words, sizeof words);
}

P4IpfixEntry ipfix(const Host& host, uint32_t record)
{
    const FlowCounters counters = flow_counters(host, record);
    return {counters.packets, counters.bytes, counters.tcp_flags, {}};
}

// The same counters as of the port's connection tracking: first what is sent, then what is received.
P4CtCountersEntry ct_counters(const Host& host, uint32_t port)
{
    const P4ConntrackCounters counters = conntrack_counters(host, port);
    return {{{counters.tx_pass_bytes, counters.tx_pass_packets, counters.tx_drop_bytes, counters.tx_drop_packets},
             {counters.rx_pass_bytes, counters.rx_pass_packets, counters.rx_drop_bytes, counters.rx_drop_packets}}};
}

P4CtStateEntry ct_state(const Host& host, uint32_t record)
{
    const auto [source, destination, software_state, is_logged] = connection(host, record);
    P4CtStateEntry entry{};
    entry.source_sequence_low = source.lowest_sequence;
    entry.source_sequence_high = source.highest_sequence;
    entry.source_window = source.max_window;
    entry.state.set(entry.source_state_and_scale, source.state);
    entry.window_scale.set(entry.source_state_and_scale, source.window_scale);
    entry.destination_sequence_low = destination.lowest_sequence;
    entry.destination_sequence_high = destination.highest_sequence;
    entry.destination_window = destination.max_window;
    entry.state.set(entry.destination_state_and_scale, destination.state);
    entry.window_scale.set(entry.destination_state_and_scale, destination.window_scale);
    entry.software_state = software_state;
    entry.is_logged.set(entry.flags, is_logged);
    return entry;
}

std::optional<P4FlowKeyEntry> flow_key(const Host& host, const P4FlowKey& key)
{
    // Most flows differ in an address already, which is cheaper to see than to make their keys.
    const auto is_mac = [](const uint8_t(&mac)[mac_bytes], const MacAddress& wanted) {
        return std::equal(std::rbegin(mac), std::rend(mac), wanted.begin());
    };
    const auto may_be = [&](const Flow& flow) {
        return is_mac(key.mac_1, flow.packets.source_mac) && is_mac(key.mac_2, flow.packets.destination_mac);
    };
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        for (const Flow& flow : host.flowcache.of(lcore))
            if (is_in_pipeline(flow) && may_be(flow) && same_key(key_of(host, flow), key))
                return P4FlowKeyEntry{flow.offload->hardware_index};
    return std::nullopt;
}

P4FlowRewriteEntry flow_rewrite(const Host& host, uint32_t index)
{
    P4FlowRewriteEntry entry{};
    const Flow* flow = host.flowcache.offloaded(index);
    if (!flow)
        return entry;
    entry.vlan_push.set(entry.flags, has(*flow, FlowAction::guest_vlan_insert));
    entry.vlan_set.set(entry.flags, has(*flow, FlowAction::output_vlan));
    entry.vlan.set(entry.vlans, flow->actions.output_vlan);
    entry.route.set(entry.flags, has(*flow, FlowAction::routing));
    entry.hops.set(entry.flags, has(*flow, FlowAction::routing));
    if (tunnel_of(host, *flow)) {
        entry.vni.set(entry.encapsulation, flow->actions.vni);
        entry.outer_source_port = static_cast<uint16_t>(first_outer_port | (index & 0xfff));
    }
    std::ranges::copy(flow->packets.source_mac, entry.source_mac);
    std::ranges::copy(flow->packets.destination_mac, entry.destination_mac);
    entry.flow_cookie = first_cookie | index;
    return entry;
}

// Both directions count packets and track connections; of a dropped flow only what comes in is counted.
P4FlowInfoEntry flow_info(const Host& host, uint32_t index)
{
    P4FlowInfoEntry entry{};
    const Flow* flow = host.flowcache.offloaded(index);
    if (!flow)
        return entry;
    const uint16_t from = source_port(host, *flow);
    const uint16_t to = host.smartnic.port_of(flow->actions.destination_port);
    const auto from_uplink = uplink_index(host, from), to_uplink = uplink_index(host, to);
    const uint32_t record = record_of(*flow);

    entry.flow = index;
    entry.port = to;
    entry.count = flow_counters(host, record).packets;
    entry.seconds = static_cast<uint32_t>(host.clock.counter_value(1));
    entry.source_tag = tag_of(from);
    entry.destination_tag = tag_of(to);
    entry.is_routed.set(entry.flags, has(*flow, FlowAction::routing));
    entry.checks_ttl.set(entry.flags, has(*flow, FlowAction::routing));
    entry.hops.set(entry.flags, has(*flow, FlowAction::routing));
    entry.decap.set(entry.flags, is_decapsulated(*flow));
    if (const Tunnel* tunnel = tunnel_of(host, *flow)) {
        entry.encap.set(entry.flags, 1);
        entry.tunnel = tunnel->record;
    }
    entry.drop.set(entry.flags, is_dropped(*flow));
    entry.from_uplink.set(entry.flags, from_uplink.has_value());
    entry.source_uplink.set(entry.flags, from_uplink.value_or(0));
    entry.to_uplink.set(entry.flags, to_uplink.has_value());
    entry.destination_uplink.set(entry.flags, to_uplink.value_or(0));
    entry.ingress_mirrors = flow->actions.ingress_mirror;
    entry.egress_mirrors = flow->actions.egress_mirror;

    entry.has_ingress_ct.set(entry.flags, is_tracked(*flow));
    entry.has_egress_ct.set(entry.flags, is_tracked(*flow));
    entry.ingress_ct = entry.egress_ct = is_tracked(*flow) ? record : 0;
    entry.ingress_ct_counters = from;
    entry.egress_ct_counters = to;
    entry.has_ingress_ipfix.set(entry.flags, 1);
    entry.ingress_ipfix = record;
    entry.has_egress_ipfix.set(entry.flags, !is_dropped(*flow));
    entry.egress_ipfix = is_dropped(*flow) ? 0 : record;
    return entry;
}

// Flows come and go; those of the tables stay.
P4FlowOperationsEntry flow_operations(const Host& host)
{
    const uint64_t gone = host.clock.counter_value(host.pipeline.operations.inserts);
    P4FlowOperationsEntry entry{};
    entry.entries = host.flowcache.num_offloaded();
    entry.removes = entry.remove_calls = entry.removes_by_level[0] = gone;
    entry.inserts = entry.insert_calls = gone + entry.entries;
    entry.inserts_by_level[1] = entry.collisions = entry.inserts / 50;
    entry.inserts_by_level[0] = entry.inserts - entry.collisions;
    entry.updates = host.clock.counter_value(host.pipeline.operations.updates);
    entry.gets = host.clock.counter_value(host.pipeline.operations.gets);
    entry.releases = gone;
    entry.reads = entry.gets + entry.updates;
    entry.writes = entry.inserts + entry.removes + entry.updates;
    return entry;
}

}  // namespace host::hardware
