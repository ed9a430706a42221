// What a scenario says of a switch's ports: which they are, and what they carry.
#pragma once

#include "host/scenario/port_settings.h"
#include "host/scenario/shared.h"

namespace host::scenario {

inline constexpr NamedValue client_types[] = {
    {"VNIC", static_cast<uint64_t>(ClientType::vnic)},
    {"UPLINK", static_cast<uint64_t>(ClientType::uplink)},
    {"GENERIC", static_cast<uint64_t>(ClientType::generic)},
    {"REPRESENTOR", static_cast<uint64_t>(ClientType::representor)},
};
// --- Ports ---

// The lcores of a port's queues, counted from the switch's first. `step` is from a queue to the next.
template <class V, size_t size>
void describe_queues(V& v, const char* count_key, const char* lcores_key, uint8_t& count, uint8_t (&lcores)[size],
                     const Switch& owner, uint32_t first, uint32_t step)
{
    v.defaults([&] { count = 1; });
    v.optional(count_key, count, number(0, size), "How many queues it has.");
    std::vector<uint8_t> placed(lcores, lcores + count);
    v.derive([&] {
        placed.resize(count);
        for (uint32_t queue = 0; queue < count; ++queue)
            placed[queue] = static_cast<uint8_t>((first + step * queue) % std::max(owner.entry->num_lcores, 1u));
    });
    v.derived(lcores_key, placed, list(number(0, max_lcores - 1), size),
              "Where they run, counted from the switch's first lcore. Absent: spread over all.");
    v.check(placed.size() == count, lcores_key, "as many lcores as there are queues");
    v.derive([&] { std::ranges::copy(placed, lcores); });
}

// What the load balancer sees of the queues of a port.
template <class V>
void describe_queue_rates(V& v, const char* key, std::vector<uint64_t>& rates, uint8_t queues)
{
    v.optional(key, rates, list(number(), max_queues),
               "Packets a second of each queue, as the load balancer sees them. None: the queues share all evenly.");
    v.check(rates.empty() || rates.size() == queues, key, "as many rates as there are queues");
}

inline void derive_traffic(Port& port)
{
    const uint64_t number = port.entry.port;
    port.tx = {1000 + 37 * number, 64 + 17 * (number % 80)};
    port.rx = {1500 + 53 * number, 64 + 23 * (number % 60)};
    port.offload = {static_cast<uint32_t>(1200 + 31 * number), 40 + 3 * number};
}

inline void derive_configuration(Port& port, const Switch& owner, Order& order)
{
    std::vector<const Port*> uplinks;
    for (const uint32_t number : order.uplinks)
        uplinks.push_back(find_port(owner, number));
    const std::vector<uint16_t> numbers(order.uplinks.begin(), order.uplinks.end());
    port.setting.conf = default_conf(port.entry);
    port.setting.tx_uplinks = default_tx_uplinks(port.entry, numbers);
    if (is_a(port, ClientType::vnic))
        port.filters = {default_filter(uplinks, port, order.next_filter)};
    if (is_a(port, ClientType::uplink)) {
        port.rss_engines = default_rss_engines(port);
        port.private_counters = default_private_counters(port);
    }
}

template <class V>
void describe_inventory(V& v, PortListEntry& entry, const Switch& owner)
{
    const uint32_t switch_number = owner.entry->switch_number;
    v.defaults([&] { entry.client_type = static_cast<uint32_t>(ClientType::vnic); });
    v.optional("client", entry.client_type, OneOf{client_types}, "What it is a port of.");
    describe_queues(v, "txQueues", "txLcores", entry.num_tx_queues, entry.tx_queue_lcores, owner, entry.port, 1);
    describe_queues(v, "rxQueues", "rxLcores", entry.num_rx_queues, entry.rx_queue_lcores, owner, entry.port, 2);
    v.derive([&] {
        const uint8_t mac[] = {0x02,
                               0x10,
                               0x00,
                               static_cast<uint8_t>(switch_number),
                               static_cast<uint8_t>(entry.port >> 8),
                               static_cast<uint8_t>(entry.port)};
        std::ranges::copy(mac, entry.mac);
        entry.num_macs = entry.client_type == static_cast<uint32_t>(ClientType::uplink) ? 0 : 1;
        entry.qdp_port = 0x04000000 + switch_number * 0x10000 + entry.port;
    });
    v.derived("mac", entry.mac, MacFormat{}, "Its MAC address. Absent: 02:10:00, the switch's number and the port's.");
    v.derived("macs", entry.num_macs, number(), "How many addresses it has. Absent: one, an uplink none.");
    v.optional("representorType", entry.representor_type, number(), "Of a representor.");
    uint32_t pass_through = entry.flags & port_flag_pass_through;
    v.optional("passThrough", pass_through, Flag{}, "Whether it bypasses the switch.");
    v.derive([&] { entry.flags = pass_through; });
    v.derived("qdpPort", entry.qdp_port, number(), "The datapath's own number of it. Absent: follows from the others.");
}

// Where the queues ran before a migration pinned them.
template <class V>
void describe_unpinned(V& v, PortListEntry& before, const PortListEntry& entry)
{
    v.derive([&] { before = entry; });
    describe_counted(v, "txLcores", before.tx_queue_lcores, before.num_tx_queues, "");
    describe_counted(v, "rxLcores", before.rx_queue_lcores, before.num_rx_queues, "");
}

template <class V>
void describe_port(V& v, Port& port, const Switch& owner, Order& order)
{
    PortListEntry& entry = port.entry;
    v.derive([&] { entry.port = static_cast<uint32_t>(owner.ports.size()); });
    v.derived("number", entry.port, number(0, max_ports - 1), "Absent: counted up.");
    v.derive([&] { port.name = "port" + std::to_string(entry.port); });
    v.derived("name", port.name, text(127), "Absent: \"port\" and the number.");
    describe_inventory(v, entry, owner);

    v.derive([&] {
        derive_traffic(port);
        derive_configuration(port, owner, order);
    });
    v.derived("tx", port.tx, traffic_format, "What it sends. Absent: follows from its number.");
    v.derived("rx", port.rx, traffic_format, "What it receives. Absent: follows from its number.");
    describe_queue_rates(v, "txRates", port.tx_queue_rates, entry.num_tx_queues);
    describe_queue_rates(v, "rxRates", port.rx_queue_rates, entry.num_rx_queues);
    v.optional("data", port.data, PropertiesFormat{}, "What the host kernel keeps for it.");
    v.derived("conf", port.setting.conf, object_format([](auto& w, PortConf& conf) { describe_conf(w, conf); }),
              "How it is configured. Absent: as is usual for its client, varied by its number.");
    v.derived("txUplinks", port.setting.tx_uplinks,
              object_format([](auto& w, TxUplinks& uplinks) { describe_tx_uplinks(w, uplinks); }),
              "What it transmits on. Absent: the uplinks before it, in ways that take turns.");
    v.derived("lro", port.lro, optional_format(number()), "Large receive offload. Absent: as the switch says.");
    v.derived("filters", port.filters,
              list(object_format([&](auto& w, ReceiveFilter& filter) {
                       w.derive([&] {
                           std::ranges::copy(entry.mac, filter.mac.mac);
                           std::ranges::copy(entry.mac, filter.tunnel.inner_mac);
                       });
                       describe_filter(w, filter, owner, order.next_filter);
                   }),
                   max_ports),
              "Receive filters of a VNIC. Absent: one, to the uplinks before it.");
    v.derive([&] {
        order.next_filter += static_cast<int64_t>(port.filters.size());
        if (is_a(port, ClientType::uplink))
            order.uplinks.push_back(entry.port);
    });
    describe_uplink(v, port);
    v.derived(
        "unpinned", port.setting.unpinned,
        optional_format(object_format([&](auto& w, PortListEntry& before) { describe_unpinned(w, before, entry); })),
        "Where its queues ran before they were migrated. Absent: they are not pinned.");
}

}  // namespace host::scenario
