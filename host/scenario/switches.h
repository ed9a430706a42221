// What a scenario says of switches.
#pragma once

#include <bit>

#include "host/scenario/ports.h"
#include "platform/fpo.h"
#include "platform/switch_state.h"

namespace host::scenario {

inline constexpr uint32_t max_known_switches = 64;  // of the switch state library, max_switches of the datapath
inline constexpr uint32_t lcores_of_a_switch = 4;   // when nobody says otherwise

template <class V>
void describe_setting(V& v, SwitchSetting& setting)
{
    v.optional("learnsUplinkMacs", setting.learns_uplink_macs, Flag{}, "");
    v.optional("flowCache", setting.has_flowcache, Flag{}, "Whether it has one; its flows stand in it.");
    v.optional("panicsOnTxHang", setting.panics_on_tx_hang, Flag{}, "");
    v.optional("filterTypes", setting.filter_types, number(),
               "Its receive filter classes, a bit each, unless its host property says otherwise.");
}

template <class V>
void describe_nic(V& v, FpoUplinkStatus& nic)
{
    uint32_t known = nic.models;
    v.optional("models", known, Bits{fpo_models}, "The offload models that it knows; the rest follows.");
    FpoUplinkStatus result = nic;
    v.derive([&] { result = default_nic(known); });
    uint32_t flows = result.max_flows, counters = result.max_counters;
    uint64_t actions = result.actions;
    v.derived("maxFlows", flows, number(), "Absent: follows from the models.");
    v.derived("maxCounters", counters, number(), "Absent: follows from the models.");
    v.derived("actions", actions, number(), "A bit each. Absent: follows from the models.");
    v.derive([&] {
        result.max_flows = flows;
        result.max_counters = counters;
        result.actions = actions;
        nic = result;
    });
}

template <class V>
void describe_features(V& v, SwitchFeatures& features)
{
    v.optional("numaTeam", features.numa_team, Flag{}, "Unless its host property says otherwise, as do the next two.");
    v.optional("burstSize", features.burst_size, number(), "");
    v.optional("overlayL2Flow", features.overlay_l2_flow, number(), "");
    v.optional("minFlowLayer", features.min_flow_layer, number(), "");
    v.optional("lro", features.lro, number(), "Large receive offload.");
    v.optional("nic", features.nic, object_format([](auto& w, FpoUplinkStatus& nic) { describe_nic(w, nic); }),
               "What its uplinks can offload.");
}

template <class V>
void describe_injected(V& v, InjectedTraffic& injected, const Switch& owner)
{
    LBTraffic& traffic = injected.traffic;
    const uint64_t last_port = owner.ports.empty() ? 0 : owner.ports.size() - 1;
    uint32_t direction = static_cast<uint32_t>(traffic.direction);
    v.required("direction", direction, number(0, static_cast<uint64_t>(LBDirection::port_to_port)), "");
    v.check(!owner.ports.empty(), "direction", "no traffic, since the switch has no ports");
    v.required("sourcePort", traffic.source_port, number(0, last_port), "A position in the list of ports.");
    v.optional("sourceQueue", traffic.source_queue, number(), "");
    v.required("destinationPort", traffic.destination_port, number(0, last_port), "");
    v.optional("destinationQueue", traffic.destination_queue, number(), "");
    v.optional("packets", traffic.packet_rate, number(), "A second.");
    v.optional("bytes", traffic.byte_rate, number(), "A second.");
    v.derive([&] { traffic.direction = static_cast<LBDirection>(direction); });
}

template <class V>
void describe_lb(V& v, SwitchLb& lb, const Switch& owner)
{
    v.optional("metric", lb.metric, OneOf{lb_metrics}, "Unless its host property names another.");
    v.optional("parameters", lb.parameters, object_format([](auto& w, uint64_t(&values)[lb_parameters]) {
                   for (size_t i = 0; i < lb_parameters; ++i)
                       w.optional(lb_parameter_names[i], values[i], number(), "");
               }),
               "");
    v.optional("injected", lb.injected,
               list(object_format([&](auto& w, InjectedTraffic& injected) { describe_injected(w, injected, owner); }),
                    1 << 16),
               "Traffic that was injected, from the start on.");
    v.derived("debugText", lb.debug_text, text(lb_debug_bytes, 0), "Absent: how the ports were placed.");
}

// --- MAC tables ---

template <class V>
void describe_mac(V& v, Mac& mac, const Switch& owner)
{
    v.required("port", mac.port, number(0, max_ports - 1), "");
    const Port* port = find_port(owner, mac.port);
    v.check(port, "port", "the number of a port of this switch");
    v.required("mac", mac.entry.mac, MacFormat{}, "");
    v.optional("vlan", mac.entry.vlan, number(0, max_vlan), "");
    v.optional("static", mac.is_static, Flag{}, "Whether it was added and never ages; else the switch learned it.");
    v.derived("generation", mac.generation, number(),
              "When it was learned, counted in half minutes. Absent: at the start.");
    v.derive([&] { mac.entry.qdp_port = port->entry.qdp_port; });
}

struct MacInVlan {
    uint64_t key;

    auto operator<=>(const MacInVlan&) const = default;
};

inline std::string display_text(const MacInVlan& address)
{
    constexpr unsigned mac_bits = 48;
    return MacFormat::text_of(address.key & ((uint64_t{1} << mac_bits) - 1)) + " in VLAN " +
           std::to_string(address.key >> mac_bits);
}

inline size_t most_of_a_port(const MacTable& table)
{
    std::map<uint32_t, size_t> counts;
    size_t most = 0;
    for (const Mac& mac : table.macs)
        most = std::max(most, ++counts[mac.port]);
    return most;
}

// What a switch has learned of its ports, within the table's limits.
inline std::vector<Mac> learned_macs(const Switch& owner)
{
    std::vector<Mac> macs = default_macs(owner, mac_generation(Host{}));
    std::map<uint32_t, uint32_t> counts;
    std::erase_if(macs, [&](const Mac& mac) { return ++counts[mac.port] > owner.mac_table.port_limit; });
    macs.resize(std::min<size_t>(macs.size(), owner.mac_table.limit));
    return macs;
}

template <class V>
void describe_mac_table(V& v, MacTable& table, const Switch& owner)
{
    v.optional("limit", table.limit, number(0, max_switch_macs), "The most entries.");
    v.optional("portLimit", table.port_limit, number(0, max_port_macs), "The most entries of a port.");
    v.derive([&] { table.macs = learned_macs(owner); });
    v.derived("macs", table.macs,
              list(object_format([&](auto& w, Mac& mac) {
                       w.derive([&] { mac.generation = mac_generation(Host{}); });
                       describe_mac(w, mac, owner);
                   }),
                   max_switch_macs, "MAC address and VLAN",
                   [](const Mac& mac) { return MacInVlan{address_key(mac.entry)}; }),
              "Absent: what the switch learns of its ports.");
    v.check(table.macs.size() <= table.limit, "limit", "room for all entries of the table");
    v.check(most_of_a_port(table) <= table.port_limit, "portLimit", "room for the entries of each port");
    std::vector<uint32_t> over_limit(table.ports_over_limit.begin(), table.ports_over_limit.end());
    v.optional("portsOverLimit", over_limit, list(number(0, max_ports - 1), max_ports),
               "Those that were refused an entry.");
    v.derive([&] { table.ports_over_limit = {over_limit.begin(), over_limit.end()}; });
}

// --- Switches ---

// max_switches when all numbers are taken.
inline uint32_t lowest_free_switch(const Host& host)
{
    uint32_t number = 0;
    while (number < max_switches && has_datapath_switch(host, number))
        ++number;
    return number;
}

template <class V>
void describe_lcores(V& v, SwitchListEntry& entry, const Host& host)
{
    std::vector<uint32_t> lcores;
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        if (entry.lcore_mask >> lcore & 1)
            lcores.push_back(lcore);
    uint64_t taken = 0;
    v.derive([&] {
        for (const Switch& other : host.switches)
            taken |= other.entry ? other.entry->lcore_mask : 0;
        for (uint32_t lcore = 0; lcore < max_lcores && lcores.size() < lcores_of_a_switch; ++lcore)
            if (!(taken >> lcore & 1))
                lcores.push_back(lcore);
    });
    v.derived("lcores", lcores,
              list(number(0, max_lcores - 1), max_lcores, "number", [](uint32_t each) { return each; }),
              "Those that forward its packets. Absent: the next four.");
    v.derive([&] {
        entry.lcore_mask = 0;
        for (const uint32_t lcore : lcores)
            entry.lcore_mask |= uint64_t{1} << lcore;
        entry.num_lcores = static_cast<uint32_t>(lcores.size());
    });
    v.check(!(taken & entry.lcore_mask), "lcores", "lcores that no other switch has");
}

// What a switch of the datapath has.
template <class V>
void describe_datapath_switch(V& v, Switch& owner, const Host& host, Order& order)
{
    if (!owner.entry)
        owner.entry.emplace();
    SwitchListEntry& entry = *owner.entry;
    v.derive([&] {
        entry = {};
        entry.switch_number = lowest_free_switch(host);
        std::snprintf(entry.name, sizeof entry.name, "%s", owner.config.alias.c_str());
    });
    v.defaults([&] {
        entry.mtu = 1500;
        entry.max_ports = max_ports;
    });
    v.derived("number", entry.switch_number, number(0, max_switches - 1), "Absent: the lowest that is free.");
    v.check(entry.switch_number < max_switches, "number", "at most 16 switches of the datapath");
    static_assert(max_switches == 16);
    v.check(std::ranges::none_of(host.switches,
                                 [&](const Switch& other) {
                                     return &other != &owner && other.entry &&
                                            other.entry->switch_number == entry.switch_number;
                                 }),
            "number", "a number that no other switch has");
    v.derived("portset", entry.name, text(), "The name that the datapath knows it by. Absent: its alias.");
    v.optional("mtu", entry.mtu, number(), "");
    v.optional("maxPorts", entry.max_ports, number(), "");
    describe_lcores(v, entry, host);
    v.derive([&] { order.uplinks.clear(); });
    v.optional("ports", owner.ports,
               list(object_format([&](auto& w, Port& port) { describe_port(w, port, owner, order); }), max_ports,
                    "number", [](const Port& port) { return port.entry.port; }),
               "");
    v.check(owner.ports.size() <= entry.max_ports, "maxPorts", "room for the ports that are listed");
    v.derive([&] { entry.num_ports = entry.num_active_ports = static_cast<uint32_t>(owner.ports.size()); });
    v.derived("activePorts", entry.num_active_ports, number(0, max_ports), "Absent: all.");
    v.optional("settings", owner.setting,
               object_format([](auto& w, SwitchSetting& setting) { describe_setting(w, setting); }), "");
    v.optional("features", owner.features,
               object_format([](auto& w, SwitchFeatures& features) { describe_features(w, features); }), "");
    v.derive([&] { owner.lb.debug_text = default_debug_text(owner); });
    v.optional("balancer", owner.lb, object_format([&](auto& w, SwitchLb& lb) { describe_lb(w, lb, owner); }), "");
    v.derive([&] { owner.mac_table.macs = learned_macs(owner); });
    v.optional("macTable", owner.mac_table,
               object_format([&](auto& w, MacTable& table) { describe_mac_table(w, table, owner); }), "");
}

template <class V>
void describe_switch(V& v, Switch& owner, const Host& host, Order& order)
{
    SwitchConfig& config = owner.config;
    v.required("alias", config.alias, text(127), "");
    v.derive([&] {
        char id[switch_id_bytes];
        std::snprintf(id, sizeof id, "switch-%u", static_cast<unsigned>(host.switches.size() + 1));
        config.id = id;
        config.global_properties[alias_property] = value_of(std::string_view{config.alias});
    });
    v.defaults([&] { config.class_name = vswitch_class; });
    v.derived("id", config.id, text(switch_id_bytes - 1), "Absent: made up.");
    v.optional("class", config.class_name, text(127), "");
    v.optional("hostProperties", config.host_properties, PropertiesFormat{}, "");
    v.derived("globalProperties", config.global_properties, PropertiesFormat{}, "Absent: its alias.");
    bool is_in_datapath = owner.entry.has_value();
    v.defaults([&] { is_in_datapath = true; });
    v.optional("datapath", is_in_datapath, Flag{},
               "Whether it is a switch of the datapath, which has all that follows.");
    v.when(is_in_datapath, [&] { describe_datapath_switch(v, owner, host, order); });
}

}  // namespace host::scenario
