// A scenario in numbers: what a host has, and how many of each.
#include <algorithm>

#include "host/scenario/place.h"
#include "host/scenario/scenario.h"

namespace host::scenario {

namespace {

size_t flows_of(const Host& host, const Switch& owner)
{
    size_t count = 0;
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        if (owner.entry->lcore_mask >> lcore & 1)
            count += host.flow_caches.tables->of(lcore).size();
    return count;
}

size_t offloaded_flows(const Host& host)
{
    size_t count = 0;
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        count += static_cast<size_t>(std::ranges::count_if(host.flow_caches.tables->of(lcore),
                                                           [](const Flow& flow) { return flow.offload.has_value(); }));
    return count;
}

// Of a switch that only the switch state library knows there is nothing but its alias.
OrderedJson switch_summary(const Host& host, const Switch& owner)
{
    OrderedJson made{{"alias", owner.config.alias}};
    if (owner.entry)
        made.update({{"number", owner.entry->switch_number},
                     {"MTU", owner.entry->mtu},
                     {"lcores", owner.entry->num_lcores},
                     {"ports", owner.ports.size()},
                     {"uplinks", std::ranges::count_if(
                                     owner.ports, [](const Port& port) { return is_a(port, ClientType::uplink); })},
                     {"MACs", owner.mac_table.macs.size()},
                     {"flows", flows_of(host, owner)}});
    return made;
}

OrderedJson smartnic_summary(const Host& host)
{
    const SmartNic& nic = host.smartnic;
    return {{"ports",
             {{"host PFs", nic.host_pfs.count},
              {"LIFs", nic.lifs.size()},
              {"VLAN ports", nic.vlan_ports.size()},
              {"switches in mux mode", nic.mux_switches.size()}}},
            {"tables",
             {{"offloaded flows", offloaded_flows(host)},
              {"tunnels", host.hardware_tables.tunnels.size()},
              {"mirror sessions", host.pipeline.mirror_sessions.size()},
              {"port mirrors", host.pipeline.port_mirrors.size()},
              {"hardware tables", host.pipeline.tables.size()}}}};
}

bool has_smartnic(const SmartNic& nic)
{
    return nic.host_pfs.count > 0 || !nic.lifs.empty() || !nic.vlan_ports.empty() || !nic.mux_switches.empty();
}

}  // namespace

std::string summary(const Host& host)
{
    OrderedJson made{
        {"switches", OrderedJson::array()},
        {"elsewhere",
         {{"devices", host.placement.devices.size()}, {"L3 SPAN records", host.l3span_records.records.size()}}}};
    for (const Switch& owner : host.switches)
        made["switches"].push_back(switch_summary(host, owner));
    if (has_smartnic(host.smartnic)) {
        made["smartnic"] = smartnic_summary(host);
        if (host.smartnic.uplink_switch)
            made["smartnic"]["switch"] = *host.smartnic.uplink_switch;
    }
    return made.dump(-1, ' ', true, OrderedJson::error_handler_t::replace);
}

}  // namespace host::scenario
