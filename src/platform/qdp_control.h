// The operations of the datapath control library, libqdp.so. Each returns 0 for success. A record that an operation
// fills is followed by a pointer to a size word, which holds the record's capacity in bytes before the call.
#pragma once

#include "platform/mux.h"
#include "platform/p4_command.h"
#include "platform/p4_ports.h"
#include "platform/p4_settings.h"
#include "platform/ports.h"
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

// Switch features.

// Flow processing offload.

// Timing of flows and offload.

// RSS engines and L3 SPAN.

// SmartNIC: the command channel.
uint32_t Qdp_P4_Cmd(const void* request, uint32_t request_length, void* response, uint32_t* response_length);

// SmartNIC: mux mode.
uint32_t Qdp_Get_Mux_Mode(uint32_t switch_number, uint32_t* is_enabled);
uint32_t Qdp_List_Mux_VLAN_Info(const MuxListRequest* request, uint32_t request_length, MuxVlanList* list,
                                uint32_t* size);
uint32_t Qdp_List_Shadow_Ports(const MuxListRequest* request, uint32_t request_length, ShadowPortList* list,
                               uint32_t* size);

// SmartNIC: pipeline statistics.

// SmartNIC: offload and DSCP settings.

// SmartNIC: hardware tables, mirrors and contexts.

// SmartNIC: P4 application, latency and advanced statistics.

// SmartNIC: flow aging.
uint32_t Qdp_GetAgingInterval(uint32_t selector, uint32_t* interval);
uint32_t Qdp_SetAgingInterval(uint32_t selector, uint32_t interval);

}  // extern "C"
