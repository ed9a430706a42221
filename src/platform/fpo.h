// Operations and records of flow processing offload (FPO), which pushes flows into NIC hardware.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/named_value.h"

inline constexpr char fpo_property[] = "com.tarnix.wyx.qdp.fpo";

// What a NIC may implement, and a switch allow; bit 3 has no meaning.
inline constexpr uint32_t fpo_model_1_level_1 = 1 << 0;
inline constexpr uint32_t fpo_model_1_level_2 = 1 << 1;
inline constexpr uint32_t fpo_model_2a = 1 << 2;
inline constexpr uint32_t fpo_model_3a = 1 << 4;
inline constexpr uint32_t fpo_model_3b = 1 << 5;
inline constexpr NamedValue fpo_models[] = {
    {"Model 1 Level 1", fpo_model_1_level_1},
    {"Model 1 Level 2", fpo_model_1_level_2},
    {"Model 2A", fpo_model_2a},
    {"Model 3A", fpo_model_3a},
    {"Model 3B", fpo_model_3b},
};

inline constexpr uint32_t fpo_enabled = 1 << 0;
inline constexpr uint32_t fpo_geneve_critical = 1 << 1;
inline constexpr uint32_t fpo_ip_discovery_dhcp = 1 << 2;
inline constexpr uint32_t fpo_ip_discovery_icmp6_nd = 1 << 3;

// The value of a switch's property. Deliberately without the version that the other settings begin with.
struct FpoSettings {
    uint32_t flags;
    uint32_t models;
};
static_assert(offsetof(FpoSettings, models) == 4);
static_assert(sizeof(FpoSettings) == 8);

struct [[gnu::packed]] FpoLcoreStats {
    uint32_t lcore;
    uint64_t hits;
    uint64_t mark_mismatched;
    uint64_t pnic_mismatched;
    uint64_t delay_mark_matching;
    uint64_t ephemeral_flows;
    uint64_t transient_flows;
    uint64_t conntrack_packets_queued;
    uint64_t conntrack_packets_injected;
    uint64_t conntrack_packets_in_software;
    uint64_t conntrack_contexts_failed;
};
static_assert(offsetof(FpoLcoreStats, hits) == 4);
static_assert(offsetof(FpoLcoreStats, transient_flows) == 44);
static_assert(offsetof(FpoLcoreStats, conntrack_contexts_failed) == 76);
static_assert(sizeof(FpoLcoreStats) == 84);

// Holds fewer lcores than a call may ask for.
struct FpoLcoreStatsList {
    uint32_t count;
    uint32_t reserved;
    FpoLcoreStats entries[32];
};
static_assert(offsetof(FpoLcoreStatsList, entries) == 8);
static_assert(sizeof(FpoLcoreStatsList) == 2696);

struct [[gnu::packed]] FpoUplinkStatus {
    uint32_t models;
    uint32_t num_groups;
    uint32_t num_priorities;
    uint32_t max_mark_action_bits;
    uint32_t max_flows;
    uint32_t max_counters;
    uint32_t max_flow_key_bits;
    uint32_t max_dec_ttl_actions;
    uint32_t num_flows_offloaded;
    uint8_t reserved[8];
    uint64_t actions;
    uint8_t reserved_too[8];
};
static_assert(offsetof(FpoUplinkStatus, num_flows_offloaded) == 32);
static_assert(offsetof(FpoUplinkStatus, actions) == 44);
static_assert(sizeof(FpoUplinkStatus) == 60);

struct FpoFlowCalls {
    uint64_t validate;
    uint64_t create;
    uint64_t destroy;
    uint64_t query;
    uint64_t flush;
};

struct FpoBulkResourceCalls {
    uint64_t allocate;
    uint64_t free;
    uint64_t query;
    uint64_t set;
    uint64_t reset;
};

struct FpoContextCalls {
    uint64_t create;
    uint64_t destroy;
    uint64_t modify;
    uint64_t query;
};

struct FpoUplinkStats {
    uint64_t ring_full;
    uint64_t creation_full;
    uint64_t destroy_full;
    uint64_t update_full;
    uint64_t gen_mismatched;
    uint64_t limit_exceeded;
    uint64_t reserved;
    FpoFlowCalls succeeded;
    FpoBulkResourceCalls bulk_succeeded;
    FpoFlowCalls failed;
    uint64_t num_pending_calls;
    FpoBulkResourceCalls bulk_failed;
    FpoContextCalls context_succeeded;
    FpoContextCalls context_failed;
    uint64_t num_enable_calls;
    uint64_t num_disable_calls;
    uint64_t num_calls_while_disabled;
};
static_assert(offsetof(FpoUplinkStats, succeeded) == 56);
static_assert(offsetof(FpoUplinkStats, bulk_succeeded) == 96);
static_assert(offsetof(FpoUplinkStats, failed) == 136);
static_assert(offsetof(FpoUplinkStats, num_pending_calls) == 176);
static_assert(offsetof(FpoUplinkStats, bulk_failed) == 184);
static_assert(offsetof(FpoUplinkStats, context_succeeded) == 224);
static_assert(offsetof(FpoUplinkStats, context_failed) == 256);
static_assert(offsetof(FpoUplinkStats, num_calls_while_disabled) == 304);
static_assert(sizeof(FpoUplinkStats) == 312);

extern "C" {

// The answer about lcores has one entry a given lcore.
uint32_t Qdp_Get_FPO_Stats(uint32_t switch_number, const uint32_t* lcores, uint32_t lcore_count,
                           FpoLcoreStatsList* list, uint32_t* size);
uint32_t Qdp_Get_FPO_Uplink_Status(uint32_t switch_number, uint32_t port, FpoUplinkStatus* status, uint32_t* size);
uint32_t Qdp_Get_FPO_Uplink_Stats(uint32_t switch_number, uint32_t port, FpoUplinkStats* stats, uint32_t* size);

}  // extern "C"
