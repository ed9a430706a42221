// Answers about the datapath's counters. All follow from a port's traffic and the clock.
#include "host/answers/answer.h"
#include "host/state/traffic.h"

namespace host {

namespace {

// Of all packets, 1 in so many.
constexpr uint64_t slow_path_packet_share = 100;

PortDirectionCounters counters(const Clock& clock, const Traffic& traffic, uint64_t share)
{
    const uint64_t packets = clock.counter_value(traffic.packets) / share;
    PortDirectionCounters result{};
    result.packets = packets;
    result.bytes = packets * traffic.packet_bytes;
    result.multicast_packets = packets / multicast_share;
    result.multicast_bytes = result.multicast_packets * traffic.packet_bytes;
    result.broadcast_packets = packets / broadcast_share;
    result.broadcast_bytes = result.broadcast_packets * traffic.packet_bytes;
    result.drops = traffic.drops ? clock.counter_value(*traffic.drops) / share : packets / drop_share;
    return result;
}

uint32_t put_counters(Host& host, uint32_t switch_number, uint32_t port_number, Output output, uint64_t share)
{
    const Port* port = host.port(switch_number, port_number);
    if (!port)
        return status_refused;
    return output.put(PortCounters{counters(host.clock, port->tx, share), counters(host.clock, port->rx, share)});
}

uint32_t get_port_stats(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    return put_counters(host, switch_number, port, output, 1);
}

uint32_t get_port_stats_slowpath(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    return put_counters(host, switch_number, port, output, slow_path_packet_share);
}

const Answer stats_answers[] = {
    {"Qdp_Get_Port_Stats", get_port_stats},
    {"Qdp_Get_Port_Stats_Slowpath", get_port_stats_slowpath},
};

}  // namespace

}  // namespace host
