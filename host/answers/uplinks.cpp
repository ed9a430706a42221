// Answers about uplinks: their counters, which follow from a port's traffic and the clock, their filters and queues.
#include <algorithm>
#include <cstdio>

#include "host/answers/answer.h"
#include "host/state/property.h"
#include "host/state/traffic.h"
#include "platform/lb.h"

namespace host {

namespace {

// Of all packets, 1 in so many.
constexpr uint64_t miss_error_share = 20'000;

// --- Counters ---

void count_rx(UplinkCounters& counters, const Clock& clock, const Traffic& traffic, uint64_t queues)
{
    counters.rx_packets = clock.counter_value(traffic.packets) / queues;
    counters.rx_bytes = counters.rx_packets * traffic.packet_bytes;
    counters.rx_multicast_packets = counters.rx_packets / multicast_share;
    counters.rx_broadcast_packets = counters.rx_packets / broadcast_share;
    counters.rx_drops = traffic.drops ? clock.counter_value(*traffic.drops) / queues : counters.rx_packets / drop_share;
    counters.rx_miss_errors =
        traffic.errors ? clock.counter_value(*traffic.errors) / queues : counters.rx_packets / miss_error_share;
    counters.rx_errors = counters.rx_miss_errors;
}

void count_tx(UplinkCounters& counters, const Clock& clock, const Traffic& traffic, uint64_t queues)
{
    counters.tx_packets = clock.counter_value(traffic.packets) / queues;
    counters.tx_bytes = counters.tx_packets * traffic.packet_bytes;
    counters.tx_multicast_packets = counters.tx_packets / multicast_share;
    counters.tx_broadcast_packets = counters.tx_packets / broadcast_share;
    counters.tx_drops = traffic.drops ? clock.counter_value(*traffic.drops) / queues : counters.tx_packets / drop_share;
    counters.tx_errors = traffic.errors ? clock.counter_value(*traffic.errors) / queues : 0;
}

uint32_t get_uplink_stats(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    const Port* uplink = host.uplink(switch_number, port);
    if (!uplink)
        return status_refused;
    UplinkCounters counters{};
    count_rx(counters, host.clock, uplink->rx, 1);
    count_tx(counters, host.clock, uplink->tx, 1);
    return output.put(counters);
}

// An uplink's queues share its traffic evenly. Direction 1 is transmit.
uint32_t get_uplink_queue_stats(Host& host, uint32_t switch_number, uint32_t port, uint32_t queue, uint32_t direction,
                                Output output)
{
    const Port* uplink = host.uplink(switch_number, port);
    if (!uplink || direction > 1)
        return status_refused;
    const uint32_t queues = direction ? uplink->entry.num_tx_queues : uplink->entry.num_rx_queues;
    if (queue >= queues)
        return status_refused;
    UplinkCounters counters{};
    if (direction)
        count_tx(counters, host.clock, uplink->tx, queues);
    else
        count_rx(counters, host.clock, uplink->rx, queues);
    return output.put(counters);
}

// A line a counter. The lines keep their width while the counters grow, so that a text fits the length that was asked
// for before.
std::string private_stats(const Host& host, const Port& uplink)
{
    std::string text;
    for (const PrivateCounter& counter : uplink.private_counters) {
        char line[64];
        std::snprintf(line, sizeof line, "%-24s %20lu\n", counter.name.c_str(),
                      host.clock.counter_value(counter.per_second));
        text += line;
    }
    return text;
}

// The length has room for the text's NUL; an uplink without a text has the length 0.
uint32_t get_private_stats_length(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    const Port* uplink = host.uplink(switch_number, port);
    if (!uplink)
        return status_refused;
    const std::string text = private_stats(host, *uplink);
    return output.put(static_cast<uint32_t>(text.empty() ? 0 : text.size() + 1));
}

uint32_t get_private_stats(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    const Port* uplink = host.uplink(switch_number, port);
    if (!uplink)
        return status_refused;
    const std::string text = private_stats(host, *uplink);
    return output.put(ByteSpan{value_of(std::string_view{text})});
}

// --- Filters ---

template <class Part>
void append(Value& record, const Part& part)
{
    const ByteSpan bytes = bytes_of(part);
    record.insert(record.end(), bytes.begin(), bytes.end());
}

ByteSpan key_of(const ReceiveFilter& filter)
{
    if (is_tunnel(filter.type))
        return bytes_of(filter.tunnel);
    const size_t end = filter.type == NetQFilterType::mac ? offsetof(NetQMacKey, vlan) : sizeof filter.mac;
    return bytes_of(filter.mac).first(end);
}

// The queues of a filter as its vNIC sees them, or those that are an uplink's own.
std::vector<NetQQueue> queues_seen(Host& host, uint32_t switch_number, const Port& vnic, const ReceiveFilter& filter,
                                   const Port& viewer)
{
    std::vector<NetQQueue> queues;
    for (const auto& each : filter.queues)
        if (&viewer == &vnic || viewer.entry.port == each.uplink) {
            const Port* uplink = host.port(switch_number, each.uplink);
            queues.push_back({uplink->entry.qdp_port, each.queue, each.filter_id});
        }
    return queues;
}

void append_filter(Value& filters, const ReceiveFilter& filter, const std::vector<NetQQueue>& queues)
{
    const ByteSpan key = key_of(filter);
    append(filters, NetQFilter{static_cast<uint16_t>(filter.type), 0, static_cast<uint16_t>(key.size()),
                               static_cast<uint16_t>(queues.size())});
    filters.insert(filters.end(), key.begin(), key.end());
    for (const NetQQueue& queue : queues)
        append(filters, queue);
}

// A vNIC's own filters; an uplink's are all that steer to it.
uint32_t get_netq_info(Host& host, uint32_t switch_number, uint32_t port_number, Output output)
{
    const Port* port = host.port(switch_number, port_number);
    if (!port)
        return status_refused;

    Value filters;
    uint16_t count = 0;
    bool is_flow_filter = false;
    const auto add = [&](const Port& vnic) {
        for (const ReceiveFilter& filter : vnic.filters)
            if (const auto queues = queues_seen(host, switch_number, vnic, filter, *port); !queues.empty()) {
                append_filter(filters, filter, queues);
                is_flow_filter |= is_tunnel(filter.type);
                ++count;
            }
    };
    if (is_a(*port, ClientType::uplink))
        std::ranges::for_each(host.datapath_switch(switch_number)->ports, add);
    else
        add(*port);

    Value record;
    append(record, switch_number);
    append(record, port->entry.qdp_port);
    append(record, uint32_t{0});
    append(record, count);
    append(record, static_cast<uint8_t>(is_a(*port, ClientType::uplink)));
    append(record, static_cast<uint8_t>(is_flow_filter));
    record.insert(record.end(), filters.begin(), filters.end());
    return output.put(ByteSpan{record});
}

// Moves all filters of a vNIC to one queue of the uplinks that they steer to.
uint32_t migrate_netq_filter(Host& host, uint32_t switch_number, uint32_t port, uint32_t queue)
{
    if (host.lb_is_automatic)
        return status_lb_is_automatic;

    Port* vnic = host.port(switch_number, port);
    if (!vnic)
        return status_refused;
    std::vector<ReceiveFilter::Queue*> moved;
    for (ReceiveFilter& filter : vnic->filters)
        for (auto& each : filter.queues) {
            if (queue >= host.port(switch_number, each.uplink)->entry.num_rx_queues)
                return status_refused;
            moved.push_back(&each);
        }
    for (ReceiveFilter::Queue* each : moved)
        each->queue = queue;
    return moved.empty() ? status_refused : status_success;
}

// --- Filter classes ---

// What the switch's host property says counts here too.
uint32_t get_filter_types(Host& host, std::string_view portset_name, Output output)
{
    const Switch* owner = host.switch_by_portset(portset_name);
    if (!owner)
        return status_refused;
    const auto setting = property<FilterTypesSetting>(*owner, filter_types_property);
    return output.put(setting ? uint16_t{setting->mask} : owner->setting.filter_types);
}

const Answer uplink_answers[] = {
    {"Qdp_Get_Uplink_Stats", get_uplink_stats},
    {"Qdp_Get_Uplink_Queue_Stats", get_uplink_queue_stats},
    {"Qdp_Get_Uplink_Priv_Stats_Len", get_private_stats_length},
    {"Qdp_Get_Uplink_Priv_Stats", get_private_stats},
    {"Qdp_Get_Port_NetQ_Info", get_netq_info},
    {"Qdp_Migrate_NetQ_Filter", migrate_netq_filter},
    {"Qdp_GetSwitchFilterTypes", get_filter_types},
};

}  // namespace

}  // namespace host
