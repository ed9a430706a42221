// Entries about tunnels and mirror sessions.
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

// The sessions for what goes out lie behind those for what comes in.
uint32_t number_of(const MirrorSession& session)
{
    return session.session + (session.is_egress ? max_mirror_sessions : 0);
}

const MirrorSession* session_at(const Host& host, uint32_t number)
{
    for (const MirrorSession& session : host.hardware_tables.mirrors)
        if (number_of(session) == number)
            return &session;
    return nullptr;
}

}  // namespace

MirrorEntry mirror(const Host& host, uint32_t index)
{
    MirrorEntry made{};
    if (const MirrorSession* session = session_at(host, index)) {
        made.port = session->port;
        made.has_l3 = 1;
        made.vlan_push = 1;
        made.vlan = session->vlan & 0xfff;
        made.flow_cookie = session->cookie;
        made.uplink_ports[0] = made.uplink_ports[1] = session->port;
    }
    return made;
}

// A session's headers lie in the first column of the row with its number.
MirrorL3Entry mirror_l3(const Host& host, uint32_t index)
{
    MirrorL3Entry made{};
    const MirrorSession* session = index % mirror_l3_row == 0 ? session_at(host, index / mirror_l3_row) : nullptr;
    if (!session)
        return made;
    made.number = static_cast<uint16_t>(number_of(*session));
    made.type = erspan;
    made.is_ipv6 = !session->source.is_ipv4;
    made.has_vlan = 1;
    made.has_truncation = 1;
    store_mac(made.source_mac, session->source_mac);
    store_mac(made.destination_mac, session->destination_mac);
    made.vlan = session->vlan;
    made.truncated_bytes = truncated_bytes;
    made.ttl = default_ttl;
    made.erspan_session = number_of(*session) & 0x3ff;
    made.gre_key = session->cookie;
    store_address(made.source, session->source);
    store_address(made.destination, session->destination);
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
