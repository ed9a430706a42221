// The operations of the datapath control library, libqdp.so. Each returns 0 for success. A record that an operation
// fills is followed by a pointer to a size word, which holds the record's capacity in bytes before the call.
#pragma once

#include "platform/ports.h"
#include "platform/stats.h"

extern "C" {

// Switches and ports.
uint32_t Qdp_Get_Switch_List(SwitchList* list, uint32_t* size);
uint32_t Qdp_Get_Port_List(uint32_t switch_number, PortList* list, uint32_t* size);

// Port statistics.
uint32_t Qdp_Get_Port_Stats(uint32_t switch_number, uint32_t port, PortCounters* counters, uint32_t* size);
uint32_t Qdp_Get_Port_Stats_Slowpath(uint32_t switch_number, uint32_t port, PortCounters* counters, uint32_t* size);

}  // extern "C"
