// Operations and records of the datapath's port, uplink and lcore counters.
#pragma once

#include <cstddef>
#include <cstdint>

// The counters of one direction of a port.
struct PortDirectionCounters {
    uint64_t bytes;
    uint64_t packets;
    uint64_t multicast_bytes;
    uint64_t multicast_packets;
    uint64_t broadcast_bytes;
    uint64_t broadcast_packets;
    uint64_t drops;
    uint64_t errors;
};

// The fast path and the slow path fill the same record.
struct PortCounters {
    PortDirectionCounters tx;
    PortDirectionCounters rx;
};
static_assert(offsetof(PortCounters, tx.packets) == 8);
static_assert(offsetof(PortCounters, tx.errors) == 56);
static_assert(offsetof(PortCounters, rx.bytes) == 64);
static_assert(offsetof(PortCounters, rx.errors) == 120);
static_assert(sizeof(PortCounters) == 128);

// The device counters of an uplink, or of one queue of it.
struct UplinkCounters {
    uint64_t rx_packets;
    uint64_t tx_packets;
    uint64_t rx_bytes;
    uint64_t tx_bytes;
    uint64_t rx_errors;
    uint64_t tx_errors;
    uint64_t rx_drops;
    uint64_t tx_drops;
    uint64_t rx_multicast_packets;
    uint64_t rx_broadcast_packets;
    uint64_t tx_multicast_packets;
    uint64_t tx_broadcast_packets;
    uint64_t collisions;
    uint64_t rx_length_errors;
    uint64_t rx_overflow_errors;
    uint64_t rx_crc_errors;
    uint64_t rx_frame_align_errors;
    uint64_t rx_fifo_errors;
    uint64_t rx_miss_errors;
    uint64_t tx_aborted_errors;
    uint64_t tx_carrier_errors;
    uint64_t tx_fifo_errors;
    uint64_t tx_heartbeat_errors;
    uint64_t tx_window_errors;
};
static_assert(offsetof(UplinkCounters, rx_multicast_packets) == 64);
static_assert(offsetof(UplinkCounters, collisions) == 96);
static_assert(offsetof(UplinkCounters, tx_window_errors) == 184);
static_assert(sizeof(UplinkCounters) == 192);
// The counters of a lcore's flow cache.
struct LcoreFlowStats {
    uint32_t lcore;
    uint32_t num_flows;
    uint32_t num_model2_flows;
    uint32_t reserved;
    uint64_t num_flows_created;
    uint64_t hits;
    uint64_t misses;
    uint64_t slow_path;
    uint64_t offload_hits;
    uint64_t local_hits;
    uint64_t action_alloc_fails;
    uint64_t action_group_alloc_fails;
    uint64_t key_insert_fails;
    uint64_t latency_samples;
    uint64_t conntrack_packets_queued;
    uint64_t conntrack_packets_dropped;
    uint64_t conntrack_packets_injected;
    uint64_t conntrack_packets_continued;
    uint64_t conntrack_context_fails;
    uint64_t conntrack_flow_invalidations;
    uint64_t mark_mismatches;
    uint64_t pnic_mismatches;
    uint64_t delayed_mark_matches;
    uint64_t ephemeral_flows;
    uint64_t transient_flows;
    uint64_t backoff_times;
    uint64_t total_backoff_flows;
    uint64_t max_backoff_flows;
    uint64_t first_lookup_hits;
    uint64_t first_lookup_local_hits;
};
static_assert(offsetof(LcoreFlowStats, num_flows_created) == 16);
static_assert(offsetof(LcoreFlowStats, local_hits) == 56);
static_assert(offsetof(LcoreFlowStats, latency_samples) == 88);
static_assert(offsetof(LcoreFlowStats, conntrack_flow_invalidations) == 136);
static_assert(offsetof(LcoreFlowStats, backoff_times) == 184);
static_assert(offsetof(LcoreFlowStats, first_lookup_hits) == 208);
static_assert(sizeof(LcoreFlowStats) == 224);

inline constexpr size_t max_flow_stats = 32;

struct FlowStats {
    uint32_t count;
    uint32_t reserved;
    LcoreFlowStats entries[max_flow_stats];
};
static_assert(offsetof(FlowStats, entries) == 8);
static_assert(sizeof(FlowStats) == 7176);

extern "C" {

uint32_t Qdp_Get_Port_Stats(uint32_t switch_number, uint32_t port, PortCounters* counters, uint32_t* size);
uint32_t Qdp_Get_Port_Stats_Slowpath(uint32_t switch_number, uint32_t port, PortCounters* counters, uint32_t* size);

uint32_t Qdp_Get_Uplink_Priv_Stats_Len(uint32_t switch_number, uint32_t port, uint32_t* length, uint32_t* size);
uint32_t Qdp_Get_Uplink_Priv_Stats(uint32_t switch_number, uint32_t port, char* text, uint32_t* length);
uint32_t Qdp_Get_Uplink_Stats(uint32_t switch_number, uint32_t port, UplinkCounters* counters, uint32_t* size);
uint32_t Qdp_Get_Uplink_Queue_Stats(uint32_t switch_number, uint32_t port, uint32_t queue, uint32_t direction,
                                    UplinkCounters* counters, uint32_t* size);
uint32_t Qdp_Get_Flow_Stats(uint32_t selector, const uint32_t* lcores, uint32_t count, uint32_t value, FlowStats* stats,
                            uint32_t* size);

}  // extern "C"
