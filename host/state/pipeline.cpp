// The SmartNIC's pipeline: counters, offload settings, memory, mirrors, contexts, latency, advanced statistics.
#include "host/state/pipeline.h"

#include "host/state/host.h"
#include "host/state/traffic.h"

namespace host {

namespace {

uint64_t count_until_now(const Clock& clock, uint64_t per_second)
{
    return clock.counter_value(1) * per_second;
}

P4TrafficCounters traffic(uint64_t packets, uint64_t packet_bytes)
{
    P4TrafficCounters result{};
    result.unicast_packets = packets;
    result.unicast_bytes = packets * packet_bytes;
    result.multicast_packets = packets / multicast_share;
    result.multicast_bytes = result.multicast_packets * packet_bytes;
    result.broadcast_packets = packets / broadcast_share;
    result.broadcast_bytes = result.broadcast_packets * packet_bytes;
    return result;
}

}  // namespace

void Stopwatch::turn(bool on, const Clock& clock)
{
    counted_ = seconds(clock);
    since_ = on ? std::optional{clock.counter_value(1)} : std::nullopt;
}

void Stopwatch::clear(const Clock& clock)
{
    counted_ = 0;
    if (since_)
        since_ = clock.counter_value(1);
}

uint64_t Stopwatch::seconds(const Clock& clock) const
{
    return counted_ + (since_ ? clock.counter_value(1) - *since_ : 0);
}

P4PortCounters p4_port_counters(const Host& host, uint32_t port)
{
    const auto row = host.smartnic.output_port(port);
    if (!row || row->status != port_is_up)
        return {};
    const auto [in, out] = host.smartnic.traffic_of(port);
    const uint64_t rx = count_until_now(host.clock, in.packets);
    const uint64_t tx = count_until_now(host.clock, out.packets);
    const uint64_t rx_drops = in.drops ? count_until_now(host.clock, *in.drops) : rx / drop_share;
    const uint64_t tx_drops = out.drops ? count_until_now(host.clock, *out.drops) : tx / drop_share;
    return {traffic(rx, in.packet_bytes), traffic(rx_drops, in.packet_bytes), traffic(tx, out.packet_bytes),
            traffic(tx_drops, out.packet_bytes)};
}

P4LifCounters lif_counters(const Host& host, uint32_t number)
{
    const P4LifPort* lif = host.smartnic.lif(number);
    if (!lif)
        return {};
    P4LifCounters result{};
    result.traffic = p4_port_counters(host, lif->source_port);
    result.rx_queue.empty = result.traffic.rx_drops.unicast_packets;
    const auto [in, out] = host.smartnic.traffic_of(lif->source_port);
    const auto errors = [&](const Traffic& of_port, uint64_t packets) {
        return of_port.errors && packets ? count_until_now(host.clock, *of_port.errors) : packets / error_share;
    };
    result.rx_queue.descriptor_fetch_error = errors(in, result.traffic.rx.unicast_packets);
    result.tx_queue.descriptor_fetch_error = errors(out, result.traffic.tx.unicast_packets);
    return result;
}

P4ConntrackCounters conntrack_counters(const Host& host, uint32_t port)
{
    const P4PortCounters counters = p4_port_counters(host, port);
    P4ConntrackCounters result{};
    result.tx_pass_bytes = counters.tx.unicast_bytes / 2;
    result.tx_pass_packets = counters.tx.unicast_packets / 2;
    result.tx_drop_bytes = counters.tx_drops.unicast_bytes / 2;
    result.tx_drop_packets = counters.tx_drops.unicast_packets / 2;
    result.rx_pass_bytes = counters.rx.unicast_bytes / 2;
    result.rx_pass_packets = counters.rx.unicast_packets / 2;
    result.rx_drop_bytes = counters.rx_drops.unicast_bytes / 2;
    result.rx_drop_packets = counters.rx_drops.unicast_packets / 2;
    return result;
}

P4IngressCounters ingress_counters(const Host& host)
{
    const uint64_t packets = count_until_now(host.clock, host.pipeline.packet_rate);
    P4IngressCounters result{};
    result.from_host = packets;
    result.from_switch = packets / 2 * 3;
    result.from_cpu = packets / multicast_share;
    result.user_checksum_errors = packets / error_share;
    result.malformed = packets / error_share * 2;
    return result;
}

P4EgressCounters egress_counters(const Host& host)
{
    const P4IngressCounters ingress = ingress_counters(host);
    P4EgressCounters result{};
    result.to_host = ingress.from_switch;
    result.to_switch = ingress.from_host;
    result.to_cpu = ingress.from_cpu;
    result.flow_miss = ingress.from_cpu / 2;
    result.conntrack_redirects = ingress.from_cpu / 4;
    result.drops = ingress.malformed;
    return result;
}

}  // namespace host
