// Answers of the thread load balancer about its statistics. All follow from the ports' traffic, what was injected, and
// the clock.
#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <optional>

#include "host/answers/answer.h"

namespace host {

namespace {

constexpr uint64_t context_packet_rate = 2'000'000;  // that keeps a context fully busy
constexpr uint32_t max_percent = 100;
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
        const uint64_t packets = clock.counter_value(rate);
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

// Injected traffic by the position of its source or destination port.
using InjectedByPort = std::multimap<uint32_t, const InjectedTraffic*>;

InjectedByPort by_port(const std::vector<InjectedTraffic>& injected, uint32_t LBTraffic::*port)
{
    InjectedByPort result;
    for (const InjectedTraffic& each : injected)
        result.emplace(each.traffic.*port, &each);
    return result;
}

// The loads of a switch's ports at one time. What an uplink receives enters the switch, what any other port receives
// leaves it.
class SwitchLoads {
public:
    SwitchLoads(const Clock& clock, const Switch& owner)
        : clock_{clock}, owner_{owner}, from_{by_port(owner.lb.injected, &LBTraffic::source_port)},
          to_{by_port(owner.lb.injected, &LBTraffic::destination_port)}
    {
    }

    size_t num_ports() const { return owner_.ports.size(); }
    const Port& port(uint32_t position) const { return owner_.ports[position]; }

    PortLoads of(uint32_t position) const
    {
        const Port& port = owner_.ports[position];
        PortLoads loads{
            queue_loads(clock_, port.rx, port.rx_queue_rates, port.entry.rx_queue_lcores, port.entry.num_rx_queues),
            queue_loads(clock_, port.tx, port.tx_queue_rates, port.entry.tx_queue_lcores, port.entry.num_tx_queues)};
        const bool enters = is_a(port, ClientType::uplink);
        for (auto [each, end] = from_.equal_range(position); each != end; ++each)
            add_injected(enters ? loads.rx : loads.tx, each->second->traffic.source_queue, *each->second, clock_);
        for (auto [each, end] = to_.equal_range(position); each != end; ++each)
            add_injected(enters ? loads.tx : loads.rx, each->second->traffic.destination_queue, *each->second, clock_);
        return loads;
    }

private:
    const Clock& clock_;
    const Switch& owner_;
    InjectedByPort from_, to_;
};

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

    bool fits(size_t size) const { return used + size <= sizeof record.entries; }

    // Puts an entry behind the ones that are there. False when it does not fit.
    template <class Head, class Item>
    bool add(const Head& head, const std::vector<Item>& items)
    {
        const ByteSpan parts[] = {bytes_of(head), std::as_bytes(std::span{items})};
        if (!fits(parts[0].size() + parts[1].size()))
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
constexpr size_t max_features = (sizeof(LBStatsChunk::entries) - sizeof(LBPortEntry)) / sizeof(LBFeatureItem);

LBItemGroup add_group(std::vector<LBFeatureItem>& items, const std::vector<Load>& loads)
{
    const size_t first = items.size();
    for (size_t i = 0; i < loads.size() && items.size() < max_features; ++i)
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

// What runs on a context: the queues of all ports that are placed on it.
struct ContextLoad {
    size_t num_queues = 0;
    uint64_t rate = 0, packets = 0, bytes = 0;
    uint64_t max_rate = 0;
};

using ContextLoads = std::array<ContextLoad, max_lb_contexts>;

ContextLoads context_loads(const SwitchLoads& loads)
{
    ContextLoads result;
    for (uint32_t i = 0; i < loads.num_ports(); ++i) {
        const PortLoads port = loads.of(i);
        for (const std::vector<Load>* queues : {&port.rx, &port.tx})
            for (const Load& queue : *queues) {
                if (queue.context >= result.size())
                    continue;
                ContextLoad& context = result[queue.context];
                ++context.num_queues;
                context.rate += queue.rate;
                context.packets += queue.packets;
                context.bytes += queue.bytes;
                context.max_rate = std::max(context.max_rate, queue.rate);
            }
    }
    return result;
}

// A context without queues has no world.
bool add_context(Chunk& chunk, uint32_t context, const ContextLoad& load, std::optional<uint32_t> cpu)
{
    LBContextEntry head{};
    head.type = static_cast<uint32_t>(LBEntryType::context);
    head.context = context;
    head.world = load.num_queues == 0 ? no_world : first_world + static_cast<int32_t>(context);
    head.raw_cpu = cpu.value_or(std::min(word(load.rate * max_percent / context_packet_rate), max_percent));
    head.biased_cpu = std::min(head.raw_cpu + head.raw_cpu / 10, max_percent);
    head.packets = load.packets;
    head.bytes = load.bytes;
    head.max_pb_load = word(load.max_rate);
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
        return status_not_found;

    const SwitchLoads loads{host.clock, *owner};
    Chunk chunk;
    chunk.record.next_port = add_range(first_port, port_count, loads.num_ports(), [&](uint32_t i) {
        const PortListEntry& port = loads.port(i).entry;
        return is_a(loads.port(i), ClientType::uplink) ? add_uplink(chunk, port, loads.of(i))
                                                       : add_port(chunk, port, loads.of(i));
    });
    std::optional<ContextLoads> contexts;  // of all ports, so only where a context fits into the chunk
    chunk.record.next_context = add_range(first_context, context_count, owner->entry->num_lcores, [&](uint32_t i) {
        if (!chunk.fits(sizeof(LBContextEntry)))
            return false;
        if (!contexts)
            contexts = context_loads(loads);
        return add_context(chunk, i, contexts->at(i), host.placement.load(lcore_of(*owner, i)).cpu);
    });
    return output.put(chunk.record);
}

const Answer lb_stats_answers[] = {{"Qdp_DumpLBStats", dump_stats}};

}  // namespace

}  // namespace host
