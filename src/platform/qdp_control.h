// The operations of the datapath control library, libqdp.so. Each returns 0 for success. A record that an operation
// fills is followed by a pointer to a size word, which holds the record's capacity in bytes before the call.
#pragma once

#include "platform/l3span.h"
#include "platform/load_balancer.h"
#include "platform/p4_command.h"
#include "platform/ports.h"
#include "platform/rss_engines.h"
#include "platform/stats.h"

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
uint32_t Qdp_GetLBParams(const char* portset_name, LBParameters* parameters);
uint32_t Qdp_SetLBParam(const char* portset_name, uint32_t parameter, uint64_t value);
uint32_t Qdp_DumpLBDebugBuf(uint32_t switch_number, int8_t flag, char* text, uint32_t* length);
uint32_t Qdp_FlushLBDebugBuf(uint32_t switch_number);
uint32_t Qdp_DumpLBStats(uint32_t switch_number, uint32_t first_port, uint32_t port_count, uint32_t first_context,
                         uint32_t context_count, LBStatsChunk* chunk, uint32_t size);
uint32_t Qdp_InjectLBTraffic(const LBTrafficRequest* request);

// Switch features.

// Flow processing offload.

// Timing of flows and offload.

// RSS engines and L3 SPAN.
uint32_t Qdp_Get_RSS_Engine_List(uint32_t switch_number, uint32_t port, RSSEngineList* list);
uint32_t Qdp_Get_L3SPAN_Record(const L3SPANRequest* request, L3SPANRecord* answer, uint32_t* size);

// SmartNIC: the command channel.
uint32_t Qdp_P4_Cmd(const void* request, uint32_t request_length, void* response, uint32_t* response_length);

// SmartNIC: mux mode.

// SmartNIC: pipeline statistics.

// SmartNIC: offload and DSCP settings.

// SmartNIC: hardware tables, mirrors and contexts.

// SmartNIC: P4 application, latency and advanced statistics.

// SmartNIC: flow aging.

}  // extern "C"
