// Operations and records of the datapath's flow cache: the key and the actions of a flow, and the pages of a lcore's
// flow table.
#pragma once

#include "platform/limits.h"

inline constexpr size_t ip_address_bytes = 16;

// --- What the packets of a flow look like ---

inline constexpr uint8_t flow_key_is_l4 = 1 << 0;
inline constexpr uint8_t flow_key_is_ipv6 = 1 << 1;
inline constexpr uint8_t flow_key_is_l3 = 1 << 3;

inline constexpr uint8_t protocol_icmp = 1;
inline constexpr uint8_t protocol_tcp = 6;
inline constexpr uint8_t protocol_udp = 17;
inline constexpr uint8_t protocol_icmpv6 = 58;

struct FlowKey {
    uint8_t first_mac[mac_bytes];
    uint8_t second_mac[mac_bytes];
    uint8_t flags_and_vlan;  // flags in bits 0..3; the low 4 bits of the VLAN in bits 4..7
    uint8_t vlan_high;       // the high 8 bits of the VLAN
    uint8_t tag_low;
    uint8_t tag_high;      // bits 0..6
    uint16_t first_port;   // in network byte order; for ICMP its data as it is
    uint16_t second_port;  // likewise
    uint16_t vni_low;
    uint8_t vni_high;
    uint8_t protocol;
    uint8_t first_address[ip_address_bytes];  // of IPv4 both addresses stand here, one behind the other
    uint8_t second_address[ip_address_bytes];
    uint8_t reserved[8];
};
static_assert(offsetof(FlowKey, flags_and_vlan) == 12);
static_assert(offsetof(FlowKey, first_port) == 16);
static_assert(offsetof(FlowKey, vni_low) == 20);
static_assert(offsetof(FlowKey, protocol) == 23);
static_assert(offsetof(FlowKey, first_address) == 24);
static_assert(offsetof(FlowKey, second_address) == 40);
static_assert(sizeof(FlowKey) == 64);

// --- What the datapath does with them ---

// The bits of an action bitmap that have a meaning to the reader of a flow table.
enum class FlowAction : uint8_t {
    input_child_port = 2,
    lro = 3,
    ipfix_ingress = 4,
    drop = 5,
    firewall_source = 6,
    destination_port = 7,
    slow_path = 8,
    vlan_insert = 10,
    vlan_remove = 11,
    port_insert = 12,
    port_remove = 13,
    guest_vlan_insert = 16,
    mirror_ingress = 18,
    destination_mac = 19,
    routing = 20,
    vni = 22,
    geneve_decap = 23,
    vxlan_decap = 24,
    geneve_encap = 25,
    vxlan_encap = 26,
    guest_vlan_remove = 27,
    ipfix_egress = 30,
    firewall_destination = 31,
    mirror_egress = 32,
    output_vlan = 33,
    inner_lookup = 34,
    l3_vlan_routed = 35,
    lta = 36,
    meta_flow = 37,
};

constexpr uint64_t action_bit(FlowAction action)
{
    return uint64_t{1} << static_cast<unsigned>(action);
}

inline constexpr uint32_t action_group_is_multicast = 1 << 6;

inline constexpr uint32_t offload_is_offloaded = 1 << 0;
inline constexpr uint32_t offload_has_indexes = 1 << 12;
inline constexpr uint32_t offload_software_index_is_pointer = 1 << 14;

// The header of a flow's action area. Behind it lie the action groups, and the sections of the tail at its end.
struct FlowActionArea {
    uint64_t reserved;
    uint64_t generation;
    uint64_t reserved_too;
    uint8_t software_hits[7];
    uint8_t reserved_behind_hits[9];
    uint64_t software_bytes;
    uint32_t group_flags;
    uint32_t num_invalidations;
    uint16_t length;  // of the whole action data, this header included
    uint8_t num_groups;
    uint8_t num_destination_ports;
    uint8_t reserved_behind_counts[32];
    uint32_t offload_flags;
    uint8_t reserved_behind_offload[20];
    uint32_t hardware_index;
    uint64_t software_index;
};
static_assert(offsetof(FlowActionArea, generation) == 8);
static_assert(offsetof(FlowActionArea, software_hits) == 24);
static_assert(offsetof(FlowActionArea, software_bytes) == 40);
static_assert(offsetof(FlowActionArea, group_flags) == 48);
static_assert(offsetof(FlowActionArea, length) == 56);
static_assert(offsetof(FlowActionArea, offload_flags) == 92);
static_assert(offsetof(FlowActionArea, hardware_index) == 116);
static_assert(offsetof(FlowActionArea, software_index) == 120);
static_assert(sizeof(FlowActionArea) == 128);

struct FlowActionGroup {
    uint64_t reserved[2];
    uint64_t bitmap;
    uint16_t destination_port;
    uint8_t reserved_behind_destination[22];
    uint8_t port_index;
    uint8_t reserved_behind_index;
    uint16_t vlan;
    uint32_t vni;
    uint8_t ingress_mirror;
    uint8_t egress_mirror;
    uint8_t reserved_behind_mirrors[108];
    uint16_t output_vlan;
    uint32_t input_child_port;
    uint32_t reserved_at_end;
};
static_assert(offsetof(FlowActionGroup, bitmap) == 16);
static_assert(offsetof(FlowActionGroup, destination_port) == 24);
static_assert(offsetof(FlowActionGroup, port_index) == 48);
static_assert(offsetof(FlowActionGroup, vlan) == 50);
static_assert(offsetof(FlowActionGroup, vni) == 52);
static_assert(offsetof(FlowActionGroup, egress_mirror) == 57);
static_assert(offsetof(FlowActionGroup, output_vlan) == 166);
static_assert(offsetof(FlowActionGroup, input_child_port) == 168);
static_assert(sizeof(FlowActionGroup) == 176);

inline constexpr size_t vni_bytes = 3;  // in network byte order, as in the header that is put before a packet
inline constexpr size_t routing_instance_bytes = 32;

// The end of the action data: its sections are found backwards from there. Instances beyond the second leave it.
struct [[gnu::packed]] FlowActionTail {
    uint8_t geneve_vni[vni_bytes];
    uint8_t reserved[5];
    uint8_t vxlan_vni[vni_bytes];
    uint8_t reserved_behind_vni;
    uint8_t num_instances;
    uint8_t reserved_behind_count[17];
    uint8_t instances[92];  // one in routing_instance_bytes, its value in its first four
};
static_assert(offsetof(FlowActionTail, geneve_vni) == 122 - 122);
static_assert(offsetof(FlowActionTail, vxlan_vni) == 122 - 114);
static_assert(offsetof(FlowActionTail, num_instances) == 122 - 110);
static_assert(offsetof(FlowActionTail, instances) == 122 - 92);
static_assert(sizeof(FlowActionTail) == 122);

// --- A flow, and the pages of a flow table ---

struct FlowEntry {
    uint64_t reserved;
    uint8_t source_has_context;
    uint8_t destination_has_context;
    uint8_t reserved_behind_flags[6];
    uint64_t source_context;
    uint64_t destination_context;
    uint64_t hardware_hits;
    uint64_t hardware_bytes;
    FlowKey key;
    FlowActionArea area;  // the action data go on behind it
};
static_assert(offsetof(FlowEntry, source_has_context) == 8);
static_assert(offsetof(FlowEntry, source_context) == 16);
static_assert(offsetof(FlowEntry, hardware_hits) == 32);
static_assert(offsetof(FlowEntry, key) == 48);
static_assert(offsetof(FlowEntry, area) == 112);
static_assert(offsetof(FlowEntry, area.software_hits) == 136);
static_assert(offsetof(FlowEntry, area.software_bytes) == 152);
static_assert(offsetof(FlowEntry, area.length) == 168);

// The room of the longest entry. An entry that starts with less room than this before the end of the valid bytes is
// refused.
inline constexpr size_t max_flow_entry_bytes = 688;

inline constexpr uint32_t no_more_flows = 0xffffffff;  // instead of a start index

struct FlowTableRequest {
    uint32_t selector;
    uint32_t lcore;
    uint32_t start_index;
    uint8_t option;
    uint8_t filters_source_mac;
    uint8_t source_mac[mac_bytes];
    uint8_t filters_destination_mac;
    uint8_t destination_mac[mac_bytes];
    uint8_t reserved;
    uint32_t source_ip_version;  // 0: any address; 4: IPv4; else IPv6
    uint8_t source_ip[ip_address_bytes];
    uint32_t destination_ip_version;
    uint32_t reserved_behind_version;
    uint8_t destination_ip[ip_address_bytes];
    int32_t filters[5];
    uint32_t reserved_at_end;
};
static_assert(offsetof(FlowTableRequest, option) == 12);
static_assert(offsetof(FlowTableRequest, source_mac) == 14);
static_assert(offsetof(FlowTableRequest, destination_mac) == 21);
static_assert(offsetof(FlowTableRequest, source_ip_version) == 28);
static_assert(offsetof(FlowTableRequest, source_ip) == 32);
static_assert(offsetof(FlowTableRequest, destination_ip_version) == 48);
static_assert(offsetof(FlowTableRequest, destination_ip) == 56);
static_assert(offsetof(FlowTableRequest, filters) == 72);
static_assert(sizeof(FlowTableRequest) == 96);

struct FlowTableResponse {
    uint64_t reserved;
    uint32_t next_start_index;
    uint32_t count;
    uint32_t valid_bytes;   // from the start of the response
    uint32_t group_offset;  // of the action group in each entry's action area
    uint8_t entries[10240];
};
static_assert(offsetof(FlowTableResponse, next_start_index) == 8);
static_assert(offsetof(FlowTableResponse, entries) == 24);
static_assert(sizeof(FlowTableResponse) == 10264);

extern "C" {

uint32_t Qdp_Dump_Flow_Table(const FlowTableRequest* request, FlowTableResponse* response, uint32_t* size);
uint32_t Qdp_Clear_Switch_Flow_Table(uint32_t switch_number);
uint32_t Qdp_Enable_Switch_Flow_Cache(uint32_t switch_number, uint32_t enable);

}  // extern "C"
