// What the SmartNIC keeps of an offloaded flow: its counters and its connection.
#include "host/state/offloaded_flows.h"

#include "host/state/host.h"

namespace host {

namespace {

constexpr uint8_t established = 4;
constexpr uint8_t tcp_syn = 0x02;
constexpr uint8_t tcp_ack = 0x10;

ConnectionEnd end_of(uint32_t lowest_sequence, uint16_t max_window, uint8_t window_scale)
{
    return {lowest_sequence, lowest_sequence + max_window, max_window, window_scale, established};
}

const Flow* flow_of(const Host& host, uint32_t record)
{
    return host.flowcache.offloaded(first_hardware_flow + record);
}

}  // namespace

uint32_t record_of(const Flow& flow)
{
    return flow.offload->hardware_index - first_hardware_flow;
}

bool is_dropped(const Flow& flow)
{
    return has(flow, FlowAction::drop);
}

bool is_tracked(const Flow& flow)
{
    return flow.packets.protocol == protocol_tcp && !is_dropped(flow);
}

FlowCounters flow_counters(const Host& host, uint32_t record)
{
    const Flow* flow = flow_of(host, record);
    if (!flow)
        return {};
    const uint64_t packets = hardware_hits(host, *flow);
    const bool is_tcp = flow->packets.protocol == protocol_tcp;
    const uint8_t flags = is_dropped(*flow) ? tcp_syn : tcp_syn | tcp_ack;
    return {packets, packets * flow->packet_bytes, is_tcp ? flags : uint8_t{0}};
}

// The source's sequence numbers go on with what it sends; the other end only acknowledges.
Connection connection(const Host& host, uint32_t record)
{
    const Flow* flow = flow_of(host, record);
    if (!flow || !is_tracked(*flow))
        return {};
    const auto sent = static_cast<uint32_t>(hardware_hits(host, *flow) * flow->packet_bytes);
    return {end_of(0x10000000 + 0x01010101 * record + sent, 0xff00, 7),
            end_of(0xf0000000 + 0x00010001 * record, 0x7210, 9), established, record % 2 == 1};
}

}  // namespace host
