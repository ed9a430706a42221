// Answers about the SmartNIC's table memory, its mirrors, and the contexts of its connections.
#include <algorithm>
#include <optional>

#include "host/host.h"
#include "host/state/offloaded_flows.h"

namespace host {

namespace {

template <class Request>
std::optional<Request> request_in(ByteSpan bytes)
{
    Request request;
    if (bytes.size() != sizeof request)
        return std::nullopt;
    std::memcpy(&request, bytes.data(), sizeof request);
    return request;
}

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
    const auto range = request_in<TableRange>(request);
    const MemoryTable* table = table_of(host, range);
    if (!table || output.capacity < TableDump::header_bytes)
        return refused;

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
    output.reported(length);
    return success;
}

// Nothing is cached here: only a range that is not in the tables is refused.
uint32_t cache_invalidate(Host& host, ByteSpan request)
{
    const auto range = request_in<TableRange>(request);
    const MemoryTable* table = table_of(host, range);
    return table && range->count <= table->num_entries - range->first_index ? success : refused;
}

template <class Entry, class Wanted>
uint32_t put_mirrors(const std::vector<Entry>& mirrors, const Output& output, Wanted is_wanted)
{
    MirrorDump<Entry> dump{};
    for (const Entry& mirror : mirrors)
        if (is_wanted(mirror) && dump.count < dump.max_entries)
            dump.entries[dump.count++] = mirror;
    return output.put(dump);
}

uint32_t mirror_table_dump(Host& host, Output output)
{
    return put_mirrors(host.pipeline.mirror_sessions, output, [](const MirrorSession&) { return true; });
}

// The first word selects the mirrors of a port; the second one is not looked at.
uint32_t port_mirror_table_dump(Host& host, ByteSpan request, Output output)
{
    const auto port = request_in<PortMirrorRequest>(request);
    if (!port)
        return refused;
    return put_mirrors(host.pipeline.port_mirrors, output,
                       [&](const PortMirror& mirror) { return mirror.fc_port == port->first; });
}

FpoContextSide side_of(const ConnectionEnd& end)
{
    return {end.lowest_sequence, end.highest_sequence, end.highest_sequence - end.lowest_sequence, end.max_window,
            end.state,           end.window_scale};
}

FpoContext context_of(const Connection& connection)
{
    return {sizeof(FpoContext),
            0,
            connection.software_state != 0,
            0,
            side_of(connection.source),
            side_of(connection.destination)};
}

// A context is known by the switch, a flow of its SmartNIC, and the flow's connection.
uint32_t query_context(Host& host, ByteSpan request, Output output)
{
    const auto query = request_in<FpoContextRequest>(request);
    uint32_t size = 0;
    if (output.data && output.capacity >= sizeof size)
        std::memcpy(&size, output.data, sizeof size);
    if (!query || query->query_type != context_query_type || size != sizeof(FpoContext))
        return refused;

    const auto [switch_number, hardware_index, connection_number] = query->ids;
    const Flow* flow = host.flow_caches.offloaded(hardware_index);
    if (switch_number != host.smartnic.uplink_switch || !flow || !is_tracked(*flow) ||
        record_of(*flow) != connection_number)
        return not_found;
    return output.put(context_of(connection(host, connection_number)));
}

const Answer answers[] = {
    {"Qdp_P4_HWTable_List", table_list},
    {"Qdp_P4_HWTable_Dump", table_dump},
    {"Qdp_P4_Cache_Invalidate", cache_invalidate},
    {"Qdp_P4_MirrorTable_Dump", mirror_table_dump},
    {"Qdp_P4_PortMirrorTable_Dump", port_mirror_table_dump},
    {"Qdp_FPOQueryMgr", query_context},
};

}  // namespace

}  // namespace host
