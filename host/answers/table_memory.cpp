// Answers about the SmartNIC's table memory.
#include <algorithm>
#include <optional>

#include "host/answers/answer.h"

namespace host {

namespace {

uint32_t table_list(Host& host, Output output)
{
    TableList list{};
    for (const MemoryTable& table : host.pipeline.tables)
        if (list.count < TableList::max_entries)
            list.entries[list.count++] = {table.number, 0, table.entry_bytes * table.num_entries, table.num_entries,
                                          table.address};
    return output.put(list);
}

// The table that a request is about, or null; a request begins at an entry of it.
const MemoryTable* table_of(const Host& host, const std::optional<TableRange>& range)
{
    if (!range)
        return nullptr;
    const auto found = std::ranges::find(host.pipeline.tables, range->table, &MemoryTable::number);
    return found == host.pipeline.tables.end() || range->first_index >= found->num_entries ? nullptr : &*found;
}

// As many of the entries as there are and as fit whole.
uint32_t table_dump(Host& host, ByteSpan request, Output output)
{
    const auto range = record_in<TableRange>(request);
    const MemoryTable* table = table_of(host, range);
    if (!table || output.capacity < TableDump::header_bytes)
        return status_refused;

    const size_t fit = (output.capacity - TableDump::header_bytes) / table->entry_bytes;
    const size_t count = std::min<size_t>({range->count, table->num_entries - range->first_index, fit});
    Value data;
    for (uint32_t i = 0; i < count; ++i) {
        const Value entry = entry_of(host, *table, range->first_index + i);
        data.insert(data.end(), entry.begin(), entry.end());
    }

    const auto length = static_cast<uint32_t>(TableDump::header_bytes + data.size());
    const uint64_t address = table->address + uint64_t{range->first_index} * table->entry_bytes;
    output.write(offsetof(TableDump, length), bytes_of(length));
    output.write(offsetof(TableDump, address), bytes_of(address));
    output.write(offsetof(TableDump, entries), data);
    output.set_size(length);
    return status_success;
}

// Nothing is cached here: only a range that is not in the tables is refused.
uint32_t cache_invalidate(Host& host, ByteSpan request)
{
    const auto range = record_in<TableRange>(request);
    const MemoryTable* table = table_of(host, range);
    return table && range->count <= table->num_entries - range->first_index ? status_success : status_refused;
}

const Answer table_memory_answers[] = {
    {"Qdp_P4_HWTable_List", table_list},
    {"Qdp_P4_HWTable_Dump", table_dump},
    {"Qdp_P4_Cache_Invalidate", cache_invalidate},
};

}  // namespace

}  // namespace host
