// Records of a port's configuration and of the uplinks it transmits on.
#pragma once

#include "platform/limits.h"

// What a port takes in, as bits of its receive filter flags.
inline constexpr uint32_t receive_unicast = 1;
inline constexpr uint32_t receive_multicast = 2;
inline constexpr uint32_t receive_all_multicast = 4;
inline constexpr uint32_t receive_broadcast = 8;
inline constexpr uint32_t receive_promiscuous = 16;
inline constexpr uint32_t receive_ladrf = 32;

struct VlanRange {
    uint16_t first;
    uint16_t last;
};
static_assert(sizeof(VlanRange) == 4);

inline constexpr uint32_t max_multicast_addresses = 32;
inline constexpr uint32_t max_vlan_ranges = 256;
inline constexpr size_t port_feature_bytes = 4;

// A metadata flow slot of a port: whether it is enabled, and the second value that is shown of it.
inline constexpr size_t meta_flow_slots = 64;
inline constexpr uint8_t meta_flow_enabled = 1;
inline constexpr uint8_t meta_flow_second_value = 2;

struct PortConf {
    uint32_t port;
    uint8_t reserved[12];
    uint32_t num_multicast_addresses;
    uint32_t receive_flags;
    uint8_t reserved_too[8];
    uint8_t mac[mac_bytes];
    uint16_t untagged_vlan;
    uint8_t forged_mac_allowed;
    uint8_t padding[3];
    uint32_t vni;
    uint32_t num_vlan_ranges;
    uint8_t multicast_addresses[max_multicast_addresses][mac_bytes];
    uint8_t more_padding[4];
    uint8_t features[port_feature_bytes];  // one bit each
    uint32_t num_meta_flows;               // enabled slots
    uint8_t meta_flows[meta_flow_slots];
    VlanRange vlan_ranges[max_vlan_ranges];
};
static_assert(offsetof(PortConf, num_multicast_addresses) == 16);
static_assert(offsetof(PortConf, receive_flags) == 20);
static_assert(offsetof(PortConf, mac) == 32);
static_assert(offsetof(PortConf, untagged_vlan) == 38);
static_assert(offsetof(PortConf, forged_mac_allowed) == 40);
static_assert(offsetof(PortConf, vni) == 44);
static_assert(offsetof(PortConf, num_vlan_ranges) == 48);
static_assert(offsetof(PortConf, multicast_addresses) == 52);
static_assert(offsetof(PortConf, features) == 248);
static_assert(offsetof(PortConf, num_meta_flows) == 252);
static_assert(offsetof(PortConf, meta_flows) == 256);
static_assert(offsetof(PortConf, vlan_ranges) == 320);
static_assert(sizeof(PortConf) == 1344);

// How a port chooses the uplink that a packet leaves on.
enum class TxUplinkType : uint8_t { none, single, lag, source_mac, all, no_teaming };

inline constexpr uint32_t max_tx_uplinks = 8;

struct TxUplinks {
    uint8_t type;  // a TxUplinkType, as far as it is known
    uint8_t count;
    uint16_t uplinks[max_tx_uplinks];
};
static_assert(offsetof(TxUplinks, uplinks) == 2);
static_assert(sizeof(TxUplinks) == 18);
