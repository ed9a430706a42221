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

MirrorEntry mirror(const Host& host, uint32_t index)
{
    MirrorEntry made{};
    const auto session = std::ranges::find(host.pipeline.mirror_sessions, index, mirror_number);
    const MirrorHeaders* headers = find(host.hardware_tables.mirrors, &MirrorHeaders::number, index);
    if (session == host.pipeline.mirror_sessions.end() || !headers)
        return made;
    made.port = session->destination_port;
    made.has_l3 = 1;
    made.vlan_push = 1;
    made.vlan = headers->vlan & 0xfff;
    made.flow_cookie = headers->cookie;
    std::ranges::copy(session->uplink_logical_ports, made.uplink_ports);
    if (session->is_tunnel) {
        made.has_tunnel_rewrite = 1;
        made.tunnel = static_cast<uint32_t>(session->tunnel_index) & 0x1fff;
        made.vni = static_cast<uint32_t>(session->vni) & 0xffffff;
    }
    return made;
}

// A session's headers lie in the first column of the row with its number.
MirrorL3Entry mirror_l3(const Host& host, uint32_t index)
{
    MirrorL3Entry made{};
    const MirrorHeaders* headers =
        index % mirror_l3_row == 0 ? find(host.hardware_tables.mirrors, &MirrorHeaders::number, index / mirror_l3_row)
                                   : nullptr;
    if (!headers)
        return made;
    made.number = static_cast<uint16_t>(headers->number);
    made.type = erspan;
    made.is_ipv6 = !headers->source.is_ipv4;
    made.has_vlan = 1;
    made.has_truncation = 1;
    store_mac(made.source_mac, headers->source_mac);
    store_mac(made.destination_mac, headers->destination_mac);
    made.vlan = headers->vlan;
    made.truncated_bytes = truncated_bytes;
    made.ttl = default_ttl;
    made.erspan_session = headers->number & 0x3ff;
    made.gre_key = headers->cookie;
    store_address(made.source, headers->source);
    store_address(made.destination, headers->destination);
    return made;
}

TunnelRewriteEntry tunnel_rewrite(const Host& host, uint32_t record)
{
    TunnelRewriteEntry made{};
    const Tunnel* tunnel = find(host.hardware_tables.tunnels, &Tunnel::record, record);
    if (!tunnel)
        return made;
    made.is_ipv6 = !tunnel->remote.is_ipv4;
    made.is_geneve = tunnel->is_geneve;
    made.has_vlan = 1;
    made.copies_traffic_class = 1;
    made.vlan = tunnel->vlan;
    made.ttl = default_ttl;
    store_mac(made.source_mac, tunnel->local_mac);
    store_mac(made.destination_mac, tunnel->remote_mac);
    store_address(made.source, tunnel->local);
    store_address(made.destination, tunnel->remote);
    return made;
}

std::optional<TunnelTerminationEntry> tunnel_termination(const Host& host, const P4TunnelTerminationKey& key)
{
    for (const Tunnel& tunnel : host.hardware_tables.tunnels)
        if (same_key(termination_key(tunnel), key))
            return TunnelTerminationEntry{tunnel.vtep, 1};
    return std::nullopt;
}

std::optional<TunnelSaEntry> tunnel_sa(const Host& host, const P4TunnelSaKey& key)
{
    for (const Tunnel& tunnel : host.hardware_tables.tunnels)
        if (same_key(sa_key(tunnel), key))
            return TunnelSaEntry{tunnel.outer_flow, 1, 0};
    return std::nullopt;
}

}  // namespace host::hardware
