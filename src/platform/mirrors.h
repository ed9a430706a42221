// Operations and records of the SmartNIC's mirror sessions and port mirrors.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr size_t mirror_dump_bytes = 2048;

struct MirrorSession {
    uint8_t is_offloaded : 1;
    uint8_t index : 3;
    uint8_t direction : 1;
    uint8_t : 3;
    uint8_t reserved[3];
    uint16_t destination_port;
    uint8_t reserved_too;
    uint8_t : 2;
    uint8_t is_tunnel : 1;
    uint8_t : 5;
    uint8_t reserved_three[12];
    int32_t tunnel_index;
    int32_t vni;
    uint16_t uplink_logical_ports[2];
};
static_assert(offsetof(MirrorSession, destination_port) == 4);
static_assert(offsetof(MirrorSession, tunnel_index) == 20);
static_assert(offsetof(MirrorSession, uplink_logical_ports) == 28);
static_assert(sizeof(MirrorSession) == 32);

// As many entries as the library's buffer holds, and what is left of it.
template <class Entry>
struct MirrorDump {
    static constexpr size_t header_bytes = 8;
    static constexpr size_t max_entries = (mirror_dump_bytes - header_bytes) / sizeof(Entry);

    uint32_t reserved;
    uint32_t count;
    Entry entries[max_entries];
    uint8_t unused[mirror_dump_bytes - header_bytes - max_entries * sizeof(Entry)];
};

using MirrorSessionDump = MirrorDump<MirrorSession>;
static_assert(MirrorSessionDump::max_entries == 63);
static_assert(offsetof(MirrorSessionDump, entries) == MirrorSessionDump::header_bytes);
static_assert(sizeof(MirrorSessionDump) == mirror_dump_bytes);

// Selects the port whose mirrors are dumped.
struct PortMirrorRequest {
    uint16_t first;
    uint16_t second;
};
static_assert(sizeof(PortMirrorRequest) == 4);

enum class MirrorType : uint8_t { other = 0, gre_only = 1, erspan2 = 2, erspan3 = 3 };

// An address: 16 bytes for IPv6, the first four of them for IPv4.
struct MirrorAddress {
    uint8_t bytes[16];
};

struct PortMirror {
    uint16_t is_offloaded : 1;
    uint16_t index : 3;
    uint16_t fc_port : 12;
    uint16_t reserved;
    int32_t gre_key;
    uint8_t type : 2;  // a MirrorType
    uint8_t is_ipv6 : 1;
    uint8_t : 2;
    uint8_t ns : 1;
    uint8_t : 2;
    uint8_t hardware_id;
    uint8_t reserved_too;
    uint8_t : 4;
    uint8_t class_of_service : 3;
    uint8_t : 1;
    uint8_t reserved_three[14];
    uint16_t snap_length;
    MirrorAddress source;
    MirrorAddress destination;
    uint16_t erspan_id;
    uint16_t reserved_four;
};
static_assert(offsetof(PortMirror, gre_key) == 4);
static_assert(offsetof(PortMirror, hardware_id) == 9);
static_assert(offsetof(PortMirror, snap_length) == 26);
static_assert(offsetof(PortMirror, source) == 28);
static_assert(offsetof(PortMirror, destination) == 44);
static_assert(offsetof(PortMirror, erspan_id) == 60);
static_assert(sizeof(PortMirror) == 64);

using PortMirrorDump = MirrorDump<PortMirror>;
static_assert(PortMirrorDump::max_entries == 31);
static_assert(offsetof(PortMirrorDump, entries) == PortMirrorDump::header_bytes);
static_assert(sizeof(PortMirrorDump) == mirror_dump_bytes);

extern "C" {

uint32_t Qdp_P4_MirrorTable_Dump(MirrorSessionDump* dump, uint32_t* size);
uint32_t Qdp_P4_PortMirrorTable_Dump(const PortMirrorRequest* request, uint32_t length, PortMirrorDump* dump,
                                     uint32_t* size);

}  // extern "C"
