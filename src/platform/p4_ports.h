// Records of the SmartNIC's port model, which travel over its command channel.
#pragma once

#include "platform/bit_field.h"
#include "platform/p4_command.h"
#include "platform/p4_counters.h"

// What the commands accept. The records have room for more flow key types and forwarding modes.
inline constexpr uint32_t max_host_pfs = 5;
inline constexpr uint32_t max_mux_vlans = 4095;
inline constexpr uint32_t max_default_vlans = 4095;
inline constexpr uint32_t max_lif_types = 9;
inline constexpr uint32_t max_flow_key_types = 3;
inline constexpr uint32_t max_fwd_modes = 2;
inline constexpr uint32_t lif_status_end = 4095;
inline constexpr uint32_t vlan_port_status_end = 4096;  // deliberately one more than a LIF's
inline constexpr uint32_t vlan_port_list_end = 65535;   // of start indices; deliberately wider than the other lists'

struct P4HostPfs {
    uint16_t count;
    uint16_t lifs[max_host_pfs];
};
static_assert(sizeof(P4HostPfs) == 12);

struct P4LifPort {
    uint16_t lif;
    uint16_t source_port;
    uint16_t rep_port;
    uint16_t unused;
    uint8_t type;
    uint8_t flags;
    uint16_t status;
};
static_assert(offsetof(P4LifPort, type) == 8);
static_assert(offsetof(P4LifPort, flags) == 9);
static_assert(offsetof(P4LifPort, status) == 10);
static_assert(sizeof(P4LifPort) == 12);

// In a LIF's flags byte.
inline constexpr BitField lif_flow_key_type{0, 3};
inline constexpr BitField lif_fwd_mode{3, 2};
inline constexpr BitField lif_is_mux_pf{5, 1};

constexpr uint8_t lif_flags(uint32_t flow_key_type, uint32_t fwd_mode, uint32_t is_mux_pf)
{
    return static_cast<uint8_t>(lif_flow_key_type.packed(flow_key_type) | lif_fwd_mode.packed(fwd_mode) |
                                lif_is_mux_pf.packed(is_mux_pf));
}

// Carries as whole bytes what a LIF's record packs into its flags.
struct P4LifUpdate {
    uint16_t lif;
    uint8_t flow_key_type;
    uint8_t is_mux_pf;
    uint8_t fwd_mode;
    uint8_t unused;
};
static_assert(sizeof(P4LifUpdate) == 6);

// A port behind an internal VLAN of a mux switch.
struct P4VlanPort {
    uint16_t mux_vlan;
    uint16_t pf_lifs[2];
    uint16_t source_port;
    uint16_t unused;
    uint16_t rep_port;
    uint8_t flow_key_type;
    uint8_t flags;
    uint16_t status;
};
static_assert(offsetof(P4VlanPort, source_port) == 6);
static_assert(offsetof(P4VlanPort, rep_port) == 10);
static_assert(offsetof(P4VlanPort, flow_key_type) == 12);
static_assert(offsetof(P4VlanPort, status) == 14);
static_assert(sizeof(P4VlanPort) == 16);

struct P4VlanPortUpdate {
    uint16_t mux_vlan;
    uint8_t flow_key_type;
    uint8_t unused;
};
static_assert(sizeof(P4VlanPortUpdate) == 4);

// A row of the output port table.
struct P4OutputPort {
    uint16_t destination_port;
    uint16_t tag;
    uint16_t lif;
    uint16_t mux_vlan;
    uint16_t default_vlan;  // its low default_vlan_bits
    uint8_t lif_type;
    uint8_t unused[3];
    uint16_t status;
};
static_assert(offsetof(P4OutputPort, default_vlan) == 8);
static_assert(offsetof(P4OutputPort, lif_type) == 10);
static_assert(offsetof(P4OutputPort, status) == 14);
static_assert(sizeof(P4OutputPort) == 16);

inline constexpr unsigned default_vlan_bits = 12;

struct P4PortUpdate {
    uint16_t port;
    uint16_t default_vlan;
};
static_assert(sizeof(P4PortUpdate) == 4);

struct P4PortDelete {
    uint16_t port;
};
static_assert(sizeof(P4PortDelete) == 2);

struct P4ListRequest {
    uint16_t start_index;
};
static_assert(sizeof(P4ListRequest) == 2);

using P4LifPortList = P4ListResponse<P4LifPort>;
using P4VlanPortList = P4ListResponse<P4VlanPort>;
using P4OutputPortList = P4ListResponse<P4OutputPort>;
static_assert(offsetof(P4LifPortList, entries) == P4LifPortList::header_bytes);
static_assert(sizeof(P4LifPortList) == p4_list_response_bytes && P4LifPortList::max_entries == 85);
static_assert(sizeof(P4VlanPortList) == p4_list_response_bytes && P4VlanPortList::max_entries == 63);
static_assert(sizeof(P4OutputPortList) == p4_list_response_bytes && P4OutputPortList::max_entries == 63);
