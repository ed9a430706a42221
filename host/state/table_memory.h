// The SmartNIC's table memory (HBM): which tables lie where, and what their entries hold.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/table_memory.h"

namespace host {

class Clock;

struct MemoryTable {
    uint32_t number;
    uint32_t entry_bytes;
    uint32_t num_entries;
    uint64_t address;
};

std::vector<MemoryTable> default_memory_tables();

// An entry of the IPFIX and of the connection-tracking table: of an offloaded connection, or zeros.
IpfixEntry ipfix_entry(const Clock& clock, uint32_t index);
ConntrackEntry conntrack_entry(uint32_t index);

// The bytes of any entry. Those of tables whose entries mean nothing here are made up, and always the same.
std::vector<std::byte> entry_of(const MemoryTable& table, const Clock& clock, uint32_t index);

}  // namespace host
