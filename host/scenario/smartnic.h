// What a scenario says of the SmartNIC's port model.
#pragma once

#include "host/scenario/ports.h"

namespace host::scenario {

inline constexpr NamedValue lif_types[] = {{"uplink", uplink_lif}, {"pf", pf_lif}, {"vf", vf_lif}};
inline constexpr uint32_t first_representor_port = 512;  // of LIF 0 and of port 0

template <class Table>
auto values_of(const Table& table)
{
    std::vector<typename Table::mapped_type> result;
    for (const auto& [key, value] : table)
        result.push_back(value);
    return result;
}

// A table of the SmartNIC, as the list of its records; `number_of` is a record's key in it.
template <class V, class Table, class Format, class NumberOf>
void describe_table(V& v, const char* key, Table& table, Format format, size_t max_entries, const char* name,
                    NumberOf number_of, const char* help)
{
    auto records = values_of(table);
    v.optional(key, records, list(format, max_entries, name, number_of), help);
    v.derive([&] {
        table.clear();
        for (const auto& record : records)
            table.emplace(number_of(record), record);
    });
}

template <class V>
void describe_lif(V& v, P4LifPort& lif)
{
    v.required("lif", lif.lif, number(0, max_lifs - 1), "");
    v.derive([&] {
        lif.source_port = lif.lif;
        lif.rep_port = static_cast<uint16_t>(first_representor_port + lif.lif);
    });
    v.defaults([&] {
        lif.type = vf_lif;
        lif.status = port_is_up;
    });
    uint32_t flow_key_type = lif_flow_key_type.unpacked(lif.flags), forwarding = lif_fwd_mode.unpacked(lif.flags);
    uint32_t is_mux_pf = lif_is_mux_pf.unpacked(lif.flags);
    v.derived("port", lif.source_port, number(0, max_p4_ports - 1), "That it sends from. Absent: its number.");
    v.derived("representorPort", lif.rep_port, number(0, max_p4_ports - 1), "Absent: 512 and its number.");
    v.optional("type", lif.type, OneOf{lif_types}, "");
    v.optional("flowKeyType", flow_key_type, number(0, max_flow_key_types - 1), "");
    v.optional("forwardingMode", forwarding, number(0, max_fwd_modes - 1), "");
    v.optional("muxPf", is_mux_pf, Flag{}, "Whether several ports share it.");
    v.optional("status", lif.status, number(0, lif_status_end - 1), "1: up.");
    v.derive([&] { lif.flags = lif_flags(flow_key_type, forwarding, is_mux_pf); });
}

template <class V>
void describe_vlan_port(V& v, P4VlanPort& port)
{
    v.required("vlan", port.mux_vlan, number(0, max_mux_vlans - 1), "");
    std::vector<uint16_t> lifs(std::begin(port.pf_lifs), std::end(port.pf_lifs));
    v.optional("lifs", lifs, list(number(0, max_lifs - 1), std::size(port.pf_lifs)), "The two LIFs of its PF.");
    v.required("port", port.source_port, number(0, max_p4_ports - 1), "That it sends from.");
    v.derive([&] {
        lifs.resize(std::size(port.pf_lifs));
        std::ranges::copy(lifs, port.pf_lifs);
        port.rep_port = static_cast<uint16_t>(first_representor_port + port.source_port);
    });
    v.defaults([&] { port.status = port_is_up; });
    v.derived("representorPort", port.rep_port, number(), "Absent: 512 and its port.");
    v.optional("flowKeyType", port.flow_key_type, number(0, max_flow_key_types - 1), "");
    v.optional("flags", port.flags, number(), "");
    v.optional("status", port.status, number(0, vlan_port_status_end - 1), "1: up.");
}

// A number that belongs to another, as a table of the SmartNIC keeps it.
struct Pair {
    uint32_t key;
    uint32_t value;
};

template <class V, class Table>
void describe_pairs(V& v, const char* key, Table& table, const char* key_name, const char* value_name, uint64_t highest,
                    const char* help, bool is_derived = false)
{
    std::vector<Pair> pairs;
    for (const auto& [from, to] : table)
        pairs.push_back({from, to});
    const auto format = list(object_format([&](auto& w, Pair& pair) {
                                 w.required(key_name, pair.key, number(), "");
                                 w.required(value_name, pair.value, number(0, highest), "");
                             }),
                             1 << 16, key_name, [](const Pair& pair) { return pair.key; });
    if (is_derived)
        v.derived(key, pairs, format, help);
    else
        v.optional(key, pairs, format, help);
    v.derive([&] {
        table.clear();
        for (const Pair& pair : pairs)
            table[pair.key] = static_cast<typename Table::mapped_type>(pair.value);
    });
}

struct MuxOwner {
    uint32_t switch_number;
    MuxSwitch tables;
};

template <class V>
void describe_mux_switch(V& v, MuxOwner& owner, const Host& host)
{
    v.required("switch", owner.switch_number, number(0, max_switches - 1), "");
    v.check(has_datapath_switch(host, owner.switch_number), "switch", existing_switch);
    describe_table(
        v, "vlans", owner.tables.vlans, object_format([](auto& w, MuxVlanEntry& entry) {
            w.required("fcPort", entry.fc_port, number(), "The switch's port.");
            w.required("vlan", entry.vlan, number(0, max_mux_vlans - 1), "");
            w.required("port", entry.port, number(), "The SmartNIC's port before it.");
        }),
        max_ports, "fcPort", [](const MuxVlanEntry& entry) { return uint32_t{entry.fc_port}; },
        "By which its ports are told apart.");
    describe_table(
        v, "shadowPorts", owner.tables.shadow_ports, object_format([](auto& w, ShadowPortEntry& entry) {
            w.required("fcPort", entry.fc_port, number(), "The switch's port.");
            w.required("pfPort", entry.mux_pf_port, number(), "The PF that it shares.");
            w.required("vlan", entry.mux_vlan, number(0, max_mux_vlans - 1), "");
        }),
        max_ports, "fcPort", [](const ShadowPortEntry& entry) { return uint32_t{entry.fc_port}; }, "");
}

template <class V>
void describe_mux_switches(V& v, SmartNic& nic, const Host& host)
{
    std::vector<MuxOwner> owners;
    for (const auto& [switch_number, tables] : nic.mux_switches)
        owners.push_back({switch_number, tables});
    v.optional("muxSwitches", owners,
               list(object_format([&](auto& w, MuxOwner& owner) { describe_mux_switch(w, owner, host); }), max_switches,
                    "switch", [](const MuxOwner& owner) { return owner.switch_number; }),
               "The switches in mux mode.");
    v.derive([&] {
        nic.mux_switches.clear();
        for (const MuxOwner& owner : owners)
            nic.mux_switches[owner.switch_number] = owner.tables;
    });
}

template <class V>
void describe_rss_overrides(V& v, SmartNic& nic, const Host& host)
{
    auto overrides = values_of(nic.rss_overrides);
    v.optional("rssOverrides", overrides,
               list(object_format([&](auto& w, P4RssOverride& setting) {
                        w.required("switch", setting.switch_number, number(0, max_switches - 1), "");
                        w.check(has_datapath_switch(host, setting.switch_number), "switch", existing_switch);
                        w.required("port", setting.port, number(0, max_rss_ports - 1), "The switch's port.");
                        w.required("queue", setting.queue, number(), "0 to 63; any where there is no override.");
                        w.defaults([&] { setting.is_override = 1; });
                        w.optional("isOverride", setting.is_override, number(0, 1), "");
                        w.check(!setting.is_override || setting.queue < max_rss_queues, "queue",
                                "a queue from 0 to 63");
                    }),
                    max_switches * max_rss_ports),
               "Where ports' packets go instead of the queue that RSS chooses.");
    v.derive([&] {
        nic.rss_overrides.clear();
        for (const P4RssOverride& setting : overrides)
            nic.rss_overrides[{setting.switch_number, setting.port}] = setting;
    });
}

struct PortTraffic {
    uint32_t port;
    P4Traffic traffic;
};

template <class V>
void describe_p4_traffic(V& v, SmartNic& nic)
{
    std::vector<PortTraffic> all;
    for (const auto& [port, traffic] : nic.traffic)
        all.push_back({port, traffic});
    v.optional("traffic", all,
               list(object_format([&](auto& w, PortTraffic& each) {
                        w.required("port", each.port, number(0, max_p4_ports - 1), "");
                        w.derive([&] { each.traffic = SmartNic{}.traffic_of(each.port); });
                        w.derived("rx", each.traffic.rx, traffic_format, "Absent: follows from its number.");
                        w.derived("tx", each.traffic.tx, traffic_format, "Absent: follows from its number.");
                    }),
                    max_p4_ports, "port", [](const PortTraffic& each) { return each.port; }),
               "Of ports whose traffic does not follow from their number.");
    v.derive([&] {
        nic.traffic.clear();
        for (const PortTraffic& each : all)
            nic.traffic[each.port] = each.traffic;
    });
}

// The mux switches say what lies behind their ports; the uplinks and the VFs lead to the switch's uplinks and its other
// ports, in order.
inline void derive_fc_ports(SmartNic& nic, const Host& host)
{
    for (const auto& [switch_number, tables] : nic.mux_switches)
        for (const auto& [fc_port, entry] : tables.vlans)
            nic.fc_ports[entry.port] = entry.fc_port;
    for (const Switch& owner : host.switches) {
        if (!owner.entry || owner.entry->switch_number != nic.uplink_switch)
            continue;
        for (const bool are_uplinks : {true, false}) {
            auto lif = nic.lifs.begin();
            for (const Port& port : owner.ports) {
                if (is_a(port, ClientType::uplink) != are_uplinks)
                    continue;
                while (lif != nic.lifs.end() && lif->second.type != (are_uplinks ? uplink_lif : vf_lif))
                    ++lif;
                if (lif == nic.lifs.end())
                    break;
                nic.fc_ports[(lif++)->second.source_port] = static_cast<uint16_t>(port.entry.port);
            }
        }
    }
}

template <class V>
void describe_smartnic(V& v, SmartNic& nic, const Host& host)
{
    v.derived("switch", nic.uplink_switch, optional_format(number(0, max_switches - 1)),
              "Whose uplinks end in it. Absent: no switch's.");
    v.check(!nic.uplink_switch || has_datapath_switch(host, *nic.uplink_switch), "switch", existing_switch);
    describe_counted(v, "hostPfs", nic.host_pfs.lifs, nic.host_pfs.count, "The LIFs of the host's PFs.");
    describe_table(
        v, "lifs", nic.lifs, object_format([](auto& w, P4LifPort& lif) { describe_lif(w, lif); }), max_lifs, "lif",
        [](const P4LifPort& lif) { return uint32_t{lif.lif}; }, "");
    describe_table(
        v, "vlanPorts", nic.vlan_ports, object_format([](auto& w, P4VlanPort& port) { describe_vlan_port(w, port); }),
        max_mux_vlans, "vlan", [](const P4VlanPort& port) { return uint32_t{port.mux_vlan}; },
        "Ports that share a PF and are told apart by a VLAN.");
    describe_pairs(v, "defaultVlans", nic.default_vlans, "port", "vlan", max_default_vlans - 1,
                   "The VLANs of ports' untagged packets.");
    describe_mux_switches(v, nic, host);
    v.derive([&] { derive_fc_ports(nic, host); });
    describe_pairs(v, "fcPorts", nic.fc_ports, "port", "fcPort", max_ports - 1,
                   "The switch's ports behind the SmartNIC's. Absent: follows from muxSwitches and lifs.", true);
    describe_rss_overrides(v, nic, host);
    v.optional("logLevel", nic.log_level.level, number(0, max_log_levels - 1), "");
    describe_pairs(v, "agingIntervals", nic.aging_intervals, "selector", "interval", UINT32_MAX, "That were set.");
    describe_p4_traffic(v, nic);
}

}  // namespace host::scenario
