// Answers of the thread load balancer about its statistics. All follow from the ports' traffic, what was injected, and
// the clock.
#include <algorithm>
#include <bit>
#include <numeric>

#include "host/host.h"

namespace host {

namespace {

constexpr uint64_t context_packet_rate = 2'000'000;  // that keeps a context fully busy
constexpr uint32_t most_percent = 100;
constexpr int32_t first_world = 1'000'100;
constexpr int32_t no_world = -1;
constexpr size_t queues_with_rss = 4;  // a port with so many has an engine that spreads half of what it receives

// What runs through one queue, or several.
struct Load {
    uint32_t context;
    uint64_t rate;  // packets a second
    uint64_t packets;
    uint64_t bytes;
};

struct PortLoads {
    std::vector<Load> rx, tx;
};

// The queues share a port's traffic evenly unless their own rates are known.
std::vector<Load> queue_loads(const Clock& clock, const Traffic& traffic, const std::vector<uint64_t>& rates,
                              const uint8_t* lcores, size_t queues)
{
    std::vector<Load> loads;
    for (size_t queue = 0; queue < queues && queue < max_queues; ++queue) {
        const uint64_t rate = rates.empty() ? traffic.packets / queues : rates[queue];
        const uint64_t packets = clock.grown(rate);
        loads.push_back({lcores[queue], rate, packets, packets * traffic.packet_bytes});
    }
    return loads;
}

// Traffic of an uplink, which names no queue, runs through its first one.
void add_injected(std::vector<Load>& queues, uint32_t queue, const InjectedTraffic& injected, const Clock& clock)
{
    const size_t position = queue == lb_no_queue ? 0 : queue;
    if (position >= queues.size())
        return;
    const uint64_t milliseconds = (clock.nanoseconds() - injected.since) / 1'000'000;
    Load& load = queues[position];
    load.rate += injected.traffic.packet_rate;
    load.packets += milliseconds * injected.traffic.packet_rate / 1000;
    load.bytes += milliseconds * injected.traffic.byte_rate / 1000;
}

// Of every port, in the order of the port list. What an uplink receives enters the switch, what any other port
// receives leaves it.
std::vector<PortLoads> port_loads(const Clock& clock, const Switch& owner)
{
    std::vector<PortLoads> loads;
    for (const Port& port : owner.ports)
        loads.push_back(
            {queue_loads(clock, port.rx, port.rx_queue_rates, port.entry.rx_queue_lcores, port.entry.num_rx_queues),
             queue_loads(clock, port.tx, port.tx_queue_rates, port.entry.tx_queue_lcores, port.entry.num_tx_queues)});
    const auto enters = [&](uint32_t port) { return is_a(owner.ports[port], ClientType::uplink); };
    for (const InjectedTraffic& injected : owner.balancer.injected) {
        const LBTraffic& traffic = injected.traffic;
        PortLoads& source = loads[traffic.source_port];
        PortLoads& destination = loads[traffic.destination_port];
        add_injected(enters(traffic.source_port) ? source.rx : source.tx, traffic.source_queue, injected, clock);
        add_injected(enters(traffic.destination_port) ? destination.tx : destination.rx, traffic.destination_queue,
                     injected, clock);
    }
    return loads;
}

Load sum(const std::vector<Load>& loads)
{
    Load total{};
    for (const Load& each : loads) {
        total.rate += each.rate;
        total.packets += each.packets;
        total.bytes += each.bytes;
    }
    return total;
}

uint32_t word(uint64_t value)
{
    return static_cast<uint32_t>(std::min<uint64_t>(value, UINT32_MAX));
}

// An answer's chunk while it fills.
struct Chunk {
    LBStatsChunk record{};
    size_t used = 0;

    // Puts an entry behind the ones that are there. False when it does not fit.
    template <class Head, class Item>
    bool add(const Head& head, const std::vector<Item>& items)
    {
        const ByteSpan parts[] = {bytes_of(head), std::as_bytes(std::span{items})};
        if (used + parts[0].size() + parts[1].size() > sizeof record.entries)
            return false;
        for (const ByteSpan part : parts) {
            std::ranges::copy(part, reinterpret_cast<std::byte*>(record.entries) + used);
            used += part.size();
        }
        ++record.count;
        return true;
    }
};

// As many items as fit into a chunk of their own.
constexpr size_t most_features = (sizeof(LBStatsChunk::entries) - sizeof(LBPortEntry)) / sizeof(LBFeatureItem);

LBItemGroup add_group(std::vector<LBFeatureItem>& items, const std::vector<Load>& loads)
{
    const size_t first = items.size();
    for (size_t i = 0; i < loads.size() && items.size() < most_features; ++i)
        items.push_back(
            {word(loads[i].rate), static_cast<uint32_t>(i), loads[i].context, 0, loads[i].packets, loads[i].bytes});
    return {static_cast<uint32_t>(first), static_cast<uint32_t>(items.size() - first)};
}

bool add_port(Chunk& chunk, const PortListEntry& port, const PortLoads& loads)
{
    const Load received = sum(loads.rx);
    const uint32_t context = loads.rx.empty() ? 0 : loads.rx[0].context;
    std::vector<Load> rss, filters;
    if (loads.rx.size() >= queues_with_rss)
        rss.push_back({context, received.rate / 2, received.packets / 2, received.bytes / 2});
    if (!loads.rx.empty())
        filters.push_back({context, received.rate, received.packets, received.bytes});

    std::vector<LBFeatureItem> items;
    LBPortEntry head{};
    head.type = static_cast<uint32_t>(LBEntryType::port);
    head.port = port.port;
    for (const Load& each : loads.rx)
        head.affinity_mask |= uint64_t{1} << each.context % 64;
    head.priority = port.client_type;
    head.vnic_rx_queues = add_group(items, loads.rx);
    head.offload_rss = add_group(items, rss);
    head.vnic_tx_queues = add_group(items, loads.tx);
    head.filters = add_group(items, filters);
    return chunk.add(head, items);
}

bool add_uplink(Chunk& chunk, const PortListEntry& port, const PortLoads& loads)
{
    std::vector<LBQueueItem> items;
    for (const Load& each : loads.rx)
        items.push_back({word(each.rate), each.context, each.packets, each.bytes});
    LBUplinkEntry head{};
    head.type = static_cast<uint32_t>(LBEntryType::uplink);
    head.port = port.port;
    head.affinity = port.port % 2;
    head.rx_queues = {0, static_cast<uint32_t>(items.size())};
    return chunk.add(head, items);
}

// A context runs the queues of all ports that are placed on it; one without queues has no world.
bool add_context(Chunk& chunk, uint32_t context, const std::vector<PortLoads>& ports, std::optional<uint32_t> cpu)
{
    std::vector<Load> placed;
    for (const PortLoads& port : ports)
        for (const auto& queues : {port.rx, port.tx})
            std::ranges::copy_if(queues, std::back_inserter(placed),
                                 [&](const Load& each) { return each.context == context; });
    const Load total = sum(placed);

    LBContextEntry head{};
    head.type = static_cast<uint32_t>(LBEntryType::context);
    head.context = context;
    head.world = placed.empty() ? no_world : first_world + static_cast<int32_t>(context);
    head.raw_cpu = cpu.value_or(std::min(word(total.rate * most_percent / context_packet_rate), most_percent));
    head.biased_cpu = std::min(head.raw_cpu + head.raw_cpu / 10, most_percent);
    head.packets = total.packets;
    head.bytes = total.bytes;
    for (const Load& each : placed)
        head.max_pb_load = std::max<uint32_t>(head.max_pb_load, word(each.rate));
    return chunk.add(head, std::vector<LBQueueItem>{});
}

// Adds what a range holds, as far as it fits; the index to go on with.
template <class Add>
uint32_t add_range(uint32_t first, uint32_t count, size_t there, Add add)
{
    const uint64_t end = std::min<uint64_t>(uint64_t{first} + count, there);
    for (uint32_t i = first; i < end; ++i)
        if (!add(i))
            return i;
    return lb_stats_finished;
}

// Contexts are counted from the switch's first lcore.
uint32_t lcore_of(const Switch& owner, uint32_t context)
{
    uint64_t mask = owner.entry->lcore_mask;
    for (; context > 0; --context)
        mask &= mask - 1;
    return static_cast<uint32_t>(std::countr_zero(mask));
}

uint32_t dump_stats(Host& host, uint32_t switch_number, uint32_t first_port, uint32_t port_count,
                    uint32_t first_context, uint32_t context_count, Output output)
{
    const Switch* owner = host.datapath_switch(switch_number);
    if (!owner)
        return not_found;

    const std::vector<PortLoads> loads = port_loads(host.clock, *owner);
    Chunk chunk;
    chunk.record.next_port = add_range(first_port, port_count, loads.size(), [&](uint32_t i) {
        const Port& port = owner->ports[i];
        return is_a(port, ClientType::uplink) ? add_uplink(chunk, port.entry, loads[i])
                                              : add_port(chunk, port.entry, loads[i]);
    });
    chunk.record.next_context = add_range(first_context, context_count, owner->entry->num_lcores, [&](uint32_t i) {
        const auto cpu = host.placement.load(lcore_of(*owner, i)).cpu;
        return add_context(chunk, i, loads, cpu);
    });
    return output.put(chunk.record);
}

const Answer answers[] = {{"Qdp_DumpLBStats", dump_stats}};

}  // namespace

}  // namespace host
