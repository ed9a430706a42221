// Answers about the datapath's MAC tables.
#include <algorithm>

#include "host/answers/answer.h"

namespace host {

namespace {

constexpr std::byte group_address{1};  // bit of a MAC address's first byte

// What is dumped of a table: a header and the entries with their age.
uint32_t put_table(const Host& host, const std::vector<Mac>& macs, MacTableHeader header, Output output)
{
    Value answer(sizeof header);
    for (const Mac& mac : macs) {
        MacEntry entry = mac.entry;
        entry.generation_difference = mac.is_static ? 0 : static_cast<uint32_t>(mac_generation(host) - mac.generation);
        const ByteSpan bytes = bytes_of(entry);
        answer.insert(answer.end(), bytes.begin(), bytes.end());
        ++header.count;
    }
    std::memcpy(answer.data(), &header, sizeof header);
    return output.put(ByteSpan{answer});
}

uint32_t dump_port_table(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    if (!host.port(switch_number, port))
        return status_not_found;
    const MacTable& table = host.datapath_switch(switch_number)->mac_table;
    std::vector<Mac> of_port;
    std::ranges::copy_if(table.macs, std::back_inserter(of_port), [&](const Mac& mac) { return mac.port == port; });
    return put_table(host, of_port, {0, 0, table.port_limit, table.ports_over_limit.contains(port)}, output);
}

uint32_t dump_switch_table(Host& host, uint32_t switch_number, Output output)
{
    const Switch* owner = host.datapath_switch(switch_number);
    if (!owner)
        return status_not_found;
    return put_table(host, owner->mac_table.macs, {0, 0, owner->mac_table.limit, 0}, output);
}

uint32_t clear_port_table(Host& host, uint32_t switch_number, uint32_t port)
{
    if (!host.port(switch_number, port))
        return status_not_found;
    MacTable& table = host.datapath_switch(switch_number)->mac_table;
    std::erase_if(table.macs, [&](const Mac& mac) { return mac.port == port; });
    table.ports_over_limit.erase(port);
    return status_success;
}

uint32_t clear_switch_table(Host& host, uint32_t switch_number)
{
    Switch* owner = host.datapath_switch(switch_number);
    if (!owner)
        return status_not_found;
    owner->mac_table.macs.clear();
    owner->mac_table.ports_over_limit.clear();
    return status_success;
}

// An address that is known at another port moves.
uint32_t add_entry(Host& host, MacTable& table, const Port& port, const MacEntry& entry)
{
    const auto others_of_port = std::ranges::count_if(
        table.macs, [&](const Mac& mac) { return mac.port == port.entry.port && !is_same_address(mac.entry, entry); });
    if (others_of_port >= table.port_limit || table.macs.size() >= table.limit) {
        table.ports_over_limit.insert(port.entry.port);
        return status_refused;
    }
    std::erase_if(table.macs, [&](const Mac& mac) { return is_same_address(mac.entry, entry); });
    table.macs.push_back({port.entry.port, entry, true, mac_generation(host)});
    return status_success;
}

uint32_t remove_entry(MacTable& table, const Port& port, const MacEntry& entry)
{
    const auto removed = std::erase_if(
        table.macs, [&](const Mac& mac) { return mac.port == port.entry.port && is_same_address(mac.entry, entry); });
    return removed ? status_success : status_not_found;
}

uint32_t mac_entry_ops(Host& host, uint32_t switch_number, uint32_t port_number, ByteSpan mac, uint16_t vlan,
                       uint8_t operation)
{
    const Port* port = host.port(switch_number, port_number);
    if (!port)
        return status_not_found;
    if (mac.size() != mac_bytes || (mac[0] & group_address) != std::byte{} || vlan > max_vlan)
        return status_bad_parameter;

    MacEntry entry{};
    std::memcpy(entry.mac, mac.data(), sizeof entry.mac);
    entry.vlan = vlan;
    entry.qdp_port = port->entry.qdp_port;
    MacTable& table = host.datapath_switch(switch_number)->mac_table;
    switch (static_cast<MacOperation>(operation)) {
    case MacOperation::add:
        return add_entry(host, table, *port, entry);
    case MacOperation::remove:
        return remove_entry(table, *port, entry);
    }
    return status_bad_parameter;
}

const Answer mac_table_answers[] = {
    {"Qdp_Dump_Port_MAC_Table", dump_port_table},   {"Qdp_Dump_Switch_MAC_Table", dump_switch_table},
    {"Qdp_Clear_Port_MAC_Table", clear_port_table}, {"Qdp_Clear_Switch_MAC_Table", clear_switch_table},
    {"Qdp_MAC_Entry_Ops", mac_entry_ops},
};

}  // namespace

}  // namespace host
