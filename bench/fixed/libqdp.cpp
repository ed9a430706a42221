// The datapath control library with fixed answers: what the measured methods ask for lies ready and is copied, all else
// is refused. Its calls cost next to nothing, so that what is measured is the binding.
#include <algorithm>
#include <cstring>
#include <iterator>

#include "bench/fixed/marks.h"
#include "platform/p4_tables.h"
#include "platform/qdp_control.h"

namespace {

PortCounters fast_path, slow_path;
uint8_t flow_info[p4_table_shape(P4Table::flow_info).entry_bytes];
PortList port_list;
SwitchMacTable mac_table;
FlowTableResponse flow_page;

constexpr uint32_t balanced_ports = 48;
constexpr uint32_t ports_a_chunk = 16;
constexpr uint32_t balanced_contexts = 8;
LBStatsChunk chunks[balanced_ports / ports_a_chunk];
size_t chunk_lengths[std::size(chunks)];

// Numbers as a busy host has them: many digits, some small, some zero.
uint64_t number(uint64_t seed)
{
    return seed % 5 == 0 ? seed : seed * 0x9e3779b97f4a7c15 >> (seed % 7 * 8 + 2);
}

template <class Record>
void scatter(Record& record, uint64_t seed)
{
    auto* bytes = reinterpret_cast<uint8_t*>(&record);
    for (size_t i = 0; i < sizeof record; ++i)
        bytes[i] = static_cast<uint8_t>(number(seed + i) >> 3);
}

void make_counters(PortCounters& counters, uint64_t seed)
{
    uint64_t values[sizeof counters / sizeof(uint64_t)];
    for (uint64_t& value : values)
        value = number(seed++);
    std::memcpy(&counters, values, sizeof counters);
}

void make_port(PortListEntry& entry, uint32_t i)
{
    entry = {};
    entry.port = i;
    entry.qdp_port = 0x04000000 + i;
    entry.num_tx_queues = static_cast<uint8_t>(1 + i % 4);
    entry.num_rx_queues = static_cast<uint8_t>(1 + i % 4);
    for (size_t b = 0; b < mac_bytes; ++b)
        entry.mac[b] = static_cast<uint8_t>(number(i + b));
    entry.num_macs = static_cast<uint16_t>(i % 3);
    entry.client_type = 1 + i % 4;
    entry.representor_type = static_cast<uint16_t>(i % 16);
    entry.flags = i % 8 == 0 ? port_flag_pass_through : 0;
    for (uint32_t q = 0; q < 4; ++q) {
        entry.tx_queue_lcores[q] = static_cast<uint8_t>((i + q) % 64);
        entry.rx_queue_lcores[q] = static_cast<uint8_t>((i + q + 7) % 64);
    }
}

void make_flow(FlowEntry& flow, uint32_t i, uint16_t length)
{
    flow.source_has_context = i % 2;
    flow.source_context = 0x430000001000 + i;
    flow.hardware_hits = number(i);
    flow.hardware_bytes = number(i + 100);
    scatter(flow.key, 7 + i);
    flow.key.flags_and_vlan = static_cast<uint8_t>(0x50 | flow_key_is_l3 | (i % 4 != 0 ? flow_key_is_l4 : 0) |
                                                   (i % 3 == 0 ? flow_key_is_ipv6 : 0));
    flow.key.protocol = i % 5 == 0 ? protocol_icmp : protocol_tcp;
    for (size_t b = 0; b < sizeof flow.area.software_hits; ++b)
        flow.area.software_hits[b] = static_cast<uint8_t>(b < 3 ? i + b : 0);
    flow.area.software_bytes = number(i + 200);
    flow.area.generation = 100 + i;
    flow.area.num_invalidations = i % 3;
    flow.area.length = length;
    flow.area.offload_flags = i % 2 ? offload_is_offloaded | offload_has_indexes : 0;
    flow.area.hardware_index = i;
    flow.area.software_index = 1000 + i;
}

void make_flow_page()
{
    constexpr uint32_t flows = 16;
    constexpr uint16_t length = sizeof(FlowActionArea) + sizeof(FlowActionGroup) + sizeof(FlowActionTail);
    size_t offset = offsetof(FlowTableResponse, entries);
    auto* page = reinterpret_cast<uint8_t*>(&flow_page);
    for (uint32_t i = 0; i < flows; ++i) {
        FlowEntry flow{};
        make_flow(flow, i, length);
        FlowActionGroup group{};
        group.bitmap = action_bit(FlowAction::firewall_source) | action_bit(FlowAction::destination_port) |
                       action_bit(FlowAction::vlan_insert) | action_bit(FlowAction::mirror_ingress) |
                       (i % 2 ? action_bit(FlowAction::routing) : 0) |
                       (i % 4 == 1 ? action_bit(FlowAction::geneve_encap) : 0);
        group.destination_port = static_cast<uint16_t>(i);
        group.vlan = static_cast<uint16_t>(100 + i);
        group.vni = 70000 + i;
        FlowActionTail tail{};
        tail.geneve_vni[1] = static_cast<uint8_t>(i);
        tail.num_instances = 2;
        tail.instances[0] = static_cast<uint8_t>(i);

        const size_t area = offset + offsetof(FlowEntry, area);
        std::memcpy(page + offset, &flow, sizeof flow);
        std::memcpy(page + area + sizeof(FlowActionArea), &group, sizeof group);
        std::memcpy(page + area + length - sizeof tail, &tail, sizeof tail);
        offset = area + length;
    }
    flow_page.next_start_index = flows;
    flow_page.count = flows;
    flow_page.valid_bytes = sizeof flow_page;
    flow_page.group_offset = sizeof(FlowActionArea);
}

template <class Part>
void append(uint8_t*& end, const Part& part)
{
    std::memcpy(end, &part, sizeof part);
    end += sizeof part;
}

void append_port(uint8_t*& end, uint32_t port)
{
    LBPortEntry entry{};
    entry.port = port;
    entry.affinity_mask = number(port);
    entry.vnic_rx_queues = {0, 2};
    entry.vnic_tx_queues = {2, 1};
    entry.filters = {3, 1};
    append(end, entry);
    for (uint32_t item = 0; item < 4; ++item)
        append(end, LBFeatureItem{item * 10, item, port % 8, 0, number(port + item), number(port + item + 50)});
}

void append_contexts_and_uplink(uint8_t*& end)
{
    append(end, LBUplinkEntry{static_cast<uint32_t>(LBEntryType::uplink), 3, 1, 0, {0, 4}});
    for (uint32_t queue = 0; queue < 4; ++queue)
        append(end, LBQueueItem{queue, queue, number(queue + 9), number(queue + 90)});
    for (uint32_t i = 0; i < balanced_contexts; ++i)
        append(end, LBContextEntry{static_cast<uint32_t>(LBEntryType::context), i, i == 7 ? -1 : 5000 + int32_t(i), i,
                                   i, number(i + 3), number(i + 30), i * 3});
}

void make_chunks()
{
    uint32_t port = 0;
    for (size_t i = 0; i < std::size(chunks); ++i) {
        LBStatsChunk& chunk = chunks[i];
        uint8_t* end = chunk.entries;
        for (uint32_t k = 0; k < ports_a_chunk; ++k)
            append_port(end, port++);
        chunk.count = ports_a_chunk;
        if (i == 0) {
            append_contexts_and_uplink(end);
            chunk.count += balanced_contexts + 1;
        }
        chunk.next_port = port < balanced_ports ? port : lb_stats_finished;
        chunk.next_context = lb_stats_finished;
        chunk_lengths[i] = static_cast<size_t>(end - reinterpret_cast<uint8_t*>(&chunk));
    }
}

uint32_t copy(void* out, const void* record, size_t size)
{
    std::memcpy(out, record, size);
    return 0;
}

[[gnu::constructor]] void make_answers()
{
    make_counters(fast_path, 3);
    make_counters(slow_path, 30);
    scatter(flow_info, 1);
    make_flow_page();
    make_chunks();
    // Of the lists only as much as is asked for: the library should not be slow to load.
    Fixed_Set_Ports(16);
}

}  // namespace

void Fixed_Mark()
{
    static volatile uint32_t marks = 0;
    marks = marks + 1;
}

void Fixed_Set_Ports(uint32_t count)
{
    port_list.count = std::min(count, max_ports);
    for (uint32_t i = 0; i < port_list.count; ++i)
        make_port(port_list.entries[i], i);
}

void Fixed_Set_Macs(uint32_t count)
{
    mac_table.header = {std::min(count, max_switch_macs), 0, max_switch_macs, 0};
    for (uint32_t i = 0; i < mac_table.header.count; ++i) {
        MacEntry& entry = mac_table.entries[i];
        entry = {{}, static_cast<uint16_t>(i % 4095), 0x04000000 + i, 0, i % 300};
        std::memcpy(entry.mac, &i, sizeof i);
    }
}

uint32_t Qdp_Get_Port_Stats(uint32_t, uint32_t, PortCounters* counters, uint32_t*)
{
    return copy(counters, &fast_path, sizeof fast_path);
}

uint32_t Qdp_Get_Port_Stats_Slowpath(uint32_t, uint32_t, PortCounters* counters, uint32_t*)
{
    return copy(counters, &slow_path, sizeof slow_path);
}

uint32_t Qdp_P4_Cmd(const void*, uint32_t, void* response, uint32_t* response_length)
{
    if (*response_length != sizeof flow_info)
        return fixed_refusal;
    return copy(response, flow_info, sizeof flow_info);
}

uint32_t Qdp_Get_Port_List(uint32_t, PortList* list, uint32_t*)
{
    return copy(list, &port_list, offsetof(PortList, entries) + port_list.count * sizeof(PortListEntry));
}

uint32_t Qdp_Dump_Switch_MAC_Table(uint32_t, SwitchMacTable* table, uint32_t*)
{
    return copy(table, &mac_table, sizeof(MacTableHeader) + mac_table.header.count * sizeof(MacEntry));
}

uint32_t Qdp_Dump_Flow_Table(const FlowTableRequest*, FlowTableResponse* response, uint32_t*)
{
    return copy(response, &flow_page, sizeof flow_page);
}

uint32_t Qdp_DumpLBStats(uint32_t, uint32_t first_port, uint32_t, uint32_t, uint32_t, LBStatsChunk* chunk, uint32_t)
{
    const size_t i = first_port / ports_a_chunk;
    if (i >= std::size(chunks))
        return fixed_refusal;
    return copy(chunk, &chunks[i], chunk_lengths[i]);
}
