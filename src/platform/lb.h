// Operations and records of the thread load balancer: its settings, its statistics, and traffic that is injected.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "platform/named_value.h"

enum class LBMetric : uint32_t { none = 0, cpu = 1, count = 2 };

inline constexpr NamedValue lb_metrics[] = {
    {"none", static_cast<uint64_t>(LBMetric::none)},
    {"cpu", static_cast<uint64_t>(LBMetric::cpu)},
    {"count", static_cast<uint64_t>(LBMetric::count)},
};

// The names of the parameters, by their ids.
inline constexpr const char* lb_parameter_names[] = {
    "run_in_msec",          "cpuload_high", "cpuload_low",      "cpuload_target",      "cpuload_high_per_unit",
    "cpuload_low_per_unit", "min_v2v_pps",  "min_v2v_pps_bind", "pps_var_sensitivity", "cpu_var_sensitivity",
};
inline constexpr uint32_t lb_parameters = std::size(lb_parameter_names);

// The host property that keeps a switch's load balancing metric, and its value.
inline constexpr char lb_property[] = "com.tarnix.wyx.qdp.loadbal";

struct LBSettings {
    uint32_t version;
    uint32_t metric;  // an LBMetric, as far as it is known
    uint32_t reserved[4];
};
static_assert(offsetof(LBSettings, metric) == 4);
static_assert(sizeof(LBSettings) == 24);

// What the load balancer of a switch works with at present.
struct LBParameters {
    uint32_t metric;
    uint32_t reserved;
    uint64_t values[lb_parameters];
    uint64_t reserved_too;
};
static_assert(offsetof(LBParameters, values) == 8);
static_assert(sizeof(LBParameters) == 96);

// The most text that a debug buffer holds.
inline constexpr uint32_t lb_debug_bytes = 2'097'152;

// --- Statistics. Entries and items lie back to back, so they need not be aligned. ---

inline constexpr uint32_t max_lb_contexts = 64;
inline constexpr uint32_t lb_stats_finished = UINT32_MAX;  // a next index: nothing follows in the range

struct LBStatsChunk {
    uint32_t next_port;
    uint32_t next_context;
    uint32_t count;
    uint8_t reserved[12];
    uint8_t entries[4072];
};
static_assert(offsetof(LBStatsChunk, entries) == 24);
static_assert(sizeof(LBStatsChunk) == 4096);

enum class LBEntryType : uint32_t { port = 0, uplink = 1, context = 2 };

// Some of the items behind an entry's head.
struct LBItemGroup {
    uint32_t first;
    uint32_t count;
};

struct LBPortEntry {
    uint32_t type;
    uint32_t port;
    uint64_t affinity_mask;
    uint32_t priority;
    uint32_t reserved;
    LBItemGroup vnic_rx_queues;
    LBItemGroup offload_rss;
    LBItemGroup vnic_tx_queues;
    LBItemGroup filters;
};
static_assert(offsetof(LBPortEntry, affinity_mask) == 8);
static_assert(offsetof(LBPortEntry, vnic_rx_queues) == 24);
static_assert(offsetof(LBPortEntry, filters) == 48);
static_assert(sizeof(LBPortEntry) == 56);

// Behind a port entry.
struct LBFeatureItem {
    uint32_t count_load;
    uint32_t feature;
    uint32_t context;
    uint32_t reserved;
    uint64_t packets;
    uint64_t bytes;
};
static_assert(offsetof(LBFeatureItem, packets) == 16);
static_assert(sizeof(LBFeatureItem) == 32);

struct LBUplinkEntry {
    uint32_t type;
    uint32_t port;
    uint32_t affinity;
    uint32_t reserved;
    LBItemGroup rx_queues;
};
static_assert(offsetof(LBUplinkEntry, rx_queues) == 16);
static_assert(sizeof(LBUplinkEntry) == 24);

// Behind an uplink entry.
struct LBQueueItem {
    uint32_t count_load;
    uint32_t context;
    uint64_t packets;
    uint64_t bytes;
};
static_assert(sizeof(LBQueueItem) == 24);

struct [[gnu::packed]] LBContextEntry {
    uint32_t type;
    uint32_t context;
    int32_t world;
    uint32_t biased_cpu;
    uint32_t raw_cpu;
    uint64_t packets;
    uint64_t bytes;
    uint32_t max_pb_load;
};
static_assert(offsetof(LBContextEntry, packets) == 20);
static_assert(offsetof(LBContextEntry, max_pb_load) == 36);
static_assert(sizeof(LBContextEntry) == 40);

// --- Injected traffic ---

enum class LBDirection : uint32_t { uplink_to_port = 0, port_to_uplink = 1, port_to_port = 2 };

inline constexpr uint32_t max_lb_traffic = 100;      // of one request
inline constexpr uint32_t lb_no_queue = UINT32_MAX;  // what stands for the queue of an uplink

struct LBTraffic {
    LBDirection direction;
    uint32_t reserved;
    uint32_t source_port;  // ports are positions in the switch's port list
    uint32_t source_queue;
    uint32_t reserved_2;
    uint32_t destination_port;
    uint32_t destination_queue;
    uint32_t reserved_3;
    uint64_t packet_rate;
    uint64_t byte_rate;
};
static_assert(offsetof(LBTraffic, source_port) == 8);
static_assert(offsetof(LBTraffic, destination_port) == 20);
static_assert(offsetof(LBTraffic, packet_rate) == 32);
static_assert(sizeof(LBTraffic) == 48);

struct LBTrafficRequest {
    uint32_t switch_number;
    uint32_t count;
    LBTraffic entries[max_lb_traffic];
};
static_assert(offsetof(LBTrafficRequest, entries) == 8);
static_assert(sizeof(LBTrafficRequest) == 4808);

// What the migration of a port or a filter answers while the load balancer moves them by itself.
inline constexpr uint32_t status_lb_is_automatic = 1;

extern "C" {

uint32_t Qdp_GetLBParams(const char* portset_name, LBParameters* parameters);
uint32_t Qdp_SetLBParam(const char* portset_name, uint32_t parameter, uint64_t value);
uint32_t Qdp_DumpLBDebugBuf(uint32_t switch_number, int8_t flag, char* text, uint32_t* length);
uint32_t Qdp_FlushLBDebugBuf(uint32_t switch_number);
uint32_t Qdp_DumpLBStats(uint32_t switch_number, uint32_t first_port, uint32_t port_count, uint32_t first_context,
                         uint32_t context_count, LBStatsChunk* chunk, uint32_t size);
uint32_t Qdp_InjectLBTraffic(const LBTrafficRequest* request);

}  // extern "C"
