// Answers to commands on ports and switches, and about how ports are configured.
#include <algorithm>

#include "host/answers/answer.h"
#include "platform/lb.h"

namespace host {

namespace {

// Which queues of a port are meant.
constexpr uint32_t tx_queues = 1;
constexpr uint32_t rx_queues = 2;
constexpr uint32_t both = tx_queues | rx_queues;

// A port's LRO is a setting of its own or its switch's.
uint32_t get_port_conf(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    const Port* found = host.port(switch_number, port);
    if (!found)
        return status_not_found;
    PortConf conf = found->setting.conf;
    if (found->lro.value_or(host.datapath_switch(switch_number)->features.lro))
        enable(conf, PortFeature::lro);
    return output.put(conf);
}

uint32_t get_port_tx_uplink(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    const Port* found = host.port(switch_number, port);
    return found ? output.put(found->setting.tx_uplinks) : status_not_found;
}

// Moves the queues that run on an lcore to another one. True when there were any.
bool move(std::span<uint8_t> queue_lcores, uint32_t from, uint32_t to)
{
    const auto moved = std::ranges::count(queue_lcores, from);
    std::ranges::replace(queue_lcores, from, static_cast<uint8_t>(to));
    return moved != 0;
}

// The values: the lcore that the queues leave, the lcore that they move to, and which queues. Both lcores are counted
// from the switch's first, as the inventory counts them. The queues stay pinned until they are unpinned.
uint32_t migrate_port(Host& host, uint32_t switch_number, uint32_t port_number, uint32_t from, uint32_t to,
                      uint32_t queues)
{
    Port* port = host.port(switch_number, port_number);
    if (!port)
        return status_not_found;
    if (host.lb_is_automatic)
        return status_lb_is_automatic;
    if (to >= host.datapath_switch(switch_number)->entry->num_lcores || queues == 0 || queues > both)
        return status_bad_parameter;

    PortListEntry& entry = port->entry;
    const PortListEntry before = entry;
    bool moved = false;
    if (queues & tx_queues)
        moved |= move({entry.tx_queue_lcores, entry.num_tx_queues}, from, to);
    if (queues & rx_queues)
        moved |= move({entry.rx_queue_lcores, entry.num_rx_queues}, from, to);
    if (!moved)
        return status_not_found;
    if (!port->setting.unpinned)
        port->setting.unpinned = before;
    return status_success;
}

// The value says which queues go back to where they ran before they were migrated.
uint32_t unpin_port(Host& host, uint32_t switch_number, uint32_t port_number, uint32_t queues)
{
    Port* port = host.port(switch_number, port_number);
    if (!port || !port->setting.unpinned)
        return status_not_found;
    if (queues == 0 || queues > both)
        return status_bad_parameter;

    PortListEntry& entry = port->entry;
    const PortListEntry& before = *port->setting.unpinned;
    if (queues & tx_queues)
        std::ranges::copy(before.tx_queue_lcores, entry.tx_queue_lcores);
    if (queues & rx_queues)
        std::ranges::copy(before.rx_queue_lcores, entry.rx_queue_lcores);
    if (std::ranges::equal(before.tx_queue_lcores, entry.tx_queue_lcores) &&
        std::ranges::equal(before.rx_queue_lcores, entry.rx_queue_lcores))
        port->setting.unpinned.reset();
    return status_success;
}

// Nothing stays pinned, and the switch learns the port's addresses anew. The value is not looked at.
uint32_t reset_port(Host& host, uint32_t switch_number, uint32_t port_number, uint32_t)
{
    const Port* port = host.port(switch_number, port_number);
    if (!port)
        return status_not_found;
    unpin_port(host, switch_number, port_number, both);  // refused when it is not pinned, which is as well
    relearn_macs(host, *host.datapath_switch(switch_number), *port);
    return status_success;
}

// Switches something of a switch on or off; what follows from a change is done then.
uint32_t set(Host& host, uint32_t switch_number, bool SwitchSetting::*what, uint32_t enable,
             void (*follow)(Host& host, Switch& owner, bool is_on))
{
    Switch* owner = host.datapath_switch(switch_number);
    if (!owner)
        return status_not_found;
    if (enable > 1)
        return status_bad_parameter;
    const bool is_on = enable == 1;
    if (owner->setting.*what == is_on)
        return status_success;
    owner->setting.*what = is_on;
    if (follow)
        follow(host, *owner, is_on);
    return status_success;
}

// A switch that no longer learns from its uplinks forgets what it has learned there.
void relearn_uplinks(Host& host, Switch& owner, bool)
{
    for (const Port& port : owner.ports)
        if (is_a(port, ClientType::uplink))
            relearn_macs(host, owner, port);
}

uint32_t set_uplink_mac_learn(Host& host, uint32_t switch_number, uint32_t enable)
{
    return set(host, switch_number, &SwitchSetting::learns_uplink_macs, enable, relearn_uplinks);
}

uint32_t clear_switch_flow_table(Host& host, uint32_t switch_number)
{
    const Switch* owner = host.datapath_switch(switch_number);
    if (!owner)
        return status_not_found;
    clear_flows(host, *owner);
    return status_success;
}

// A flow cache that is switched off loses its flows; one that is switched on begins anew.
void fill_or_clear_flows(Host& host, Switch& owner, bool is_on)
{
    is_on ? fill_flows(host, owner) : clear_flows(host, owner);
}

uint32_t enable_switch_flowcache(Host& host, uint32_t switch_number, uint32_t enable)
{
    return set(host, switch_number, &SwitchSetting::has_flowcache, enable, fill_or_clear_flows);
}

uint32_t get_panic_on_tx_hang(Host& host, uint32_t switch_number, Output output)
{
    const Switch* owner = host.datapath_switch(switch_number);
    return owner ? output.put(uint32_t{owner->setting.panics_on_tx_hang}) : status_not_found;
}

uint32_t set_panic_on_tx_hang(Host& host, uint32_t switch_number, uint32_t enable)
{
    return set(host, switch_number, &SwitchSetting::panics_on_tx_hang, enable, nullptr);
}

const Answer port_setting_answers[] = {
    {"Qdp_Get_Port_Conf", get_port_conf},
    {"Qdp_Migrate_Port", migrate_port},
    {"Qdp_Unpin_Port", unpin_port},
    {"Qdp_Reset_Port", reset_port},
    {"Qdp_Get_Port_Tx_Uplink", get_port_tx_uplink},
    {"Qdp_Set_Uplink_MAC_Learn", set_uplink_mac_learn},
    {"Qdp_Clear_Switch_Flow_Table", clear_switch_flow_table},
    {"Qdp_Enable_Switch_Flow_Cache", enable_switch_flowcache},
    {"Qdp_Get_Panic_On_Tx_Hang", get_panic_on_tx_hang},
    {"Qdp_Set_Panic_On_Tx_Hang", set_panic_on_tx_hang},
};

}  // namespace

}  // namespace host
