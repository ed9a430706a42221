// Operations and records of the host-wide timing of flows and of their offload.
#pragma once

#include <cstddef>
#include <cstdint>

// In a quota or an interval that is to be set: the current value stays.
inline constexpr uint32_t keep_current = UINT32_MAX;

// How offloaded flows are looked at again.
struct FpoRevalConfig {
    uint32_t enabled;
    uint32_t inject_packet;
    uint32_t flow_scan_quota;
    uint32_t reval_interval;
};
static_assert(offsetof(FpoRevalConfig, flow_scan_quota) == 8);
static_assert(offsetof(FpoRevalConfig, reval_interval) == 12);
static_assert(sizeof(FpoRevalConfig) == 16);

// How many packets a tracked connection has to see before it is offloaded.
struct FpoConntrackDelay {
    uint32_t num_packets;
    uint32_t enabled;
};
static_assert(offsetof(FpoConntrackDelay, enabled) == 4);
static_assert(sizeof(FpoConntrackDelay) == 8);

extern "C" {

uint32_t Qdp_Get_Flow_Timeout(uint32_t* seconds);
uint32_t Qdp_Set_Flow_Timeout(uint32_t seconds);
uint32_t Qdp_Get_FPO_Reval_Config(FpoRevalConfig* config);
uint32_t Qdp_Set_FPO_Reval_Config(const FpoRevalConfig* config);
uint32_t Qdp_Get_FPO_DelayCtOl_Config(FpoConntrackDelay* config);
uint32_t Qdp_Set_FPO_DelayCtOl_Config(const FpoConntrackDelay* config);
uint32_t Qdp_Get_Refresh_Pkt_Injection(uint32_t* value);
uint32_t Qdp_Set_Refresh_Pkt_Injection(uint32_t value);

}  // extern "C"
