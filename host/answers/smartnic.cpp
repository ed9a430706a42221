// Answers about the SmartNIC's port model, of operations and of the command channel's opcodes.
#include <iterator>

#include "host/answers/p4_answer.h"
#include "platform/limits.h"

namespace host {

namespace {

// Fills a page with the records from number `start` on, as many as there is room for. A listing goes on with the number
// of the first record that is left out, and is complete when that is 0.
template <class Record, size_t room, class Number>
void fill_page(const std::map<uint32_t, Record>& table, uint32_t start, Record (&entries)[room], Number& count,
               Number& next)
{
    auto found = table.lower_bound(start);
    for (count = 0; count < room && found != table.end(); ++found)
        entries[count++] = found->second;
    next = static_cast<Number>(found == table.end() ? 0 : found->first);
}

template <class Record>
uint32_t put_page(const std::map<uint32_t, Record>& table, const P4ListRequest& request, Output response)
{
    P4ListResponse<Record> page{};
    fill_page(table, request.start_index, page.entries, page.count, page.next_index);
    return response.put(page);
}

// --- Mux mode ---

uint32_t get_mux_mode(Host& host, uint32_t switch_number, Output is_enabled)
{
    if (!host.datapath_switch(switch_number))
        return status_refused;
    return is_enabled.put(uint32_t{host.smartnic.mux_switch(switch_number) != nullptr});
}

// A switch that is not in mux mode has an empty list.
template <class Entry>
uint32_t put_mux_page(Host& host, ByteSpan bytes, Output response, std::map<uint32_t, Entry> MuxSwitch::*table)
{
    MuxListRequest request;
    if (bytes.size() != sizeof request)
        return status_refused;
    std::memcpy(&request, bytes.data(), sizeof request);
    if (!host.datapath_switch(request.switch_number))
        return status_refused;

    MuxListResponse<Entry> page{};
    if (const MuxSwitch* owner = host.smartnic.mux_switch(request.switch_number))
        fill_page(owner->*table, request.start_fc_port, page.entries, page.count, page.next_fc_port);
    return response.put(page);
}

uint32_t list_mux_vlans(Host& host, ByteSpan request, Output response)
{
    return put_mux_page(host, request, response, &MuxSwitch::vlans);
}

uint32_t list_shadow_ports(Host& host, ByteSpan request, Output response)
{
    return put_mux_page(host, request, response, &MuxSwitch::shadow_ports);
}

// --- Host PFs ---

uint32_t host_pf_set(Host& host, const P4HostPfs& pfs, Output)
{
    if (pfs.count > max_host_pfs)
        return status_bad_parameter;
    for (const uint16_t lif : pfs.lifs)
        if (lif >= max_lifs)
            return status_bad_parameter;
    host.smartnic.host_pfs = pfs;
    return status_success;
}

uint32_t host_pf_get(Host& host, Output response)
{
    return response.put(host.smartnic.host_pfs);
}

// --- LIFs ---

uint32_t lif_port_create(Host& host, const P4LifPort& lif, Output)
{
    const uint8_t known_flags = lif_flags(~0u, ~0u, ~0u);
    if (lif.lif >= max_lifs || lif.source_port >= max_p4_ports || lif.rep_port >= max_p4_ports ||
        lif.type >= max_lif_types || lif_flow_key_type.unpacked(lif.flags) >= max_flow_key_types ||
        lif_fwd_mode.unpacked(lif.flags) >= max_fwd_modes || (lif.flags & ~known_flags) != 0 ||
        lif.status >= lif_status_end)
        return status_bad_parameter;
    host.smartnic.lifs[lif.lif] = lif;
    return status_success;
}

uint32_t lif_port_update(Host& host, const P4LifUpdate& update, Output)
{
    if (update.flow_key_type >= max_flow_key_types || update.is_mux_pf > 1 || update.fwd_mode >= max_fwd_modes)
        return status_bad_parameter;
    const auto found = host.smartnic.lifs.find(update.lif);
    if (found == host.smartnic.lifs.end())
        return status_not_found;
    found->second.flags = lif_flags(update.flow_key_type, update.fwd_mode, update.is_mux_pf);
    return status_success;
}

uint32_t lif_port_list(Host& host, const P4ListRequest& request, Output response)
{
    return put_page(host.smartnic.lifs, request, response);
}

// --- Mux VLAN ports ---

uint32_t vlan_port_create(Host& host, const P4VlanPort& port, Output)
{
    if (port.mux_vlan >= max_mux_vlans || port.pf_lifs[0] >= max_lifs || port.pf_lifs[1] >= max_lifs ||
        port.source_port >= max_p4_ports || port.rep_port >= max_p4_ports || port.flow_key_type >= max_flow_key_types ||
        port.status >= vlan_port_status_end)
        return status_bad_parameter;
    host.smartnic.vlan_ports[port.mux_vlan] = port;
    return status_success;
}

uint32_t vlan_port_update(Host& host, const P4VlanPortUpdate& update, Output)
{
    if (update.flow_key_type >= max_flow_key_types)
        return status_bad_parameter;
    const auto found = host.smartnic.vlan_ports.find(update.mux_vlan);
    if (found == host.smartnic.vlan_ports.end())
        return status_not_found;
    found->second.flow_key_type = update.flow_key_type;
    return status_success;
}

uint32_t vlan_port_list(Host& host, const P4ListRequest& request, Output response)
{
    return put_page(host.smartnic.vlan_ports, request, response);
}

// --- Output ports ---

uint32_t port_update(Host& host, const P4PortUpdate& update, Output)
{
    if (update.default_vlan >= max_default_vlans)
        return status_bad_parameter;
    if (!host.smartnic.output_port(update.port))
        return status_not_found;
    host.smartnic.default_vlans[update.port] = update.default_vlan;
    return status_success;
}

uint32_t port_delete(Host& host, const P4PortDelete& request, Output)
{
    return host.smartnic.delete_port(request.port) ? status_success : status_not_found;
}

uint32_t port_list(Host& host, const P4ListRequest& request, Output response)
{
    return put_page(host.smartnic.output_ports(), request, response);
}

// --- RSS override, log level and aging ---

bool has_rss_port(Host& host, const P4RssOverride& request)
{
    return host.datapath_switch(request.switch_number) && request.port < max_rss_ports;
}

uint32_t rss_override_set(Host& host, const P4RssOverride& setting, Output)
{
    const bool is_flag = setting.is_override == 0 || setting.is_override == 1;
    if (!has_rss_port(host, setting) || !is_flag || (setting.is_override && setting.queue >= max_rss_queues))
        return status_bad_parameter;
    host.smartnic.rss_overrides[{setting.switch_number, setting.port}] = setting;
    return status_success;
}

uint32_t rss_override_get(Host& host, const P4RssOverride& request, Output response)
{
    if (!has_rss_port(host, request))
        return status_bad_parameter;
    return response.put(host.smartnic.rss_override(request.switch_number, request.port));
}

uint32_t log_level_set(Host& host, const P4LogLevel& setting, Output)
{
    if (setting.level >= max_log_levels)
        return status_bad_parameter;
    host.smartnic.log_level = setting;
    return status_success;
}

uint32_t log_level_get(Host& host, Output response)
{
    return response.put(host.smartnic.log_level);
}

uint32_t get_aging_interval(Host& host, uint32_t selector, Output interval)
{
    return interval.put(host.smartnic.aging_interval(selector));
}

uint32_t set_aging_interval(Host& host, uint32_t selector, uint32_t interval)
{
    host.smartnic.aging_intervals[selector] = interval;
    return status_success;
}

const Answer smartnic_answers[] = {
    {"Qdp_Get_Mux_Mode", get_mux_mode},           {"Qdp_List_Mux_VLAN_Info", list_mux_vlans},
    {"Qdp_List_Shadow_Ports", list_shadow_ports}, {"Qdp_GetAgingInterval", get_aging_interval},
    {"Qdp_SetAgingInterval", set_aging_interval},
};

const P4Answer smartnic_commands[] = {
    {P4Opcode::host_pf_set, host_pf_set},
    {P4Opcode::host_pf_get, host_pf_get},
    {P4Opcode::lif_port_create, lif_port_create},
    {P4Opcode::lif_port_update, lif_port_update},
    {P4Opcode::lif_port_list, lif_port_list},
    {P4Opcode::vlan_port_create, vlan_port_create},
    {P4Opcode::vlan_port_update, vlan_port_update},
    {P4Opcode::vlan_port_list, vlan_port_list},
    {P4Opcode::port_update, port_update},
    {P4Opcode::port_delete, port_delete},
    {P4Opcode::port_list, port_list},
    {P4Opcode::rss_override_set, rss_override_set},
    {P4Opcode::rss_override_get, rss_override_get},
    {P4Opcode::log_level_set, log_level_set},
    {P4Opcode::log_level_get, log_level_get},
};

}  // namespace

}  // namespace host
