// Uplinks: their private statistics, the filters that steer traffic to their queues, filter classes.
#include "host/state/uplinks.h"

#include "host/state/host.h"

namespace host {

namespace {

constexpr uint32_t filter_kinds = 4;

}  // namespace

std::vector<PrivateCounter> default_private_counters(const Port& uplink)
{
    std::vector<PrivateCounter> result{{"link_resets", 0}, {"rx_buffer_refills", uplink.rx.packets / 32}};
    for (uint32_t queue = 0; queue < uplink.entry.num_rx_queues; ++queue)
        result.push_back(
            {"rx_queue_" + std::to_string(queue) + "_packets", uplink.rx.packets / uplink.entry.num_rx_queues});
    return result;
}

std::vector<const Port*> uplinks_of(const Switch& owner)
{
    std::vector<const Port*> result;
    for (const Port& port : owner.ports)
        if (is_a(port, ClientType::uplink))
            result.push_back(&port);
    return result;
}

// The kinds take turns. A MAC filter steers to one uplink; a tunnel's may come in on any.
ReceiveFilter default_filter(const std::vector<const Port*>& uplinks, const Port& vnic, int64_t filter_id)
{
    const uint32_t number = vnic.entry.port;
    ReceiveFilter result{};
    result.type = static_cast<NetQFilterType>(number % filter_kinds);
    std::memcpy(result.mac.mac, vnic.entry.mac, mac_bytes);
    std::memcpy(result.tunnel.inner_mac, vnic.entry.mac, mac_bytes);
    if (result.type == NetQFilterType::vlan_and_mac)
        result.mac.vlan = static_cast<uint16_t>(1 + (99 + number) % max_vlan);
    result.tunnel.vni = 5000 + number;

    for (size_t i = 0; i < uplinks.size(); ++i) {
        const PortListEntry& uplink = uplinks[i]->entry;
        if (i == 0)
            std::memcpy(result.tunnel.outer_mac, uplink.mac, mac_bytes);
        if (uplink.num_rx_queues > 0 && (is_tunnel(result.type) || i == number % uplinks.size()))
            result.queues.push_back({uplink.port, number % uplink.num_rx_queues, filter_id});
    }
    return result;
}

}  // namespace host
