// The SmartNIC's pipeline: counters, offload settings, memory, mirrors, contexts, latency, advanced statistics.
#include "host/state/pipeline.h"

#include "host/state/host.h"
#include "host/state/traffic.h"

namespace host {

namespace {

uint64_t counted(const Clock& clock, uint64_t per_second)
{
    return clock.grown(1) * per_second;
}

P4TrafficCounters traffic(uint64_t packets, uint64_t packet_bytes)
{
    P4TrafficCounters made{};
    made.unicast_packets = packets;
    made.unicast_bytes = packets * packet_bytes;
    made.multicast_packets = packets / multicast_share;
    made.multicast_bytes = made.multicast_packets * packet_bytes;
    made.broadcast_packets = packets / broadcast_share;
    made.broadcast_bytes = made.broadcast_packets * packet_bytes;
    return made;
}

}  // namespace

void SecondsOn::turn(bool on, const Clock& clock)
{
    counted_ = seconds(clock);
    since_ = on ? std::optional{clock.grown(1)} : std::nullopt;
}

void SecondsOn::clear(const Clock& clock)
{
    counted_ = 0;
    if (since_)
        since_ = clock.grown(1);
}

uint64_t SecondsOn::seconds(const Clock& clock) const
{
    return counted_ + (since_ ? clock.grown(1) - *since_ : 0);
}

P4PortCounters p4_port_counters(const Host& host, uint32_t port)
{
    const auto row = host.smartnic.output_port(port);
    if (!row || row->status != port_is_up)
        return {};
    const auto [in, out] = host.smartnic.traffic_of(port);
    const uint64_t rx = counted(host.clock, in.packets);
    const uint64_t tx = counted(host.clock, out.packets);
    const uint64_t rx_drops = in.drops ? counted(host.clock, *in.drops) : rx / drop_share;
    const uint64_t tx_drops = out.drops ? counted(host.clock, *out.drops) : tx / drop_share;
    return {traffic(rx, in.packet_bytes), traffic(rx_drops, in.packet_bytes), traffic(tx, out.packet_bytes),
            traffic(tx_drops, out.packet_bytes)};
}

P4LifCounters lif_counters(const Host& host, uint32_t number)
{
    const P4LifPort* lif = host.smartnic.lif(number);
    if (!lif)
        return {};
    P4LifCounters made{};
    made.traffic = p4_port_counters(host, lif->source_port);
    made.rx_queue.empty = made.traffic.rx_drops.unicast_packets;
    const auto [in, out] = host.smartnic.traffic_of(lif->source_port);
    const auto errors = [&](const Traffic& of_port, uint64_t packets) {
        return of_port.errors && packets ? counted(host.clock, *of_port.errors) : packets / error_share;
    };
    made.rx_queue.descriptor_fetch_error = errors(in, made.traffic.rx.unicast_packets);
    made.tx_queue.descriptor_fetch_error = errors(out, made.traffic.tx.unicast_packets);
    return made;
}

P4ConntrackCounters conntrack_counters(const Host& host, uint32_t port)
{
    const P4PortCounters counters = p4_port_counters(host, port);
    P4ConntrackCounters made{};
    made.tx_pass_bytes = counters.tx.unicast_bytes / 2;
    made.tx_pass_packets = counters.tx.unicast_packets / 2;
    made.tx_drop_bytes = counters.tx_drops.unicast_bytes / 2;
    made.tx_drop_packets = counters.tx_drops.unicast_packets / 2;
    made.rx_pass_bytes = counters.rx.unicast_bytes / 2;
    made.rx_pass_packets = counters.rx.unicast_packets / 2;
    made.rx_drop_bytes = counters.rx_drops.unicast_bytes / 2;
    made.rx_drop_packets = counters.rx_drops.unicast_packets / 2;
    return made;
}

P4IngressCounters ingress_counters(const Host& host)
{
    const uint64_t packets = counted(host.clock, host.pipeline.packet_rate);
    P4IngressCounters made{};
    made.from_host = packets;
    made.from_switch = packets / 2 * 3;
    made.from_cpu = packets / multicast_share;
    made.user_checksum_errors = packets / error_share;
    made.malformed = packets / error_share * 2;
    return made;
}

P4EgressCounters egress_counters(const Host& host)
{
    const P4IngressCounters ingress = ingress_counters(host);
    P4EgressCounters made{};
    made.to_host = ingress.from_switch;
    made.to_switch = ingress.from_host;
    made.to_cpu = ingress.from_cpu;
    made.flow_miss = ingress.from_cpu / 2;
    made.conntrack_redirects = ingress.from_cpu / 4;
    made.drops = ingress.malformed;
    return made;
}

}  // namespace host
