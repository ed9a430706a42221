// Operations and records of switches in mux mode, in which several ports share a PF and internal VLANs tell them apart.
#pragma once

#include <cstddef>
#include <cstdint>

struct MuxListRequest {
    uint32_t switch_number;
    uint32_t start_fc_port;
};
static_assert(sizeof(MuxListRequest) == 8);

inline constexpr size_t mux_list_response_bytes = 520;

// A page of a list: as many packed entries as its capacity holds.
template <class Entry>
struct MuxListResponse {
    static constexpr size_t header_bytes = 8;

    uint32_t count;
    uint32_t next_fc_port;
    Entry entries[(mux_list_response_bytes - header_bytes) / sizeof(Entry)];
};

struct MuxVlanEntry {
    uint16_t fc_port;
    uint16_t vlan;
    uint32_t port;
};
static_assert(offsetof(MuxVlanEntry, port) == 4);
static_assert(sizeof(MuxVlanEntry) == 8);

struct ShadowPortEntry {
    uint16_t fc_port;
    uint16_t mux_pf_port;
    uint16_t mux_vlan;
};
static_assert(sizeof(ShadowPortEntry) == 6);

using MuxVlanList = MuxListResponse<MuxVlanEntry>;
using ShadowPortList = MuxListResponse<ShadowPortEntry>;
static_assert(offsetof(ShadowPortList, entries) == ShadowPortList::header_bytes);
static_assert(sizeof(MuxVlanList) == mux_list_response_bytes);
static_assert(sizeof(ShadowPortList) == mux_list_response_bytes);

extern "C" {

uint32_t Qdp_Get_Mux_Mode(uint32_t switch_number, uint32_t* is_enabled);
uint32_t Qdp_List_Mux_VLAN_Info(const MuxListRequest* request, uint32_t request_length, MuxVlanList* list,
                                uint32_t* size);
uint32_t Qdp_List_Shadow_Ports(const MuxListRequest* request, uint32_t request_length, ShadowPortList* list,
                               uint32_t* size);

}  // extern "C"
