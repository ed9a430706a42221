// Operations and records of a port's configuration and of the uplinks it transmits on.
#pragma once

#include "platform/limits.h"
#include "platform/named_value.h"

// What a port takes in, as bits of its receive filter flags.
inline constexpr uint32_t receive_unicast = 1;
inline constexpr uint32_t receive_multicast = 2;
inline constexpr uint32_t receive_all_multicast = 4;
inline constexpr uint32_t receive_broadcast = 8;
inline constexpr uint32_t receive_promiscuous = 16;
inline constexpr uint32_t receive_ladrf = 32;
inline constexpr NamedValue receive_flags[] = {
    {"UNICAST", receive_unicast},     {"MULTICAST", receive_multicast}, {"ALLMULTI", receive_all_multicast},
    {"BROADCAST", receive_broadcast}, {"PROMISC", receive_promiscuous}, {"USE_LADRF", receive_ladrf},
};

struct VlanRange {
    uint16_t first;
    uint16_t last;
};
static_assert(sizeof(VlanRange) == 4);

inline constexpr uint32_t max_multicast_addresses = 32;
inline constexpr uint32_t max_vlan_ranges = 256;
inline constexpr size_t port_feature_bytes = 4;

// The features of a port: bits of the little-endian word that its feature bytes make.
enum class PortFeature : uint32_t {
    kcp = 1 << 0,
    mirror_in = 1 << 1,
    lro = 1 << 2,
    l2_for_overlay = 1 << 3,
    lat = 1 << 8,
    spoofguard = 1 << 12,
    vdl2 = 1 << 13,
    tx_l3 = 1 << 14,
    min_flow_l3 = 1 << 16,
    swl3 = 1 << 17,
    mirror_filter_in = 1 << 20,
    ltr = 1 << 21,
    tx_l4 = 1 << 22,
    ipfix = 1 << 23,
    si = 1 << 24,
    swl4 = 1 << 25,
    dfw = 1 << 26,
    dlb = 1 << 27,
    hkzfw = 1 << 28,
    min_flow_l4 = 1 << 29,
    mirror_filter_out = 1 << 30,
};
inline constexpr NamedValue port_features[] = {
    {"KCP", static_cast<uint32_t>(PortFeature::kcp)},
    {"MirrorIn", static_cast<uint32_t>(PortFeature::mirror_in)},
    {"LRO", static_cast<uint32_t>(PortFeature::lro)},
    {"L2ForOverlay", static_cast<uint32_t>(PortFeature::l2_for_overlay)},
    {"LAT", static_cast<uint32_t>(PortFeature::lat)},
    {"Spoofguard", static_cast<uint32_t>(PortFeature::spoofguard)},
    {"VDL2", static_cast<uint32_t>(PortFeature::vdl2)},
    {"TxL3", static_cast<uint32_t>(PortFeature::tx_l3)},
    {"minFlowL3", static_cast<uint32_t>(PortFeature::min_flow_l3)},
    {"SWL3", static_cast<uint32_t>(PortFeature::swl3)},
    {"MirrorFilterIn", static_cast<uint32_t>(PortFeature::mirror_filter_in)},
    {"LTR", static_cast<uint32_t>(PortFeature::ltr)},
    {"TxL4", static_cast<uint32_t>(PortFeature::tx_l4)},
    {"IPFIX", static_cast<uint32_t>(PortFeature::ipfix)},
    {"SI", static_cast<uint32_t>(PortFeature::si)},
    {"SWL4", static_cast<uint32_t>(PortFeature::swl4)},
    {"DFW", static_cast<uint32_t>(PortFeature::dfw)},
    {"DLB", static_cast<uint32_t>(PortFeature::dlb)},
    {"HKZFW", static_cast<uint32_t>(PortFeature::hkzfw)},
    {"minFlowL4", static_cast<uint32_t>(PortFeature::min_flow_l4)},
    {"MirrorFilterOut", static_cast<uint32_t>(PortFeature::mirror_filter_out)},
};

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

extern "C" {

uint32_t Qdp_Get_Port_Conf(uint32_t switch_number, uint32_t port, PortConf* conf, uint32_t* size);
uint32_t Qdp_Migrate_Port(uint32_t switch_number, uint32_t port, uint32_t, uint32_t, uint32_t);
uint32_t Qdp_Unpin_Port(uint32_t switch_number, uint32_t port, uint32_t);
uint32_t Qdp_Reset_Port(uint32_t switch_number, uint32_t port, uint32_t);
uint32_t Qdp_Get_Port_Tx_Uplink(uint32_t switch_number, uint32_t port, TxUplinks* uplinks, uint32_t* size);
uint32_t Qdp_Set_Uplink_MAC_Learn(uint32_t switch_number, uint32_t enable);
uint32_t Qdp_Get_Panic_On_Tx_Hang(uint32_t switch_number, uint32_t* enabled);
uint32_t Qdp_Set_Panic_On_Tx_Hang(uint32_t switch_number, uint32_t enable);

}  // extern "C"
