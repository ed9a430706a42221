// How ports and switches are configured beyond the inventory: filters, features, pins, flow cache switches.
#include "host/state/port_settings.h"

#include <algorithm>
#include <cstring>

namespace host {

namespace {

void enable_meta_flow(PortConf& conf, uint32_t slot, bool second_value)
{
    uint8_t& state = conf.meta_flows[slot % meta_flow_slots];
    conf.num_meta_flows += state == 0;
    state = static_cast<uint8_t>(meta_flow_enabled | (second_value ? meta_flow_second_value : 0));
}

template <size_t count>
void join_group(PortConf& conf, const uint8_t (&group)[count])
{
    static_assert(count == mac_bytes);
    std::memcpy(conf.multicast_addresses[conf.num_multicast_addresses++], group, mac_bytes);
}

void tag(PortConf& conf, uint16_t first, uint16_t last)
{
    conf.vlan_ranges[conf.num_vlan_ranges++] = {first, last};
}

constexpr uint8_t all_ipv4_hosts[] = {0x01, 0x00, 0x5e, 0x00, 0x00, 0x01};
constexpr uint8_t all_ipv6_nodes[] = {0x33, 0x33, 0x00, 0x00, 0x00, 0x01};

}  // namespace

void enable(PortConf& conf, PortFeature feature)
{
    uint32_t features;
    std::memcpy(&features, conf.features, sizeof features);
    features |= static_cast<uint32_t>(feature);
    std::memcpy(conf.features, &features, sizeof features);
}

PortConf default_conf(const PortListEntry& entry)
{
    PortConf conf{};
    conf.port = entry.port;
    std::memcpy(conf.mac, entry.mac, sizeof conf.mac);
    conf.receive_flags = receive_unicast | receive_broadcast;
    enable(conf, PortFeature::tx_l3);
    enable(conf, PortFeature::tx_l4);

    if (static_cast<ClientType>(entry.client_type) == ClientType::uplink) {
        conf.receive_flags |= receive_all_multicast | receive_promiscuous;
        conf.forged_mac_allowed = 1;
        tag(conf, 1, max_vlan);
        return conf;
    }

    conf.receive_flags |= receive_multicast;
    join_group(conf, all_ipv4_hosts);
    if (entry.port % 2 == 0)
        join_group(conf, all_ipv6_nodes);
    enable(conf, PortFeature::spoofguard);
    enable(conf, PortFeature::dfw);
    if (entry.port % 5 == 0)
        enable(conf, PortFeature::ipfix);
    if (entry.port % 7 == 0)
        enable(conf, PortFeature::mirror_in);
    if (entry.port % 4 == 3) {  // a trunk
        tag(conf, 100, 199);
        tag(conf, 300, 300);
        conf.forged_mac_allowed = 1;
    } else {
        conf.untagged_vlan = static_cast<uint16_t>(100 + entry.port % 8);
        conf.vni = 5000 + conf.untagged_vlan;
    }
    if (entry.port % 4 == 0) {
        enable(conf, PortFeature::min_flow_l3);
        enable_meta_flow(conf, entry.port, false);
        enable_meta_flow(conf, entry.port + 7, true);
    }
    return conf;
}

// The kinds of teaming take turns over the ports; an uplink transmits on itself.
TxUplinks default_tx_uplinks(const PortListEntry& entry, const std::vector<uint16_t>& uplinks)
{
    TxUplinks result{};
    const auto use = [&](TxUplinkType type, size_t max_uplinks) {
        result.type = static_cast<uint8_t>(type);
        result.count = static_cast<uint8_t>(std::min(max_uplinks, uplinks.size()));
        std::copy_n(uplinks.begin(), result.count, result.uplinks);
    };
    if (static_cast<ClientType>(entry.client_type) == ClientType::uplink) {
        result.type = static_cast<uint8_t>(TxUplinkType::no_teaming);
        result.uplinks[result.count++] = static_cast<uint16_t>(entry.port);
        return result;
    }
    switch (entry.port % 5) {
    case 0:
        use(TxUplinkType::none, 0);
        break;
    case 1:
        use(TxUplinkType::single, 1);
        break;
    case 2:
        use(TxUplinkType::lag, max_tx_uplinks);
        break;
    case 3:
        use(TxUplinkType::source_mac, max_tx_uplinks);
        break;
    default:
        use(TxUplinkType::all, max_tx_uplinks);
    }
    return result;
}

}  // namespace host
