// Operations and records of uplinks' queues, filters and settings.
#pragma once

#include "platform/limits.h"

// --- NetQ: a port's receive filters, each with the queues that serve it ---

inline constexpr size_t netq_info_bytes = 524288;

// Filters of variable length lie back to back in `entries`: a NetQFilter, its key, its queues. The next filter starts
// right behind the last queue.
struct NetQInfo {
    uint32_t switch_number;
    uint32_t qdp_port;
    uint32_t reserved;
    uint16_t num_filters;
    uint8_t is_uplink;
    uint8_t is_flow_filter;
    uint8_t entries[netq_info_bytes - 16];
};
static_assert(offsetof(NetQInfo, num_filters) == 12);
static_assert(offsetof(NetQInfo, is_uplink) == 14);
static_assert(offsetof(NetQInfo, entries) == 16);
static_assert(sizeof(NetQInfo) == netq_info_bytes);

enum class NetQFilterType : uint16_t { mac = 0, vlan_and_mac = 1, geneve = 2, vxlan = 3 };

// The key follows, and behind it the queues.
struct NetQFilter {
    uint16_t type;  // a NetQFilterType, as far as it is known
    uint16_t reserved;
    uint16_t key_length;
    uint16_t num_queues;
};
static_assert(offsetof(NetQFilter, key_length) == 4);
static_assert(sizeof(NetQFilter) == 8);

// The key of the MAC filters; one without VLAN ends before it.
struct NetQMacKey {
    uint8_t mac[mac_bytes];
    uint16_t vlan;
};
static_assert(offsetof(NetQMacKey, vlan) == 6);
static_assert(sizeof(NetQMacKey) == 8);

// The key of the GENEVE and VXLAN filters.
struct NetQTunnelKey {
    uint8_t outer_mac[mac_bytes];
    uint8_t inner_mac[mac_bytes];
    uint32_t vni;
};
static_assert(offsetof(NetQTunnelKey, vni) == 12);
static_assert(sizeof(NetQTunnelKey) == 16);

struct NetQQueue {
    uint32_t qdp_port;
    uint32_t queue;
    int64_t filter_id;
};
static_assert(offsetof(NetQQueue, filter_id) == 8);
static_assert(sizeof(NetQQueue) == 16);

// --- Settings ---

// The sizes of an uplink's rings, as they are kept in the port's data.
struct UplinkRings {
    uint32_t tx;
    uint32_t rx;
};
static_assert(sizeof(UplinkRings) == 8);

inline constexpr char uplink_rings_key[] = "com.tarnix.extraconfig.opqueDvs.qdp.uplinkRing";  // deliberately "opque"
inline constexpr uint32_t port_data_flags = 8;

// The receive filter classes of a switch, as its host property keeps them.
struct [[gnu::packed]] FilterTypesSetting {
    uint32_t version;
    uint16_t mask;
};
static_assert(sizeof(FilterTypesSetting) == 6);

inline constexpr char filter_types_property[] = "com.tarnix.wyx.qdp.filterType";
inline constexpr uint16_t filter_type_vlan_mac = 4;  // the bit of the VLAN-and-MAC class

// The global property that marks a switch of the fast datapath.
inline constexpr char fast_datapath_property[] = "com.tarnix.extraconfig.opaqueDvs.qdp";

extern "C" {

uint32_t Qdp_Get_Port_NetQ_Info(uint32_t switch_number, uint32_t port, NetQInfo* info, uint32_t* size);
uint32_t Qdp_Migrate_NetQ_Filter(uint32_t switch_number, uint32_t port, uint32_t value);
uint32_t Qdp_GetSwitchFilterTypes(const char* portset_name, uint16_t* mask);

}  // extern "C"
