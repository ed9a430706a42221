// The entries of the SmartNIC's hardware tables, as the pipeline packs them; those that are plain counters stand in
// p4_counters.h. What shares a word with others is a BitField of that word.
#pragma once

#include "platform/bit_field.h"
#include "platform/p4_tables.h"

struct P4IpfixEntry {
    uint64_t packets;
    uint64_t bytes;
    uint8_t tcp_flags;
    uint8_t reserved[7];
};

struct P4CtCounterSet {
    uint64_t pass_bytes;
    uint64_t pass_packets;
    uint64_t drop_bytes;
    uint64_t drop_packets;
};

struct P4CtCountersEntry {
    P4CtCounterSet sets[2];
};

struct P4InputEntry {
    static constexpr BitField flow_key_type{0, 3};
    static constexpr BitField use_vlan_mapping{3, 1};
    static constexpr BitField packet_capture{4, 1};
    static constexpr BitField forwarding_mode{5, 3};
    static constexpr BitField is_host_port_valid{8, 1};
    static constexpr BitField is_uplink{9, 1};
    static constexpr BitField is_point_to_point{10, 1};
    static constexpr BitField skip_unknown_unicast_replication{11, 1};

    uint16_t lif;
    uint16_t port;
    uint16_t host_port;
    uint16_t representor_port;
    uint16_t source_tag;
    uint16_t pinned_port;
    uint16_t l2_segment;
    uint16_t reserved;
    uint16_t flags;
    uint16_t reserved_too;
};

struct P4MuxVlanEntry {
    static constexpr BitField flow_key_type{0, 3};
    static constexpr BitField packet_capture{3, 1};
    static constexpr BitField is_valid{4, 1};

    uint16_t vlan;
    uint16_t lifs[2];
    uint16_t source_port;
    uint16_t source_tag;
    uint16_t representor_port;
    uint8_t flags;
    uint8_t reserved[3];
};

struct P4OutputEntry {
    static constexpr BitField vlan_strip{0, 1};
    static constexpr BitField packet_capture{1, 1};
    static constexpr BitField rss_inner{2, 1};
    static constexpr BitField vlan_push{3, 1};
    static constexpr BitField metadata{4, 1};
    static constexpr BitField num_egress_ports{5, 3};

    uint16_t port;
    uint16_t lif;
    uint16_t destination_tag;
    uint8_t flags;
    uint8_t application;
    uint8_t egress_ports[2];
    uint16_t pushed_vlan;
    uint16_t access_vlan;
    uint8_t rss_override;
    uint8_t rss_override_queue;
};

struct P4VlanMapEntry {
    uint16_t registered_mac_vrf;
    uint16_t l2_segment;
};

struct P4L2SegmentEntry {
    static constexpr BitField host_receives_unknown_unicast{0, 1};
    static constexpr BitField host_receives_unknown_multicast{1, 1};
    static constexpr BitField host_receives_broadcast{2, 1};

    uint16_t flags;
    uint16_t replication;
};

struct P4RegisteredMacEntry {
    static constexpr BitField pinned_port{0, 15};
    static constexpr BitField is_multicast{15, 1};

    uint16_t port;
    uint16_t pinned_port_and_multicast;
    uint32_t queue;
};

struct P4MirrorEntry {
    static constexpr BitField reason{0, 8};
    static constexpr BitField vni{8, 24};

    static constexpr BitField has_geneve_option{0, 1};
    static constexpr BitField has_tunnel_rewrite{1, 1};
    static constexpr BitField packet_capture{2, 1};
    static constexpr BitField to_software{3, 1};
    static constexpr BitField has_l3{4, 1};
    static constexpr BitField vlan_push{5, 1};
    static constexpr BitField tunnel{7, 13};
    static constexpr BitField vlan{20, 12};

    uint16_t port;
    uint8_t geneve_option_mac[mac_bytes];
    uint32_t reason_and_vni;
    uint32_t flags;
    uint32_t flow_cookie;
    uint16_t uplink_ports[2];
};

struct P4MirrorL3Entry {
    static constexpr BitField type{0, 2};
    static constexpr BitField is_ipv6{2, 1};
    static constexpr BitField has_vlan{3, 1};
    static constexpr BitField has_truncation{4, 1};
    static constexpr BitField class_of_service{5, 3};
    static constexpr BitField l2_type{8, 2};
    static constexpr BitField timestamp_in_nanoseconds{10, 1};

    static constexpr BitField erspan_hardware{0, 6};
    static constexpr BitField erspan_session{6, 10};

    uint16_t number;
    uint16_t flags;
    uint8_t source_mac[mac_bytes];
    uint8_t destination_mac[mac_bytes];
    uint16_t vlan;
    uint16_t truncated_bytes;
    uint8_t traffic_class;
    uint8_t ttl;
    uint16_t erspan;
    uint32_t gre_key;
    uint32_t reserved;
    uint8_t source[16];
    uint8_t destination[16];
};

struct P4TunnelTerminationEntry {
    uint8_t vtep;
    uint8_t is_valid;
};

struct P4TunnelSaEntry {
    uint16_t outer_flow;
    uint8_t is_valid;
    uint8_t reserved;
};

struct P4TunnelRewriteEntry {
    static constexpr BitField is_ipv6{0, 1};
    static constexpr BitField is_geneve{1, 1};
    static constexpr BitField has_vlan{2, 1};
    static constexpr BitField copies_traffic_class{3, 1};
    static constexpr BitField has_label{4, 1};
    static constexpr BitField label{5, 17};
    static constexpr BitField l2_type{22, 2};

    uint32_t flags;
    uint16_t vlan;
    uint8_t traffic_class;
    uint8_t ttl;
    uint8_t source_mac[mac_bytes];
    uint8_t destination_mac[mac_bytes];
    uint8_t source[16];
    uint8_t destination[16];
};

struct P4CtStateEntry {
    // Of both ends.
    static constexpr BitField state{0, 4};
    static constexpr BitField window_scale{4, 4};

    static constexpr BitField is_logged{0, 1};
    static constexpr BitField is_sloppy{1, 1};

    uint32_t source_sequence_low;
    uint32_t source_sequence_high;
    uint16_t source_window;
    uint8_t source_state_and_scale;
    uint8_t destination_state_and_scale;
    uint32_t destination_sequence_low;
    uint32_t destination_sequence_high;
    uint16_t destination_window;
    uint8_t software_state;
    uint8_t flags;
};

struct P4DscpEntry {
    uint8_t ipv4_mask;
    uint8_t ipv4_value;
    uint8_t ipv6_mask;
    uint8_t ipv6_value;
};

// All ports come first, then all tags.
struct P4UplinkMapEntry {
    uint16_t ports[4];
    uint16_t tags[4];
};

struct P4FlowKeyEntry {
    uint32_t flow;
};

struct P4FlowRewriteEntry {
    static constexpr BitField vlan_pop{0, 1};
    static constexpr BitField vlan_push{1, 1};
    static constexpr BitField vlan_set{2, 1};
    static constexpr BitField vlan_set_priority{3, 1};
    static constexpr BitField dscp_set{4, 1};
    static constexpr BitField route{5, 1};
    static constexpr BitField rss_override{6, 1};
    static constexpr BitField kcp_vlan_push{7, 1};
    static constexpr BitField vlan_priority{9, 3};
    static constexpr BitField dscp{12, 6};
    static constexpr BitField rss_override_queue{18, 6};
    static constexpr BitField hops{24, 8};

    static constexpr BitField vlan{0, 12};
    static constexpr BitField kcp_vlan{12, 12};

    static constexpr BitField vni{0, 24};

    uint32_t flags;
    uint32_t vlans;
    uint32_t encapsulation;
    uint16_t outer_source_port;
    uint8_t source_mac[mac_bytes];
    uint8_t destination_mac[mac_bytes];
    uint16_t reserved;
    uint32_t flow_cookie;
};

struct P4FlowInfoEntry {
    static constexpr BitField checks_ttl{0, 1};
    static constexpr BitField is_routed{1, 1};
    static constexpr BitField has_nat{2, 1};
    static constexpr BitField encap{3, 1};
    static constexpr BitField decap{4, 1};
    static constexpr BitField has_ingress_ct{5, 1};
    static constexpr BitField ingress_ct_direction{6, 1};
    static constexpr BitField has_egress_ct{7, 1};
    static constexpr BitField egress_ct_direction{8, 1};
    static constexpr BitField has_ingress_ipfix{9, 1};
    static constexpr BitField has_egress_ipfix{10, 1};
    static constexpr BitField drop{11, 1};
    static constexpr BitField to_uplink{12, 1};
    static constexpr BitField from_uplink{13, 1};
    static constexpr BitField destination_uplink{14, 2};
    static constexpr BitField source_uplink{16, 2};
    static constexpr BitField hops{24, 8};

    uint32_t flow;
    uint16_t port;
    uint16_t reserved;
    uint64_t count;
    uint32_t seconds;
    uint16_t source_tag;
    uint16_t destination_tag;
    uint32_t flags;
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

struct P4FlowOperationsEntry {
    static constexpr size_t levels = 8;  // of the hash table

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
    uint64_t inserts_by_level[levels];
    uint64_t removes_by_level[levels];
};

template <P4Table table, class Entry>
inline constexpr bool fits_p4_table = sizeof(Entry) == p4_table_shape(table).entry_bytes;

static_assert(fits_p4_table<P4Table::ipfix, P4IpfixEntry>);
static_assert(fits_p4_table<P4Table::ct_counters, P4CtCountersEntry>);
static_assert(fits_p4_table<P4Table::input, P4InputEntry>);
static_assert(fits_p4_table<P4Table::mux_vlan, P4MuxVlanEntry>);
static_assert(fits_p4_table<P4Table::output, P4OutputEntry>);
static_assert(fits_p4_table<P4Table::vlan_map, P4VlanMapEntry>);
static_assert(fits_p4_table<P4Table::l2_segment, P4L2SegmentEntry>);
static_assert(fits_p4_table<P4Table::registered_mac, P4RegisteredMacEntry>);
static_assert(fits_p4_table<P4Table::mirror, P4MirrorEntry>);
static_assert(fits_p4_table<P4Table::mirror_l3, P4MirrorL3Entry>);
static_assert(fits_p4_table<P4Table::tunnel_termination, P4TunnelTerminationEntry>);
static_assert(fits_p4_table<P4Table::tunnel_sa, P4TunnelSaEntry>);
static_assert(fits_p4_table<P4Table::tunnel_rewrite, P4TunnelRewriteEntry>);
static_assert(fits_p4_table<P4Table::ct_state, P4CtStateEntry>);
static_assert(fits_p4_table<P4Table::dscp, P4DscpEntry>);
static_assert(fits_p4_table<P4Table::uplink_map, P4UplinkMapEntry>);
static_assert(fits_p4_table<P4Table::flow_key, P4FlowKeyEntry>);
static_assert(fits_p4_table<P4Table::flow_rewrite, P4FlowRewriteEntry>);
static_assert(fits_p4_table<P4Table::flow_info, P4FlowInfoEntry>);
static_assert(fits_p4_table<P4Table::flow_operations, P4FlowOperationsEntry>);
