// Entries about tunnels and mirror sessions.
#include <algorithm>

#include "host/answers/hardware_entries.h"

namespace host::hardware {

namespace {

constexpr uint8_t default_ttl = 64;
constexpr uint8_t erspan = 2;
constexpr uint16_t truncated_bytes = 128;

uint16_t vlan_word(uint32_t vlan)
{
    return static_cast<uint16_t>(vlan << tunnel_key_vlan_shift | tunnel_key_vlan_valid);
}

// A packet for the tunnel's local end, from its uplink.
P4TunnelTerminationKey termination_key(const Tunnel& tunnel)
{
    P4TunnelTerminationKey key{};
    for (size_t i = 0; i < mac_bytes; ++i)
        key.mac[i] = static_cast<uint8_t>(tunnel.local_mac >> (8 * i));
    key.qualifier = tunnel.uplink;
    const unsigned flags = tunnel_key_first | (tunnel.local.is_ipv4 ? tunnel_key_ipv4 : 0u);
    key.flags_and_vlan_1 = static_cast<uint16_t>(flags | vlan_word(tunnel.vlan));
    key.address_low = tunnel.local.low;
    key.address_high = tunnel.local.high;
    return key;
}

P4TunnelSaKey sa_key(const Tunnel& tunnel)
{
    P4TunnelSaKey key{};
    key.qualifier = tunnel.vtep;
    key.is_ipv4 = tunnel.remote.is_ipv4;
    key.address_low = tunnel.remote.low;
    key.address_high = tunnel.remote.high;
    return key;
}

}  // namespace

P4MirrorEntry mirror(const Host& host, uint32_t index)
{
    P4MirrorEntry entry{};
    const auto session = std::ranges::find(host.pipeline.mirror_sessions, index, mirror_number);
    const MirrorHeaders* headers = find(host.hardware_tables.mirrors, &MirrorHeaders::number, index);
    if (session == host.pipeline.mirror_sessions.end() || !headers)
        return entry;
    entry.port = session->destination_port;
    entry.has_l3.set(entry.flags, 1);
    entry.vlan_push.set(entry.flags, 1);
    entry.vlan.set(entry.flags, headers->vlan);
    entry.flow_cookie = headers->cookie;
    std::ranges::copy(session->uplink_logical_ports, entry.uplink_ports);
    if (session->is_tunnel) {
        entry.has_tunnel_rewrite.set(entry.flags, 1);
        entry.tunnel.set(entry.flags, static_cast<uint32_t>(session->tunnel_index));
        entry.vni.set(entry.reason_and_vni, static_cast<uint32_t>(session->vni));
    }
    return entry;
}

// A session's headers lie in the first column of the row with its number.
P4MirrorL3Entry mirror_l3(const Host& host, uint32_t index)
{
    P4MirrorL3Entry entry{};
    const MirrorHeaders* headers =
        index % mirror_l3_row == 0 ? find(host.hardware_tables.mirrors, &MirrorHeaders::number, index / mirror_l3_row)
                                   : nullptr;
    if (!headers)
        return entry;
    entry.number = static_cast<uint16_t>(headers->number);
    entry.type.set(entry.flags, erspan);
    entry.is_ipv6.set(entry.flags, !headers->source.is_ipv4);
    entry.has_vlan.set(entry.flags, 1);
    entry.has_truncation.set(entry.flags, 1);
    store_mac(entry.source_mac, headers->source_mac);
    store_mac(entry.destination_mac, headers->destination_mac);
    entry.vlan = headers->vlan;
    entry.truncated_bytes = truncated_bytes;
    entry.ttl = default_ttl;
    entry.erspan_session.set(entry.erspan, headers->number);
    entry.gre_key = headers->cookie;
    store_address(entry.source, headers->source);
    store_address(entry.destination, headers->destination);
    return entry;
}

P4TunnelRewriteEntry tunnel_rewrite(const Host& host, uint32_t record)
{
    P4TunnelRewriteEntry entry{};
    const Tunnel* tunnel = find(host.hardware_tables.tunnels, &Tunnel::record, record);
    if (!tunnel)
        return entry;
    entry.is_ipv6.set(entry.flags, !tunnel->remote.is_ipv4);
    entry.is_geneve.set(entry.flags, tunnel->is_geneve);
    entry.has_vlan.set(entry.flags, 1);
    entry.copies_traffic_class.set(entry.flags, 1);
    entry.vlan = tunnel->vlan;
    entry.ttl = default_ttl;
    store_mac(entry.source_mac, tunnel->local_mac);
    store_mac(entry.destination_mac, tunnel->remote_mac);
    store_address(entry.source, tunnel->local);
    store_address(entry.destination, tunnel->remote);
    return entry;
}

std::optional<P4TunnelTerminationEntry> tunnel_termination(const Host& host, const P4TunnelTerminationKey& key)
{
    for (const Tunnel& tunnel : host.hardware_tables.tunnels)
        if (same_key(termination_key(tunnel), key))
            return P4TunnelTerminationEntry{tunnel.vtep, 1};
    return std::nullopt;
}

std::optional<P4TunnelSaEntry> tunnel_sa(const Host& host, const P4TunnelSaKey& key)
{
    for (const Tunnel& tunnel : host.hardware_tables.tunnels)
        if (same_key(sa_key(tunnel), key))
            return P4TunnelSaEntry{tunnel.outer_flow, 1, 0};
    return std::nullopt;
}

}  // namespace host::hardware
