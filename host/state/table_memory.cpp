// The SmartNIC's table memory. Entries are made when they are read: nothing of its hundreds of megabytes is kept.
#include "host/state/table_memory.h"

#include <bit>

#include "host/host.h"

namespace host {

namespace {

constexpr uint64_t first_address = 0x120000000;
constexpr uint64_t alignment = 0x200000;

// The connections that are offloaded. Every fourth of them is no TCP connection.
constexpr uint32_t num_connections = 64;

constexpr bool is_tcp(uint32_t connection)
{
    return connection % 4 != 3;
}

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

constexpr uint8_t established = 4;
constexpr uint8_t syn_and_ack = 0x12;

ConntrackDirection direction(uint32_t first_sequence, uint16_t max_window, uint8_t window_scale)
{
    return {network_order(first_sequence), network_order(first_sequence + max_window), network_order(max_window),
            static_cast<uint8_t>(established << 4 | window_scale)};
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

std::vector<MemoryTable> default_memory_tables()
{
    std::vector<MemoryTable> tables = {
        {0, 16, 1024, 0},
        {1, 64, 4096, 0},
        {2, 64, 1 << 21, 0},
        {3, 128, 65536, 0},
        {ipfix_table, 32, 1 << 20, 0},
        {5, 64, 1 << 20, 0},
        {conntrack_table, 32, 1 << 20, 0},
        {7, 256, 2048, 0},
    };
    uint64_t address = first_address;
    for (MemoryTable& table : tables) {
        table.address = address;
        const uint64_t end = address + uint64_t{table.entry_bytes} * table.num_entries;
        address = (end + alignment - 1) / alignment * alignment;
    }
    return tables;
}

IpfixEntry ipfix_entry(const Clock& clock, uint32_t index)
{
    if (index >= num_connections)
        return {};
    const uint64_t packets = clock.grown(1) * (10 + 3 * index);
    const uint64_t packet_bytes = 100 + 8 * index;
    IpfixEntry entry{};
    entry.packets = network_order(packets);
    entry.bytes = network_order(packets * packet_bytes);
    entry.tcp_flags = is_tcp(index) ? syn_and_ack : 0;
    return entry;
}

ConntrackEntry conntrack_entry(uint32_t index)
{
    if (index >= num_connections || !is_tcp(index))
        return {};
    ConntrackEntry entry{};
    entry.source = direction(0x10000000 + 0x01010101 * index, 0xff00, 7);
    entry.destination = direction(0xf0000000 + 0x00010001 * index, 0x7210, 9);
    entry.software_state = established;
    entry.log = index % 2;
    return entry;
}

std::vector<std::byte> entry_of(const MemoryTable& table, const Clock& clock, uint32_t index)
{
    if (table.number == ipfix_table)
        return value_of(bytes_of(ipfix_entry(clock, index)));
    if (table.number == conntrack_table)
        return value_of(bytes_of(conntrack_entry(index)));
    return made_up_entry(table, index);
}

}  // namespace host
