// Entries about flows: their keys, what happens to their packets, their counters and their connections' state.
#include "host/answers/hardware_entries.h"

namespace host::hardware {

namespace {

constexpr uint8_t tcp = 6;
constexpr uint8_t established = 4;
constexpr uint8_t opening = 1;
constexpr uint8_t tcp_syn = 0x02;
constexpr uint8_t tcp_ack = 0x10;
constexpr uint8_t window_scale = 7;
constexpr uint16_t window = 0xffff;
constexpr uint16_t first_outer_port = 0xc000;
constexpr uint32_t first_cookie = 0x0f100000;
constexpr uint32_t unacknowledged = 1 << 16;
constexpr uint64_t seconds_before = 3600;

uint64_t packets_of(const Host& host, const Flow& flow)
{
    return grown(host, flow.packets);
}

bool is_uplink(const Host& host, const FlowEnd& end)
{
    const Port* port = find(host.hardware_tables.ports, &Port::port, end.port);
    return port && port->is_uplink;
}

uint16_t tag_of(const Host& host, const FlowEnd& end)
{
    const Port* port = find(host.hardware_tables.ports, &Port::port, end.port);
    return port ? port->tag : uint16_t{0};
}

// The first uplink's port is 0, and so on.
uint8_t uplink_index(const Host& host, const FlowEnd& end)
{
    return is_uplink(host, end) ? end.port & 3 : 0;
}

// Connections are tracked where they come in, and where they go out to a VM of this host.
bool is_tracked(const Flow& flow, Direction direction)
{
    return !flow.is_dropped && (direction == Direction::ingress || !flow.destination.tunnel);
}

P4FlowKey key_of(const Flow& flow)
{
    P4FlowKey key{};
    key.qualifier = flow.vlan;
    uint8_t mac[mac_bytes];
    store_mac_of_key(mac, flow.source.mac);
    std::memcpy(key.mac_1, mac, sizeof mac);
    store_mac_of_key(mac, flow.destination.mac);
    std::memcpy(key.mac_2, mac, sizeof mac);
    key.address_1_low = flow.source.address.low;
    key.address_1_high = flow.source.address.high;
    key.address_2_low = flow.destination.address.low;
    key.address_2_high = flow.destination.address.high;
    key.port = flow.source.port;
    key.port_1 = flow.source.transport_port;
    key.port_2 = flow.destination.transport_port;
    key.is_ipv4 = flow.source.address.is_ipv4;
    key.protocol_and_vni = flow.vni << flow_key_vni_shift | flow.protocol;
    return key;
}

// What one end of a connection has sent so far.
uint32_t sequence(const Host& host, const Flow& flow)
{
    const uint32_t first = 1000 * flow.index;
    return first + static_cast<uint32_t>(packets_of(host, flow) * flow.packet_bytes);
}

}  // namespace

uint64_t grown(const Host& host, uint64_t per_second)
{
    return seconds_before * per_second + host.clock.grown(per_second);
}

void store_mac(uint8_t (&out)[mac_bytes], uint64_t mac)
{
    for (size_t i = 0; i < mac_bytes; ++i)
        out[mac_bytes - 1 - i] = static_cast<uint8_t>(mac >> (8 * i));
}

void store_mac_of_key(uint8_t (&out)[mac_bytes], uint64_t mac)
{
    std::memcpy(out, &mac, sizeof out);
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

IpfixEntry ipfix(const Host& host, Direction direction, uint32_t index)
{
    IpfixEntry made{};
    const Flow* flow = find(host.hardware_tables.flows, &Flow::ipfix, index);
    if (!flow || (direction == Direction::egress && flow->is_dropped))
        return made;
    made.packets = packets_of(host, *flow);
    made.bytes = made.packets * flow->packet_bytes;
    made.tcp_flags = flow->protocol == tcp ? (flow->is_dropped ? tcp_syn : tcp_syn | tcp_ack) : 0;
    return made;
}

// Counted at the port that the packets come from or go to: first what opens conversations, then the replies.
CtCountersEntry ct_counters(const Host& host, Direction direction, uint32_t index)
{
    CtCountersEntry made{};
    for (const Flow& flow : host.hardware_tables.flows) {
        const FlowEnd& end = direction == Direction::ingress ? flow.source : flow.destination;
        if (end.port != index)
            continue;
        auto& set = made.sets[flow.is_reply ? 1 : 0];
        const uint64_t packets = packets_of(host, flow);
        (flow.is_dropped ? set.drop_packets : set.pass_packets) += packets;
        (flow.is_dropped ? set.drop_bytes : set.pass_bytes) += packets * flow.packet_bytes;
    }
    return made;
}

// A connection that is tracked here has the state of both its ends.
CtStateEntry ct_state(const Host& host, Direction direction, uint32_t index)
{
    CtStateEntry made{};
    bool is_here = false;
    for (const Flow& flow : host.hardware_tables.flows) {
        if (flow.conversation != index)
            continue;
        is_here = is_here || is_tracked(flow, direction);
        const uint32_t sent = sequence(host, flow);
        const uint8_t state = flow.protocol == tcp ? established : opening;
        if (!flow.is_reply) {
            made.source_sequence_low = sent;
            made.source_sequence_high = sent + unacknowledged;
            made.source_window = window;
            made.source_state = state & 15;
            made.source_window_scale = window_scale;
        } else {
            made.destination_sequence_low = sent;
            made.destination_sequence_high = sent + unacknowledged;
            made.destination_window = window;
            made.destination_state = state & 15;
            made.destination_window_scale = window_scale;
        }
        made.software_state = 1;
        made.is_logged = flow.mirror.has_value() || made.is_logged;
    }
    return is_here ? made : CtStateEntry{};
}

std::optional<FlowKeyEntry> flow_key(const Host& host, const P4FlowKey& key)
{
    for (const Flow& flow : host.hardware_tables.flows)
        if (same_key(key_of(flow), key))
            return FlowKeyEntry{flow.index};
    return std::nullopt;
}

FlowRewriteEntry flow_rewrite(const Host& host, uint32_t index)
{
    FlowRewriteEntry made{};
    const Flow* flow = find(host.hardware_tables.flows, &Flow::index, index);
    if (!flow)
        return made;
    made.vlan_pop = flow->source.tunnel.has_value();
    made.vlan_push = flow->destination.tunnel.has_value();
    made.route = flow->destination.tunnel.has_value();
    made.hops = 1;
    made.vlan = flow->vlan & 0xfff;
    made.vni = flow->vni & 0xffffff;
    made.outer_source_port = static_cast<uint16_t>(first_outer_port | (index & 0xfff));
    store_mac(made.source_mac, flow->source.mac);
    store_mac(made.destination_mac, flow->destination.mac);
    made.flow_cookie = first_cookie | index;
    return made;
}

FlowInfoEntry flow_info(const Host& host, uint32_t index)
{
    FlowInfoEntry made{};
    const Flow* flow = find(host.hardware_tables.flows, &Flow::index, index);
    if (!flow)
        return made;
    made.flow = flow->index;
    made.port = flow->destination.port;
    made.count = packets_of(host, *flow);
    made.seconds = static_cast<uint32_t>(grown(host, 1));
    made.source_tag = tag_of(host, flow->source);
    made.destination_tag = tag_of(host, flow->destination);
    made.is_routed = flow->destination.tunnel.has_value();
    made.checks_ttl = made.is_routed;
    made.hops = made.is_routed;
    made.encap = flow->destination.tunnel.has_value();
    made.decap = flow->source.tunnel.has_value();
    made.tunnel = flow->destination.tunnel.value_or(0);
    made.drop = flow->is_dropped;
    made.to_uplink = is_uplink(host, flow->destination);
    made.from_uplink = is_uplink(host, flow->source);
    made.destination_uplink = uplink_index(host, flow->destination) & 3;
    made.source_uplink = uplink_index(host, flow->source) & 3;
    made.ingress_mirrors = flow->mirror ? static_cast<uint8_t>(1u << *flow->mirror) : uint8_t{0};

    if (is_tracked(*flow, Direction::ingress)) {
        made.has_ingress_ct = 1;
        made.ingress_ct_direction = flow->is_reply;
        made.ingress_ct = flow->conversation;
    }
    if (is_tracked(*flow, Direction::egress)) {
        made.has_egress_ct = 1;
        made.egress_ct_direction = flow->is_reply;
        made.egress_ct = flow->conversation;
    }
    made.ingress_ct_counters = flow->source.port;
    made.egress_ct_counters = flow->destination.port;
    made.has_ingress_ipfix = 1;
    made.ingress_ipfix = flow->ipfix;
    made.has_egress_ipfix = !flow->is_dropped;
    made.egress_ipfix = flow->is_dropped ? 0 : flow->ipfix;
    return made;
}

// Flows come and go; those of the tables stay.
FlowOperationsEntry flow_operations(const Host& host, uint32_t)
{
    const uint64_t gone = grown(host, 20);
    FlowOperationsEntry made{};
    made.entries = host.hardware_tables.flows.size();
    made.removes = made.remove_calls = made.removes_by_level[0] = gone;
    made.inserts = made.insert_calls = gone + made.entries;
    made.inserts_by_level[1] = made.collisions = made.inserts / 50;
    made.inserts_by_level[0] = made.inserts - made.collisions;
    made.updates = grown(host, 5);
    made.gets = grown(host, 100);
    made.releases = gone;
    made.reads = made.gets + made.updates;
    made.writes = made.inserts + made.removes + made.updates;
    return made;
}

}  // namespace host::hardware
