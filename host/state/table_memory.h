// The SmartNIC's table memory (HBM): which tables lie where, and what their entries hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "platform/table_memory.h"

namespace host {

struct Host;

struct MemoryTable {
    uint32_t number;
    uint32_t entry_bytes;
    uint32_t num_entries;
    uint64_t address;
    std::map<uint32_t, std::vector<std::byte>> contents = {};  // of entries that are not made up
};

// Where a table behind these may lie.
uint64_t free_table_memory(const std::vector<MemoryTable>& tables);

// The bytes of an entry: of the records of an offloaded flow, or zeros where none has such records. Those of tables
// whose entries mean nothing here are made up, and always the same.
std::vector<std::byte> entry_of(const Host& host, const MemoryTable& table, uint32_t index);

}  // namespace host
