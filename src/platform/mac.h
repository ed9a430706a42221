// Operations and records of the datapath's MAC tables.
#pragma once

#include "platform/limits.h"

struct MacEntry {
    uint8_t mac[mac_bytes];
    uint16_t vlan;
    uint32_t qdp_port;
    uint32_t reserved;
    uint32_t generation_difference;
};
static_assert(offsetof(MacEntry, vlan) == 6);
static_assert(offsetof(MacEntry, qdp_port) == 8);
static_assert(offsetof(MacEntry, generation_difference) == 16);
static_assert(sizeof(MacEntry) == 20);

struct MacTableHeader {
    uint32_t count;
    uint32_t reserved;
    uint32_t mac_limit;
    uint32_t limit_exceeded;  // of a port's table only
};
static_assert(offsetof(MacTableHeader, mac_limit) == 8);
static_assert(offsetof(MacTableHeader, limit_exceeded) == 12);
static_assert(sizeof(MacTableHeader) == 16);

inline constexpr uint32_t max_port_macs = 16384;
inline constexpr uint32_t max_switch_macs = 65536;

struct PortMacTable {
    MacTableHeader header;
    MacEntry entries[max_port_macs];
};
static_assert(sizeof(PortMacTable) == 327696);

struct SwitchMacTable {
    MacTableHeader header;
    MacEntry entries[max_switch_macs];
};
static_assert(sizeof(SwitchMacTable) == 1310736);

enum class MacOperation : uint8_t { remove = 0, add = 1 };

extern "C" {

uint32_t Qdp_Dump_Port_MAC_Table(uint32_t switch_number, uint32_t port, PortMacTable* table, uint32_t* size);
uint32_t Qdp_Dump_Switch_MAC_Table(uint32_t switch_number, SwitchMacTable* table, uint32_t* size);
uint32_t Qdp_Clear_Port_MAC_Table(uint32_t switch_number, uint32_t port);
uint32_t Qdp_Clear_Switch_MAC_Table(uint32_t switch_number);
uint32_t Qdp_MAC_Entry_Ops(uint32_t switch_number, uint32_t port, const uint8_t* mac, uint16_t vlan, uint8_t operation);

}  // extern "C"
