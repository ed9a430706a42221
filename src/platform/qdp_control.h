// The operations of the datapath control library, libqdp.so. Each returns 0 for success. A record that an operation
// fills is followed by a pointer to a size word, which holds the record's capacity in bytes before the call.
#pragma once

#include "platform/mirrors.h"
#include "platform/p4_command.h"
#include "platform/p4_counters.h"
#include "platform/pipeline.h"
#include "platform/ports.h"
#include "platform/stats.h"
#include "platform/table_memory.h"

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

// Switch features.

// Flow processing offload.

// Timing of flows and offload.

// RSS engines and L3 SPAN.

// SmartNIC: the command channel.
uint32_t Qdp_P4_Cmd(const void* request, uint32_t request_length, void* response, uint32_t* response_length);

// SmartNIC: mux mode.

// SmartNIC: pipeline statistics.
uint32_t Qdp_Lif_Stats_Get(uint32_t lif, P4LifCounters* counters, uint32_t* size);
uint32_t Qdp_Port_Stats_Get(uint32_t port, P4PortCounters* counters, uint32_t* size);
uint32_t Qdp_CT_Stats_Get(uint32_t index, P4ConntrackCounters* counters, uint32_t* size);
uint32_t Qdp_P4I_Stats_Get(P4IngressCounters* counters, uint32_t* size);
uint32_t Qdp_P4E_Stats_Get(P4EgressCounters* counters, uint32_t* size);

// SmartNIC: offload and DSCP settings.
uint32_t Qdp_Get_FPO_Flow_Stats_Config(FpoFlowStatsConfig* config);
uint32_t Qdp_Set_FPO_Flow_Stats_Config(const FpoFlowStatsConfig* config);
uint32_t Qdp_Set_Offload_Flows(const char* portset_name, uint32_t is_enabled);
uint32_t Qdp_Get_Offload_Flows(const char* portset_name, uint32_t* is_enabled);
uint32_t Qdp_Set_Offload_ICMP_Echo(uint32_t is_enabled);
uint32_t Qdp_Get_Offload_ICMP_Echo(uint32_t* is_enabled);
uint32_t Qdp_DSCP_Conf_Set(const DscpConfig* config, uint32_t length);
uint32_t Qdp_DSCP_Conf_Get(DscpConfig* config, uint32_t* size);

// SmartNIC: hardware tables, mirrors and contexts.
uint32_t Qdp_P4_HWTable_List(TableList* list, uint32_t* size);
uint32_t Qdp_P4_HWTable_Dump(const TableRange* range, uint32_t length, TableDump* dump, uint32_t* size);
uint32_t Qdp_P4_Cache_Invalidate(const TableRange* range, uint32_t length);
uint32_t Qdp_P4_MirrorTable_Dump(MirrorSessionDump* dump, uint32_t* size);
uint32_t Qdp_P4_PortMirrorTable_Dump(const PortMirrorRequest* request, uint32_t length, PortMirrorDump* dump,
                                     uint32_t* size);
uint32_t Qdp_FPOQueryMgr(const FpoContextRequest* request, FpoContext* context, uint32_t* size);

// SmartNIC: P4 application, latency and advanced statistics.
uint32_t Qdp_P4AppSet(uint32_t is_enabled);
uint32_t Qdp_P4AppGet(uint32_t* is_enabled);
uint32_t Qdp_P4UKLatencySet(uint32_t is_enabled);
uint32_t Qdp_P4UKLatencyDump(uint32_t selector, LatencyHistogram* histogram, uint32_t* size);
uint32_t Qdp_AdvStatsSetEnabled(uint32_t switch_number, uint32_t mode);
uint32_t Qdp_AdvStatsGetEnabled(uint32_t switch_number, uint8_t* is_enabled);
uint32_t Qdp_AdvStatsGetCounters(uint32_t switch_number, uint32_t selector, const char* text,
                                 AdvancedCounters* counters, uint32_t* size);

// SmartNIC: flow aging.

}  // extern "C"
