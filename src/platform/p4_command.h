// The SmartNIC's command channel: its operation, and the framing of what it carries.
#pragma once

#include <cstddef>
#include <cstdint>

// Begins every request; the opcode's payload follows. A response has no header.
struct P4CommandHeader {
    uint16_t length;  // of the whole request
    uint16_t opcode;
};
static_assert(sizeof(P4CommandHeader) == 4);

enum class P4Opcode : uint16_t {
    host_pf_set = 0,
    host_pf_get = 1,
    lif_port_create = 2,
    lif_port_update = 3,
    lif_port_list = 4,
    vlan_port_create = 5,
    vlan_port_update = 6,
    vlan_port_list = 7,
    port_update = 8,
    port_delete = 9,
    port_list = 10,
    table_read = 11,
    rss_override_set = 12,
    rss_override_get = 13,
    log_level_set = 14,
    log_level_get = 15,
};

// Begins the payload of a table read; the key follows.
struct P4TableReadHeader {
    uint16_t table;
    uint16_t key_length;
};
static_assert(sizeof(P4TableReadHeader) == 4);

inline constexpr size_t p4_list_response_bytes = 1024;

// A page of a list: as many packed entries as its capacity holds.
template <class Entry>
struct P4ListResponse {
    static constexpr size_t header_bytes = 4;
    static constexpr size_t max_entries = (p4_list_response_bytes - header_bytes) / sizeof(Entry);

    uint16_t count;
    uint16_t next_index;
    Entry entries[max_entries];
    uint8_t unused[p4_list_response_bytes - header_bytes - max_entries * sizeof(Entry)];
};

extern "C" {

uint32_t Qdp_P4_Cmd(const void* request, uint32_t request_length, void* response, uint32_t* response_length);

}  // extern "C"
