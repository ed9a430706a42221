// Operations and records of the pipeline's offload settings, aging, contexts and diagnostics.
#pragma once

#include <cstddef>
#include <cstdint>

// How the statistics of offloaded flows are refreshed.
struct FpoFlowStatsConfig {
    uint32_t scan_quota;  // flows an update
    uint32_t interval;    // between updates
};
static_assert(offsetof(FpoFlowStatsConfig, interval) == 4);
static_assert(sizeof(FpoFlowStatsConfig) == 8);

// Says in a host property of the switch whether its flows are offloaded: a word of 1 or 0.
inline constexpr char offload_property[] = "com.tarnix.wyx.qdp.fpo.offload";

struct [[gnu::packed]] DscpConfig {
    uint32_t selector;
    uint8_t dscp;
    uint8_t mask;
};
static_assert(offsetof(DscpConfig, mask) == 5);
static_assert(sizeof(DscpConfig) == 6);

inline constexpr uint32_t context_query_type = 2;

struct FpoContextRequest {
    uint32_t ids[3];
    uint32_t query_type;
};
static_assert(offsetof(FpoContextRequest, query_type) == 12);
static_assert(sizeof(FpoContextRequest) == 16);

// One side of an offloaded TCP connection.
struct FpoContextSide {
    uint32_t lowest_sequence;
    uint32_t highest_sequence;
    uint32_t sequence_difference;
    uint32_t max_window;
    uint32_t state;
    uint32_t window_scale;
};

struct FpoContext {
    uint32_t size;  // of the record, set before the call
    uint32_t reserved;
    uint32_t is_enabled;
    uint32_t disable_window_validation;
    FpoContextSide local;
    FpoContextSide remote;
};
static_assert(offsetof(FpoContext, is_enabled) == 8);
static_assert(offsetof(FpoContext, local) == 16);
static_assert(offsetof(FpoContext, remote) == 40);
static_assert(sizeof(FpoContext) == 64);

// How long the programming of the P4 tables took. The bounds of the buckets are uneven.
struct LatencyHistogram {
    static constexpr size_t num_buckets = 20;

    uint32_t min;
    uint32_t max;
    uint64_t buckets[num_buckets];
    uint64_t out_of_bucket;
    uint64_t total_samples;
    uint64_t total_time;
};
static_assert(offsetof(LatencyHistogram, buckets) == 8);
static_assert(offsetof(LatencyHistogram, out_of_bucket) == 168);
static_assert(offsetof(LatencyHistogram, total_time) == 184);
static_assert(sizeof(LatencyHistogram) == 192);

// What to do with a switch's advanced statistics.
enum class AdvancedStatsMode : uint32_t { disable = 0, enable = 1, clear = 2 };
inline constexpr uint32_t advanced_stats_modes = 3;

// Why packets took the slow path, and why no action was generated for them.
struct [[gnu::packed]] AdvancedCounters {
    static constexpr size_t num_counters = 37;

    uint8_t unread[132];
    uint64_t counters[num_counters];
};
static_assert(offsetof(AdvancedCounters, counters) == 132);
static_assert(sizeof(AdvancedCounters) == 428);

extern "C" {

// Offload and DSCP settings, flow aging.
uint32_t Qdp_Get_FPO_Flow_Stats_Config(FpoFlowStatsConfig* config);
uint32_t Qdp_Set_FPO_Flow_Stats_Config(const FpoFlowStatsConfig* config);
uint32_t Qdp_Set_Offload_Flows(const char* portset_name, uint32_t is_enabled);
uint32_t Qdp_Get_Offload_Flows(const char* portset_name, uint32_t* is_enabled);
uint32_t Qdp_Set_Offload_ICMP_Echo(uint32_t is_enabled);
uint32_t Qdp_Get_Offload_ICMP_Echo(uint32_t* is_enabled);
uint32_t Qdp_DSCP_Conf_Set(const DscpConfig* config, uint32_t length);
uint32_t Qdp_DSCP_Conf_Get(DscpConfig* config, uint32_t* size);
uint32_t Qdp_GetAgingInterval(uint32_t selector, uint32_t* interval);
uint32_t Qdp_SetAgingInterval(uint32_t selector, uint32_t interval);

// The P4 application, its latency, its contexts and advanced statistics.
uint32_t Qdp_P4AppSet(uint32_t is_enabled);
uint32_t Qdp_P4AppGet(uint32_t* is_enabled);
uint32_t Qdp_P4UKLatencySet(uint32_t is_enabled);
uint32_t Qdp_P4UKLatencyDump(uint32_t selector, LatencyHistogram* histogram, uint32_t* size);
uint32_t Qdp_FPOQueryMgr(const FpoContextRequest* request, FpoContext* context, uint32_t* size);
uint32_t Qdp_AdvStatsSetEnabled(uint32_t switch_number, uint32_t mode);
uint32_t Qdp_AdvStatsGetEnabled(uint32_t switch_number, uint8_t* is_enabled);
uint32_t Qdp_AdvStatsGetCounters(uint32_t switch_number, uint32_t selector, const char* text,
                                 AdvancedCounters* counters, uint32_t* size);

}  // extern "C"
