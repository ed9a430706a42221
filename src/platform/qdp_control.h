// The operations of the datapath control library, libqdp.so. Each returns 0 for success. A record that an operation
// fills is followed by a pointer to a size word, which holds the record's capacity in bytes before the call.
#pragma once

#include "platform/fpo.h"
#include "platform/p4_command.h"
#include "platform/ports.h"
#include "platform/settings.h"
#include "platform/stats.h"
#include "platform/timing.h"

extern "C" {

// Switches and ports.
uint32_t Qdp_Get_Switch_List(SwitchList* list, uint32_t* size);
uint32_t Qdp_Get_Port_List(uint32_t switch_number, PortList* list, uint32_t* size);

// Port configuration and control.

// Port statistics.
uint32_t Qdp_Get_Port_Stats(uint32_t switch_number, uint32_t port, PortCounters* counters, uint32_t* size);
uint32_t Qdp_Get_Port_Stats_Slowpath(uint32_t switch_number, uint32_t port, PortCounters* counters, uint32_t* size);

// Uplink and lcore statistics.

// MAC tables.

// Flow cache.

// NetQ queues and filters.

// Filter classes, device affinity, lcores and mbuf slabs.

// Thread load balancer.

// Switch features. A portset name is a text; the first call also wants the size of its buffer.
uint32_t Qdp_GetSwitchNUMATeam(const char* portset_name, uint32_t name_bytes, uint8_t* enabled);
uint32_t Qdp_GetSwitchBurstSize(const char* portset_name, uint32_t* burst_size);
uint32_t Qdp_GetSwitchOverlayL2Flow(const char* portset_name, uint32_t* value);
uint32_t Qdp_GetLRO(LroScope scope, uint32_t switch_number, uint32_t port, uint32_t* value);
uint32_t Qdp_SetLRO(LroScope scope, uint32_t switch_number, uint32_t port, uint32_t value);
uint32_t Qdp_GetSwitchMinFlowLayer(uint32_t switch_number, uint32_t* layer);
uint32_t Qdp_SetSwitchMinFlowLayer(uint32_t switch_number, uint32_t layer);

// Flow processing offload. The answer about lcores has one entry a given lcore.
uint32_t Qdp_Get_FPO_Stats(uint32_t switch_number, const uint32_t* lcores, uint32_t lcore_count,
                           FpoLcoreStatsList* list, uint32_t* size);
uint32_t Qdp_Get_FPO_Uplink_Status(uint32_t switch_number, uint32_t port, FpoUplinkStatus* status, uint32_t* size);
uint32_t Qdp_Get_FPO_Uplink_Stats(uint32_t switch_number, uint32_t port, FpoUplinkStats* stats, uint32_t* size);

// Timing of flows and offload.
uint32_t Qdp_Get_Flow_Timeout(uint32_t* seconds);
uint32_t Qdp_Set_Flow_Timeout(uint32_t seconds);
uint32_t Qdp_Get_FPO_Reval_Config(FpoRevalConfig* config);
uint32_t Qdp_Set_FPO_Reval_Config(const FpoRevalConfig* config);
uint32_t Qdp_Get_FPO_DelayCtOl_Config(FpoConntrackDelay* config);
uint32_t Qdp_Set_FPO_DelayCtOl_Config(const FpoConntrackDelay* config);
uint32_t Qdp_Get_Refresh_Pkt_Injection(uint32_t* value);
uint32_t Qdp_Set_Refresh_Pkt_Injection(uint32_t value);

// RSS engines and L3 SPAN.

// SmartNIC: the command channel.
uint32_t Qdp_P4_Cmd(const void* request, uint32_t request_length, void* response, uint32_t* response_length);

// SmartNIC: mux mode.

// SmartNIC: pipeline statistics.

// SmartNIC: offload and DSCP settings.

// SmartNIC: hardware tables, mirrors and contexts.

// SmartNIC: P4 application, latency and advanced statistics.

// SmartNIC: flow aging.

}  // extern "C"
