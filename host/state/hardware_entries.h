// The entries of the SmartNIC's hardware tables, as the pipeline packs them; those that are plain counters stand in
// platform/p4_counters.h.
#pragma once

#include "platform/p4_counters.h"
#include "platform/p4_tables.h"

namespace host::hardware {

struct IpfixEntry {
    uint64_t packets;
    uint64_t bytes;
    uint8_t tcp_flags;
    uint8_t reserved[7];
};

struct CtCountersEntry {
    struct {
        uint64_t pass_bytes;
        uint64_t pass_packets;
        uint64_t drop_bytes;
        uint64_t drop_packets;
    } sets[2];
};

struct InputEntry {
    uint16_t lif;
    uint16_t port;
    uint16_t host_port;
    uint16_t representor_port;
    uint16_t source_tag;
    uint16_t pinned_port;
    uint16_t l2_segment;
    uint16_t reserved_1;
    uint8_t flow_key_type : 3;
    uint8_t use_vlan_mapping : 1;
    uint8_t packet_capture : 1;
    uint8_t forwarding_mode : 3;
    uint8_t is_host_port_valid : 1;
    uint8_t is_uplink : 1;
    uint8_t is_point_to_point : 1;
    uint8_t skip_unknown_unicast_replication : 1;
    uint8_t : 4;
    uint16_t reserved_2;
};

struct MuxVlanEntry {
    uint16_t vlan;
    uint16_t lifs[2];
    uint16_t source_port;
    uint16_t source_tag;
    uint16_t representor_port;
    uint8_t flow_key_type : 3;
    uint8_t packet_capture : 1;
    uint8_t valid : 1;
    uint8_t : 3;
    uint8_t reserved[3];
};

struct OutputEntry {
    uint16_t port;
    uint16_t lif;
    uint16_t destination_tag;
    uint8_t vlan_strip : 1;
    uint8_t packet_capture : 1;
    uint8_t rss_inner : 1;
    uint8_t vlan_push : 1;
    uint8_t metadata : 1;
    uint8_t egress_port_count : 3;
    uint8_t application;
    uint8_t egress_ports[2];
    uint16_t pushed_vlan;
    uint16_t access_vlan;
    uint8_t rss_override;
    uint8_t rss_override_queue;
};

struct VlanMapEntry {
    uint16_t registered_mac_vrf;
    uint16_t l2_segment;
};

struct L2SegmentEntry {
    uint8_t host_receives_unknown_unicast : 1;
    uint8_t host_receives_unknown_multicast : 1;
    uint8_t host_receives_broadcast : 1;
    uint8_t : 5;
    uint8_t reserved;
    uint16_t replication;
};

struct RegisteredMacEntry {
    uint16_t port;
    uint16_t pinned_port : 15;
    uint16_t multicast : 1;
    uint32_t queue;
};

struct MirrorEntry {
    uint16_t port;
    uint8_t option_mac[mac_bytes];
    uint32_t reason : 8;
    uint32_t vni : 24;
    uint32_t has_option : 1;
    uint32_t has_tunnel_rewrite : 1;
    uint32_t packet_capture : 1;
    uint32_t to_software : 1;
    uint32_t has_l3 : 1;
    uint32_t vlan_push : 1;
    uint32_t : 1;
    uint32_t tunnel : 13;
    uint32_t vlan : 12;
    uint32_t flow_cookie;
    uint16_t uplink_ports[2];
};

struct MirrorL3Entry {
    uint16_t number;
    uint8_t type : 2;
    uint8_t is_ipv6 : 1;
    uint8_t has_vlan : 1;
    uint8_t has_truncation : 1;
    uint8_t class_of_service : 3;
    uint8_t l2_type : 2;
    uint8_t timestamp_in_nanoseconds : 1;
    uint8_t : 5;
    uint8_t source_mac[mac_bytes];
    uint8_t destination_mac[mac_bytes];
    uint16_t vlan;
    uint16_t truncated_bytes;
    uint8_t traffic_class;
    uint8_t ttl;
    uint16_t erspan_hardware : 6;
    uint16_t erspan_session : 10;
    uint32_t gre_key;
    uint32_t reserved;
    uint8_t source[16];
    uint8_t destination[16];
};

struct TunnelTerminationEntry {
    uint8_t vtep;
    uint8_t valid;
};

struct TunnelSaEntry {
    uint16_t outer_flow;
    uint8_t valid;
    uint8_t reserved;
};

struct TunnelRewriteEntry {
    uint32_t is_ipv6 : 1;
    uint32_t is_geneve : 1;
    uint32_t has_vlan : 1;
    uint32_t copies_traffic_class : 1;
    uint32_t has_label : 1;
    uint32_t label : 17;
    uint32_t l2_type : 2;
    uint32_t : 8;
    uint16_t vlan;
    uint8_t traffic_class;
    uint8_t ttl;
    uint8_t source_mac[mac_bytes];
    uint8_t destination_mac[mac_bytes];
    uint8_t source[16];
    uint8_t destination[16];
};

struct CtStateEntry {
    uint32_t source_sequence_low;
    uint32_t source_sequence_high;
    uint16_t source_window;
    uint8_t source_state : 4;
    uint8_t source_window_scale : 4;
    uint8_t destination_state : 4;
    uint8_t destination_window_scale : 4;
    uint32_t destination_sequence_low;
    uint32_t destination_sequence_high;
    uint16_t destination_window;
    uint8_t software_state;
    uint8_t is_logged : 1;
    uint8_t is_sloppy : 1;
    uint8_t : 6;
};

struct DscpEntry {
    uint8_t ipv4_mask;
    uint8_t ipv4_value;
    uint8_t ipv6_mask;
    uint8_t ipv6_value;
};

struct UplinkMapEntry {
    uint16_t ports[4];
    uint16_t tags[4];
};

struct FlowKeyEntry {
    uint32_t flow;
};

struct FlowRewriteEntry {
    uint32_t vlan_pop : 1;
    uint32_t vlan_push : 1;
    uint32_t vlan_set : 1;
    uint32_t vlan_set_priority : 1;
    uint32_t dscp_set : 1;
    uint32_t route : 1;
    uint32_t rss_override : 1;
    uint32_t kcp_vlan_push : 1;
    uint32_t : 1;
    uint32_t vlan_priority : 3;
    uint32_t dscp : 6;
    uint32_t rss_override_queue : 6;
    uint32_t hops : 8;
    uint32_t vlan : 12;
    uint32_t kcp_vlan : 12;
    uint32_t : 8;
    uint32_t vni : 24;
    uint32_t : 8;
    uint16_t outer_source_port;
    uint8_t source_mac[mac_bytes];
    uint8_t destination_mac[mac_bytes];
    uint16_t reserved;
    uint32_t flow_cookie;
};

struct FlowInfoEntry {
    uint32_t flow;
    uint16_t port;
    uint16_t reserved;
    uint64_t count;
    uint32_t seconds;
    uint16_t source_tag;
    uint16_t destination_tag;
    uint8_t checks_ttl : 1;
    uint8_t is_routed : 1;
    uint8_t has_nat : 1;
    uint8_t encap : 1;
    uint8_t decap : 1;
    uint8_t has_ingress_ct : 1;
    uint8_t ingress_ct_direction : 1;
    uint8_t has_egress_ct : 1;
    uint8_t egress_ct_direction : 1;
    uint8_t has_ingress_ipfix : 1;
    uint8_t has_egress_ipfix : 1;
    uint8_t drop : 1;
    uint8_t to_uplink : 1;
    uint8_t from_uplink : 1;
    uint8_t destination_uplink : 2;
    uint8_t source_uplink : 2;
    uint8_t : 6;
    uint8_t hops;
    uint8_t ingress_mirrors;
    uint8_t egress_mirrors;
    uint16_t tunnel;
    uint16_t ingress_ct_counters;
    uint16_t egress_ct_counters;
    uint32_t nat;
    uint32_t ingress_ct;
    uint32_t egress_ct;
    uint32_t ingress_ipfix;
    uint32_t egress_ipfix;
};

struct FlowOperationsEntry {
    uint64_t insert_calls;
    uint64_t duplicate_inserts;
    uint64_t failed_inserts;
    uint64_t failed_recirculated_inserts;
    uint64_t remove_calls;
    uint64_t removes_not_found;
    uint64_t failed_removes;
    uint64_t updates;
    uint64_t failed_updates;
    uint64_t gets;
    uint64_t failed_gets;
    uint64_t reserved[2];
    uint64_t releases;
    uint64_t failed_releases;
    uint64_t entries;
    uint64_t collisions;
    uint64_t inserts;
    uint64_t removes;
    uint64_t reads;
    uint64_t writes;
    uint64_t inserts_by_level[8];
    uint64_t removes_by_level[8];
};

template <P4Table table, class Entry>
inline constexpr bool fits = sizeof(Entry) == p4_table_shape(table).entry_bytes;

static_assert(fits<P4Table::ipfix, IpfixEntry>);
static_assert(fits<P4Table::ct_counters, CtCountersEntry>);
static_assert(fits<P4Table::input, InputEntry>);
static_assert(fits<P4Table::mux_vlan, MuxVlanEntry>);
static_assert(fits<P4Table::output, OutputEntry>);
static_assert(fits<P4Table::vlan_map, VlanMapEntry>);
static_assert(fits<P4Table::l2_segment, L2SegmentEntry>);
static_assert(fits<P4Table::registered_mac, RegisteredMacEntry>);
static_assert(fits<P4Table::mirror, MirrorEntry>);
static_assert(fits<P4Table::mirror_l3, MirrorL3Entry>);
static_assert(fits<P4Table::tunnel_termination, TunnelTerminationEntry>);
static_assert(fits<P4Table::tunnel_sa, TunnelSaEntry>);
static_assert(fits<P4Table::tunnel_rewrite, TunnelRewriteEntry>);
static_assert(fits<P4Table::ct_state, CtStateEntry>);
static_assert(fits<P4Table::dscp, DscpEntry>);
static_assert(fits<P4Table::uplink_map, UplinkMapEntry>);
static_assert(fits<P4Table::flow_key, FlowKeyEntry>);
static_assert(fits<P4Table::flow_rewrite, FlowRewriteEntry>);
static_assert(fits<P4Table::flow_info, FlowInfoEntry>);
static_assert(fits<P4Table::flow_operations, FlowOperationsEntry>);

}  // namespace host::hardware
