// Operations and records of the SmartNIC's table memory (HBM): its inventory, raw dumps, and the entries that are
// decoded from them.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr uint32_t ipfix_table = 4;
inline constexpr uint32_t conntrack_table = 6;

// Which entries of a table to dump or to invalidate.
struct TableRange {
    uint32_t table;
    uint32_t first_index;
    uint32_t count;
};
static_assert(sizeof(TableRange) == 12);

inline constexpr size_t table_dump_bytes = 2048;

struct TableDump {
    static constexpr uint32_t header_bytes = 16;

    uint32_t length;  // in bytes, this header included
    uint32_t reserved;
    uint64_t address;  // of the first byte dumped
    uint8_t entries[table_dump_bytes - header_bytes];
};
static_assert(offsetof(TableDump, address) == 8);
static_assert(offsetof(TableDump, entries) == TableDump::header_bytes);
static_assert(sizeof(TableDump) == table_dump_bytes);

struct TableDescriptor {
    uint32_t table;
    uint32_t reserved;
    uint32_t table_bytes;
    uint32_t num_entries;
    uint64_t address;
};
static_assert(offsetof(TableDescriptor, num_entries) == 12);
static_assert(sizeof(TableDescriptor) == 24);

// As long as the library's buffer: what fits, and a rest that is no descriptor.
struct TableList {
    static constexpr size_t max_entries = 42;

    uint32_t reserved;
    uint32_t count;
    TableDescriptor entries[max_entries];
    uint64_t unused;
};
static_assert(offsetof(TableList, entries) == 8);
static_assert(sizeof(TableList) == 1024);

// The counters of one flow. In network byte order, unlike every other counter.
struct [[gnu::packed]] IpfixEntry {
    uint64_t packets;
    uint64_t bytes;
    uint8_t tcp_flags;
    uint8_t unread[15];
};
static_assert(offsetof(IpfixEntry, tcp_flags) == 16);
static_assert(sizeof(IpfixEntry) == 32);

// One direction of a tracked connection, in network byte order.
struct [[gnu::packed]] ConntrackDirection {
    uint32_t lowest_sequence;
    uint32_t highest_sequence;
    uint16_t max_window;
    uint8_t state_and_scale;  // the state in the high half, the window scale in the low one
};

struct [[gnu::packed]] ConntrackEntry {
    uint8_t unread;
    ConntrackDirection source;  // at an odd offset
    ConntrackDirection destination;
    uint8_t software_state;
    uint8_t log;
    uint8_t unread_too[7];
};
static_assert(offsetof(ConntrackEntry, source) == 1);
static_assert(offsetof(ConntrackEntry, source.max_window) == 9);
static_assert(offsetof(ConntrackEntry, source.state_and_scale) == 11);
static_assert(offsetof(ConntrackEntry, destination) == 12);
static_assert(offsetof(ConntrackEntry, destination.state_and_scale) == 22);
static_assert(offsetof(ConntrackEntry, log) == 24);
static_assert(sizeof(ConntrackEntry) == 32);

extern "C" {

uint32_t Qdp_P4_HWTable_List(TableList* list, uint32_t* size);
uint32_t Qdp_P4_HWTable_Dump(const TableRange* range, uint32_t length, TableDump* dump, uint32_t* size);
uint32_t Qdp_P4_Cache_Invalidate(const TableRange* range, uint32_t length);

}  // extern "C"
