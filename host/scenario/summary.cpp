// A scenario in numbers: what a host has, and how many of each.
#include <algorithm>

#include "host/call/json.h"
#include "host/scenario/scenario.h"

namespace host::scenario {

namespace {

size_t flows_of(const Host& host, const Switch& owner)
{
    size_t count = 0;
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        if (owner.entry->lcore_mask >> lcore & 1)
            count += host.flowcache.tables->of(lcore).size();
    return count;
}

size_t offloaded_flows(const Host& host)
{
    size_t count = 0;
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        count += static_cast<size_t>(std::ranges::count_if(host.flowcache.tables->of(lcore),
                                                           [](const Flow& flow) { return flow.offload.has_value(); }));
    return count;
}

// Of a switch that only the switch state library knows there is nothing but its alias.
Json switch_summary(const Host& host, const Switch& owner)
{
    if (!owner.entry)
        return Json::object({{"alias", owner.config.alias}});
    return Json::object({{"alias", owner.config.alias},
                         {"number", owner.entry->switch_number},
                         {"MTU", owner.entry->mtu},
                         {"lcores", owner.entry->num_lcores},
                         {"ports", owner.ports.size()},
                         {"uplinks", uplinks_of(owner).size()},
                         {"MACs", owner.mac_table.macs.size()},
                         {"flows", flows_of(host, owner)}});
}

Json smartnic_summary(const Host& host)
{
    const SmartNic& nic = host.smartnic;
    const Json ports = Json::object({{"host PFs", nic.host_pfs.count},
                                     {"LIFs", nic.lifs.size()},
                                     {"VLAN ports", nic.vlan_ports.size()},
                                     {"switches in mux mode", nic.mux_switches.size()}});
    const Json tables = Json::object({{"offloaded flows", offloaded_flows(host)},
                                      {"tunnels", host.hardware_tables.tunnels.size()},
                                      {"mirror sessions", host.pipeline.mirror_sessions.size()},
                                      {"port mirrors", host.pipeline.port_mirrors.size()},
                                      {"hardware tables", host.pipeline.tables.size()}});
    Json result = Json::object({{"ports", ports}, {"tables", tables}});
    if (nic.uplink_switch)
        result.append("switch", *nic.uplink_switch);
    return result;
}

}  // namespace

std::string summary(const Host& host)
{
    Json switches = Json::list({});
    for (const Switch& owner : host.switches)
        switches.add(switch_summary(host, owner));
    const Json elsewhere = Json::object(
        {{"devices", host.placement.devices.size()}, {"L3 SPAN records", host.l3span_records.records.size()}});
    Json result = Json::object({{"switches", switches}, {"elsewhere", elsewhere}});
    if (host.smartnic.is_present())
        result.append("smartnic", smartnic_summary(host));
    return text_of(result);
}

}  // namespace host::scenario
