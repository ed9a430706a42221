// The hardware tables of the SmartNIC's pipeline: their numbers, the sizes of their entries, and the keys of those that
// are hash tables. Entries are packed bits; who reads or writes one names its fields.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/limits.h"

inline constexpr uint32_t max_flows = 1 << 22;  // entries of each table that flows index
inline constexpr uint32_t max_ct_counters = 4096;
inline constexpr uint32_t max_tunnel_rewrites = 8192;
inline constexpr uint32_t max_mirror_sessions = 8;  // in each half of their table
inline constexpr uint32_t max_mirror_l3_columns = 6;
inline constexpr uint32_t mirror_l3_row = 8;  // indexes from one row to the next
inline constexpr uint32_t max_mirror_l3_rows = 1024;
inline constexpr uint32_t no_vlan = 4095;  // in a tunnel's key
inline constexpr uint32_t max_vnis = 1 << 24;
inline constexpr uint32_t max_tunnel_qualifiers = 1024;

// Of a pair of tables, one for each direction, the second follows the first.
enum class P4Table : uint16_t {
    lif_counters = 0,
    port_counters = 1,
    egress_counters = 2,  // before ingress: deliberate
    ingress_counters = 3,
    ct_counters = 4,
    ct_counters_second = 5,
    ipfix = 6,
    ipfix_second = 7,
    input = 8,
    mux_vlan = 9,
    mux_vlan_second = 10,
    output = 11,
    vlan_map = 12,
    l2_segment = 13,
    registered_mac = 14,
    mirror = 15,
    mirror_l3 = 16,
    tunnel_termination = 17,
    tunnel_sa = 18,
    tunnel_rewrite = 19,
    ct_state = 20,
    ct_state_second = 21,
    dscp = 22,
    uplink_map = 23,
    flow_key = 24,
    flow_rewrite = 25,
    flow_info = 26,
    flow_operations = 27,
};

// --- Keys. A 48-bit number in a key lies least significant byte first, also where it is a MAC address. ---

struct P4VlanMapKey {
    uint16_t vlan;
    uint16_t qualifier;
};
static_assert(sizeof(P4VlanMapKey) == 4);

struct P4RegisteredMacKey {
    uint16_t qualifier;
    uint8_t mac[mac_bytes];
};
static_assert(sizeof(P4RegisteredMacKey) == 8);

struct [[gnu::packed]] P4TunnelTerminationKey {
    uint16_t mac[mac_bytes];  // one byte a word
    uint16_t qualifier;
    uint16_t flags_and_vlan_1;
    uint16_t flags_and_vlan_2;
    uint64_t address_low;
    uint64_t address_high;
};
static_assert(offsetof(P4TunnelTerminationKey, address_low) == 18);
static_assert(sizeof(P4TunnelTerminationKey) == 34);

// Bits of the two words that hold a VLAN in their upper twelve.
inline constexpr uint16_t tunnel_key_first = 1 << 0;
inline constexpr uint16_t tunnel_key_second = 1 << 1;
inline constexpr uint16_t tunnel_key_ipv4 = 1 << 2;
inline constexpr uint16_t tunnel_key_vlan_valid = 1 << 3;
inline constexpr unsigned tunnel_key_vlan_shift = 4;

struct [[gnu::packed]] P4TunnelSaKey {
    uint8_t qualifier;
    uint8_t is_ipv4;
    uint64_t address_low;
    uint8_t unused_1[8];
    uint64_t address_high;  // not next to its low half: deliberate
    uint8_t unused_2[8];
};
static_assert(offsetof(P4TunnelSaKey, address_low) == 2);
static_assert(offsetof(P4TunnelSaKey, address_high) == 18);
static_assert(sizeof(P4TunnelSaKey) == 34);

struct [[gnu::packed]] P4FlowKey {
    uint16_t qualifier;
    uint8_t mac_1[mac_bytes];
    uint8_t mac_2[mac_bytes];
    uint16_t flow_index;  // its low 16 bits only
    uint64_t address_1_low;
    uint64_t address_1_high;
    uint64_t address_2_low;
    uint64_t address_2_high;
    uint16_t port;
    uint16_t port_1;
    uint16_t port_2;
    uint8_t is_ipv4;
    uint8_t unused;
    uint32_t protocol_and_vni;  // the protocol in the low byte
};
static_assert(offsetof(P4FlowKey, flow_index) == 14);
static_assert(offsetof(P4FlowKey, address_2_high) == 40);
static_assert(offsetof(P4FlowKey, is_ipv4) == 54);
static_assert(offsetof(P4FlowKey, protocol_and_vni) == 56);
static_assert(sizeof(P4FlowKey) == 60);

inline constexpr unsigned flow_key_vni_shift = 8;

// --- Sizes ---

struct P4TableShape {
    P4Table table;
    size_t entry_bytes;
    size_t key_bytes = sizeof(uint32_t);  // an index, unless it is a hash table
};

inline constexpr P4TableShape p4_table_shapes[] = {
    {P4Table::lif_counters, 384},
    {P4Table::port_counters, 256},
    {P4Table::egress_counters, 64},
    {P4Table::ingress_counters, 64},
    {P4Table::ct_counters, 64},
    {P4Table::ct_counters_second, 64},
    {P4Table::ipfix, 24},
    {P4Table::ipfix_second, 24},
    {P4Table::input, 20},
    {P4Table::mux_vlan, 16},
    {P4Table::mux_vlan_second, 16},
    {P4Table::output, 16},
    {P4Table::vlan_map, 4, sizeof(P4VlanMapKey)},
    {P4Table::l2_segment, 4},
    {P4Table::registered_mac, 8, sizeof(P4RegisteredMacKey)},
    {P4Table::mirror, 24},
    {P4Table::mirror_l3, 64},
    {P4Table::tunnel_termination, 2, sizeof(P4TunnelTerminationKey)},
    {P4Table::tunnel_sa, 4, sizeof(P4TunnelSaKey)},
    {P4Table::tunnel_rewrite, 52},
    {P4Table::ct_state, 24},
    {P4Table::ct_state_second, 24},
    {P4Table::dscp, 4},
    {P4Table::uplink_map, 16},
    {P4Table::flow_key, 4, sizeof(P4FlowKey)},
    {P4Table::flow_rewrite, 32},
    {P4Table::flow_info, 56},
    {P4Table::flow_operations, 296},
};

constexpr const P4TableShape& p4_table_shape(P4Table table)
{
    return p4_table_shapes[static_cast<size_t>(table)];
}

consteval bool p4_tables_lie_in_the_order_of_their_numbers()
{
    size_t number = 0;
    for (const P4TableShape& shape : p4_table_shapes)
        if (static_cast<size_t>(shape.table) != number++)
            return false;
    return number == static_cast<size_t>(P4Table::flow_operations) + 1;
}
static_assert(p4_tables_lie_in_the_order_of_their_numbers());
