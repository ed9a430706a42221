// The SmartNIC's table memory (HBM): which tables lie where, and what their entries hold.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/table_memory.h"

namespace host {

struct Host;

struct MemoryTable {
    uint32_t number;
    uint32_t entry_bytes;
    uint32_t num_entries;
    uint64_t address;
};

std::vector<MemoryTable> default_memory_tables();

// The bytes of an entry: of the records of an offloaded flow, or zeros where none has such records. Those of tables
// whose entries mean nothing here are made up, and always the same.
std::vector<std::byte> entry_of(const Host& host, const MemoryTable& table, uint32_t index);

}  // namespace host
