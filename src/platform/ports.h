// Operations and records of the datapath's switch and port inventory.
#pragma once

#include "platform/limits.h"

struct SwitchListEntry {
    char name[128];
    uint32_t switch_number;
    uint32_t max_ports;
    uint32_t num_active_ports;
    uint32_t num_ports;
    uint32_t mtu;
    uint32_t num_lcores;
    uint64_t lcore_mask;
};
static_assert(offsetof(SwitchListEntry, switch_number) == 128);
static_assert(offsetof(SwitchListEntry, num_lcores) == 148);
static_assert(offsetof(SwitchListEntry, lcore_mask) == 152);
static_assert(sizeof(SwitchListEntry) == 160);

struct SwitchList {
    uint32_t count;
    uint32_t reserved;
    SwitchListEntry entries[max_switches];
};
static_assert(offsetof(SwitchList, entries) == 8);
static_assert(sizeof(SwitchList) == 2568);

enum class ClientType : uint32_t { vnic = 1, uplink = 2, generic = 3, representor = 4 };

inline constexpr uint32_t port_flag_pass_through = 1;

struct PortListEntry {
    uint32_t port;
    uint32_t qdp_port;
    uint8_t num_tx_queues;
    uint8_t num_rx_queues;
    uint8_t mac[mac_bytes];
    uint16_t num_macs;
    uint16_t representor_type;
    uint32_t client_type;  // a ClientType, as far as it is known
    uint32_t flags;
    uint8_t tx_queue_lcores[max_queues];
    uint8_t rx_queue_lcores[max_queues];
};
static_assert(offsetof(PortListEntry, mac) == 10);
static_assert(offsetof(PortListEntry, representor_type) == 18);
static_assert(offsetof(PortListEntry, flags) == 24);
static_assert(offsetof(PortListEntry, tx_queue_lcores) == 28);
static_assert(offsetof(PortListEntry, rx_queue_lcores) == 92);
static_assert(sizeof(PortListEntry) == 156);

struct PortList {
    uint32_t reserved;
    uint32_t count;
    uint32_t reserved_too;
    PortListEntry entries[max_ports];
};
static_assert(offsetof(PortList, count) == 4);
static_assert(offsetof(PortList, entries) == 12);
static_assert(sizeof(PortList) == 2555916);

extern "C" {

uint32_t Qdp_Get_Switch_List(SwitchList* list, uint32_t* size);
uint32_t Qdp_Get_Port_List(uint32_t switch_number, PortList* list, uint32_t* size);

}  // extern "C"
