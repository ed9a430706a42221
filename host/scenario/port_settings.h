// What a scenario says of how a port is configured, of its filters, and of an uplink's engines and counters.
#pragma once

#include "host/scenario/shared.h"

namespace host::scenario {

inline constexpr NamedValue teaming_types[] = {
    {"none", static_cast<uint64_t>(TxUplinkType::none)}, {"single", static_cast<uint64_t>(TxUplinkType::single)},
    {"lag", static_cast<uint64_t>(TxUplinkType::lag)},   {"sourceMac", static_cast<uint64_t>(TxUplinkType::source_mac)},
    {"all", static_cast<uint64_t>(TxUplinkType::all)},   {"noTeaming", static_cast<uint64_t>(TxUplinkType::no_teaming)},
};
inline constexpr NamedValue filter_types[] = {
    {"mac", static_cast<uint64_t>(NetQFilterType::mac)},
    {"vlanAndMac", static_cast<uint64_t>(NetQFilterType::vlan_and_mac)},
    {"geneve", static_cast<uint64_t>(NetQFilterType::geneve)},
    {"vxlan", static_cast<uint64_t>(NetQFilterType::vxlan)},
};
inline constexpr NamedValue engine_types[] = {
    {"DFTRSS", static_cast<uint64_t>(RSSEngineType::default_engine)},
    {"DEVRSS", static_cast<uint64_t>(RSSEngineType::device)},
    {"SHARSS", static_cast<uint64_t>(RSSEngineType::shared)},
    {"OFLRSS", static_cast<uint64_t>(RSSEngineType::offload)},
};

// --- How a port is configured ---

struct MetaFlow {
    uint32_t slot;
    bool has_second_value;
};

inline std::vector<MetaFlow> meta_flows_of(const PortConf& conf)
{
    std::vector<MetaFlow> result;
    for (uint32_t slot = 0; slot < meta_flow_slots; ++slot)
        if (conf.meta_flows[slot] & meta_flow_enabled)
            result.push_back({slot, (conf.meta_flows[slot] & meta_flow_second_value) != 0});
    return result;
}

inline void set_meta_flows(PortConf& conf, const std::vector<MetaFlow>& meta_flows)
{
    std::memset(conf.meta_flows, 0, sizeof conf.meta_flows);
    conf.num_meta_flows = static_cast<uint32_t>(meta_flows.size());
    for (const MetaFlow& each : meta_flows)
        conf.meta_flows[each.slot] =
            static_cast<uint8_t>(meta_flow_enabled | (each.has_second_value ? meta_flow_second_value : 0));
}

template <class V>
void describe_conf(V& v, PortConf& conf)
{
    std::vector<MacAddress> groups;
    for (uint32_t i = 0; i < conf.num_multicast_addresses; ++i)
        groups.push_back(std::to_array(conf.multicast_addresses[i]));
    std::vector<VlanRange> vlans(conf.vlan_ranges, conf.vlan_ranges + conf.num_vlan_ranges);
    uint32_t features;
    std::memcpy(&features, conf.features, sizeof features);
    std::vector<MetaFlow> meta_flows = meta_flows_of(conf);

    v.optional("receives", conf.receive_flags, Bits{receive_flags}, "What the port takes in.");
    v.optional("multicastAddresses", groups, list(MacFormat{}, max_multicast_addresses),
               "The groups that it has joined.");
    v.optional("untaggedVlan", conf.untagged_vlan, number(0, max_vlan), "The VLAN of its untagged packets.");
    v.optional("vlans", vlans,
               list(object_format([](auto& w, VlanRange& range) {
                        w.required("first", range.first, number(0, no_vlan), "");
                        w.required("last", range.last, number(0, no_vlan), "");
                    }),
                    max_vlan_ranges),
               "The VLANs whose tags it may send.");
    v.optional("vni", conf.vni, number(0, last_vni), "Its overlay network.");
    v.optional("forgedMacAllowed", conf.forged_mac_allowed, Flag{}, "Whether it may send from any MAC address.");
    v.optional("features", features, Bits{port_features}, "What is done with its packets.");
    v.optional("metaFlows", meta_flows,
               list(object_format([](auto& w, MetaFlow& each) {
                        w.required("slot", each.slot, number(0, meta_flow_slots - 1), "");
                        w.optional("hasSecondValue", each.has_second_value, Flag{}, "");
                    }),
                    meta_flow_slots, "slot", [](const MetaFlow& each) { return each.slot; }),
               "Its metadata flow slots that are enabled.");
    v.derive([&] {
        conf.num_multicast_addresses = static_cast<uint32_t>(groups.size());
        std::memset(conf.multicast_addresses, 0, sizeof conf.multicast_addresses);
        for (size_t i = 0; i < groups.size(); ++i)
            std::ranges::copy(groups[i], conf.multicast_addresses[i]);
        conf.num_vlan_ranges = static_cast<uint32_t>(vlans.size());
        std::fill(std::begin(conf.vlan_ranges), std::end(conf.vlan_ranges), VlanRange{});
        std::ranges::copy(vlans, conf.vlan_ranges);
        std::memcpy(conf.features, &features, sizeof features);
        set_meta_flows(conf, meta_flows);
    });
}

template <class V>
void describe_tx_uplinks(V& v, TxUplinks& uplinks)
{
    v.optional("teaming", uplinks.type, OneOf{teaming_types}, "How an uplink is chosen.");
    describe_counted(v, "uplinks", uplinks.uplinks, uplinks.count, "Their ports.");
}

// --- Uplinks and filters ---

template <class V>
void describe_filter(V& v, ReceiveFilter& filter, const Switch& owner, int64_t filter_id)
{
    v.required("type", filter.type, OneOf{filter_types}, "");
    v.derived("mac", filter.mac.mac, MacFormat{}, "Of a MAC filter. Absent: the port's.");
    v.optional("vlan", filter.mac.vlan, number(0, max_vlan), "Of a filter of a VLAN and a MAC address.");
    v.optional("outerMac", filter.tunnel.outer_mac, MacFormat{}, "Of a tunnel filter, as are the next two.");
    v.derived("innerMac", filter.tunnel.inner_mac, MacFormat{}, "Absent: the port's.");
    v.optional("vni", filter.tunnel.vni, number(0, last_vni), "");
    v.optional("queues", filter.queues,
               list(object_format([&](auto& w, ReceiveFilter::Queue& queue) {
                        w.derive([&] { queue.filter_id = filter_id; });
                        w.required("uplink", queue.uplink, number(0, max_ports - 1), "An uplink before this port.");
                        const Port* uplink = find_port(owner, queue.uplink);
                        w.check(uplink && is_a(*uplink, ClientType::uplink), "uplink", "an uplink before this port");
                        w.optional("queue", queue.queue, number(0, max_queues - 1), "");
                        w.check(uplink && queue.queue < uplink->entry.num_rx_queues, "queue",
                                "a receive queue of the uplink");
                        w.derived("filter", queue.filter_id, number(), "Its number. Absent: counted up.");
                    }),
                    max_ports),
               "The queues that it steers to.");
}

template <class V>
void describe_engine(V& v, RSSEngine& engine)
{
    v.required("id", engine.id, number(), "");
    v.optional("type", engine.type, OneOf{engine_types}, "");
    v.optional("primaryQueue", engine.primary_queue, number(), "");
    std::vector<uint16_t> queues(engine.queues, engine.queues + std::min(engine.num_queues, max_queues));
    v.optional("secondaryQueues", queues, list(number(), max_queues), "");
    v.optional("hashFunction", engine.hash_function, number(), "");
    v.optional("hashTypes", engine.hash_type, number(), "A bit each.");
    v.optional("keySize", engine.key_size, number(), "");
    v.optional("indirectionSize", engine.indirection_size, number(), "");
    v.optional("affinity", engine.affinity, number(), "The memory node.");
    v.derive([&] {
        engine.num_queues = static_cast<uint32_t>(queues.size());
        std::ranges::copy(queues, engine.queues);
    });
}

inline constexpr size_t max_private_counters = 1024;

// Of an uplink.
template <class V>
void describe_uplink(V& v, Port& port)
{
    v.derived("rssEngines", port.rss_engines,
              list(object_format([](auto& w, RSSEngine& engine) { describe_engine(w, engine); }), max_rss_engines),
              "Of an uplink. Absent: four, over eight queues.");
    v.derived("privateCounters", port.private_counters,
              list(object_format([](auto& w, PrivateCounter& counter) {
                       w.required("name", counter.name, text(24), "");
                       w.optional("rate", counter.per_second, number(), "By how much it grows a second.");
                   }),
                   max_private_counters),
              "What only an uplink's driver counts. Absent: some that follow from its traffic.");
    v.derived("offload", port.offload, object_format([](auto& w, UplinkOffload& offload) {
                  w.optional("flows", offload.flows, number(), "That its NIC has taken over.");
                  w.optional("flowRate", offload.flow_rate, number(), "Flows that it takes over a second.");
              }),
              "Of an uplink. Absent: follows from the port's number.");
}

}  // namespace host::scenario
