// The SmartNIC's table memory. Entries are made when they are read: nothing of its hundreds of megabytes is kept.
#include "host/state/table_memory.h"

#include <bit>

#include "host/state/host.h"
#include "host/state/offloaded_flows.h"

namespace host {

namespace {

constexpr uint64_t first_address = 0x120000000;
constexpr uint64_t alignment = 0x200000;

template <class Value>
constexpr Value network_order(Value value)
{
    if constexpr (sizeof value == 2)
        return __builtin_bswap16(value);
    else if constexpr (sizeof value == 4)
        return __builtin_bswap32(value);
    else
        return __builtin_bswap64(value);
}

ConntrackDirection direction(const ConnectionEnd& end)
{
    return {network_order(end.lowest_sequence), network_order(end.highest_sequence), network_order(end.max_window),
            static_cast<uint8_t>(end.state << 4 | end.window_scale)};
}

IpfixEntry ipfix_entry(const FlowCounters& counters)
{
    IpfixEntry entry{};
    entry.packets = network_order(counters.packets);
    entry.bytes = network_order(counters.bytes);
    entry.tcp_flags = counters.tcp_flags;
    return entry;
}

ConntrackEntry conntrack_entry(const Connection& connection)
{
    ConntrackEntry entry{};
    entry.source = direction(connection.source);
    entry.destination = direction(connection.destination);
    entry.software_state = connection.software_state;
    entry.log = connection.is_logged;
    return entry;
}

// A well-mixed word that follows from a number.
uint64_t mixed(uint64_t number)
{
    number = (number ^ (number >> 30)) * 0xbf58476d1ce4e5b9;
    number = (number ^ (number >> 27)) * 0x94d049bb133111eb;
    return number ^ (number >> 31);
}

std::vector<std::byte> made_up_entry(const MemoryTable& table, uint32_t index)
{
    std::vector<std::byte> bytes(table.entry_bytes);
    for (size_t i = 0; i < bytes.size(); ++i) {
        const uint64_t word = mixed(uint64_t{table.number + 1} << 48 | uint64_t{index} << 8 | i / sizeof word);
        bytes[i] = static_cast<std::byte>(word >> i % sizeof word * 8);
    }
    return bytes;
}

}  // namespace

uint64_t free_table_memory(const std::vector<MemoryTable>& tables)
{
    if (tables.empty())
        return first_address;
    const MemoryTable& last = tables.back();
    const uint64_t end = last.address + uint64_t{last.entry_bytes} * last.num_entries;
    return (end + alignment - 1) / alignment * alignment;
}

std::vector<std::byte> entry_of(const Host& host, const MemoryTable& table, uint32_t index)
{
    if (const auto described = table.contents.find(index); described != table.contents.end())
        return described->second;
    if (table.number == ipfix_table)
        return value_of(bytes_of(ipfix_entry(flow_counters(host, index))));
    if (table.number == conntrack_table)
        return value_of(bytes_of(conntrack_entry(connection(host, index))));
    return made_up_entry(table, index);
}

}  // namespace host
