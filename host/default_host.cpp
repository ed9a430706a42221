// The host that is built in: three switches of the datapath and one that is not, with ports of every client type.
#include <bit>
#include <cstdio>

#include "host/host.h"
#include "platform/switch_state.h"
#include "platform/uplink.h"

namespace host {

namespace {

constexpr uint32_t representor_types = 16;

Switch vswitch(const char* alias, const char* id, const char* name, uint32_t number, uint64_t lcore_mask)
{
    Switch made{{alias, id, vswitch_class, {}, {}}, SwitchListEntry{}, {}, {}, {}, {}, {}};
    std::snprintf(made.entry->name, sizeof made.entry->name, "%s", name);
    made.entry->switch_number = number;
    made.entry->max_ports = max_ports;
    made.entry->mtu = number == 0 ? 9000 : 1500;
    made.entry->num_lcores = static_cast<uint32_t>(std::popcount(lcore_mask));
    made.entry->lcore_mask = lcore_mask;
    return made;
}

// Adds a port; its queues are spread over the switch's lcores, and its traffic follows from its number.
PortListEntry& add_port(Switch& owner, std::string name, ClientType client, uint32_t tx_queues, uint32_t rx_queues)
{
    const auto number = static_cast<uint32_t>(owner.ports.size());
    Port& port = owner.ports.emplace_back();
    port.name = std::move(name);
    port.tx = {1000 + 37 * number, 64 + 17 * (number % 80)};
    port.rx = {1500 + 53 * number, 64 + 23 * (number % 60)};
    port.offload = {1200 + 31 * number, 40 + 3 * number};

    PortListEntry& entry = port.entry;
    entry.port = number;
    entry.qdp_port = 0x04000000 + owner.entry->switch_number * 0x10000 + number;
    entry.num_tx_queues = static_cast<uint8_t>(tx_queues);
    entry.num_rx_queues = static_cast<uint8_t>(rx_queues);
    const uint8_t mac[] = {0x02,
                           0x1b,
                           0x21,
                           static_cast<uint8_t>(owner.entry->switch_number),
                           static_cast<uint8_t>(number >> 8),
                           static_cast<uint8_t>(number)};
    std::memcpy(entry.mac, mac, sizeof mac);
    entry.num_macs = static_cast<uint16_t>(client == ClientType::uplink ? 0 : 1);
    entry.client_type = static_cast<uint32_t>(client);
    for (uint32_t queue = 0; queue < tx_queues; ++queue)
        entry.tx_queue_lcores[queue] = static_cast<uint8_t>((number + queue) % owner.entry->num_lcores);
    for (uint32_t queue = 0; queue < rx_queues; ++queue)
        entry.rx_queue_lcores[queue] = static_cast<uint8_t>((number + 2 * queue) % owner.entry->num_lcores);

    owner.entry->num_ports = number + 1;
    owner.entry->num_active_ports = number + 1;
    return entry;
}

std::string numbered(const char* prefix, uint32_t number)
{
    return prefix + std::to_string(number);
}

void add_uplinks(Switch& owner, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i)
        add_port(owner, numbered("vmnic", owner.entry->switch_number * 4 + i), ClientType::uplink, 8, 8);
}

void add_vnics(Switch& owner, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i) {
        PortListEntry& entry = add_port(owner, numbered("vnic", i), ClientType::vnic, 1 + i % 4, 1 + i % 8);
        entry.flags = i % 5 == 4 ? port_flag_pass_through : 0;
    }
}

Host make_host()
{
    Host made;

    Switch production =
        vswitch("dvs-production", "50 2e 8a 10 6b 61 3f 4c-a1 9d 22 7e 05 b8 c4 01", "DvsPortset-0", 0, 0xff);
    production.config.host_properties[portset_property] = value_of("DvsPortset-0");
    production.config.global_properties[alias_property] = value_of("dvs-production");
    production.config.global_properties[fast_datapath_property] = value_of("true");
    add_uplinks(production, 2);
    add_vnics(production, 30);
    for (uint32_t i = 0; i < 4; ++i)
        add_port(production, numbered("vmk", i), ClientType::generic, 1, 1);

    // Known by its alias property alone.
    Switch storage = vswitch("dvs-storage", "50 2e 8a 10 6b 61 3f 4c-a1 9d 22 7e 05 b8 c4 02", "dvs-storage", 1, 0xf00);
    storage.config.global_properties[alias_property] = value_of("dvs-storage");
    add_uplinks(storage, 2);
    add_vnics(storage, 6);

    // Known by neither, so its id is its name. Its uplinks end in a SmartNIC, whose representors are ports too.
    Switch smart = vswitch("dvs-smartnic", "50 2e 8a 10 6b 61 3f 4c-a1 9d 22 7e 05 b8 c4 03",
                           "50 2e 8a 10 6b 61 3f 4c-a1 9d 22 7e 05 b8 c4 03", 2, 0xf000);
    add_uplinks(smart, 2);
    for (uint32_t type = 0; type < representor_types; ++type)
        for (const uint32_t flags : {0u, port_flag_pass_through}) {
            PortListEntry& entry = add_port(smart, numbered("rep", 2 * type + flags), ClientType::representor, 1, 1);
            entry.representor_type = static_cast<uint16_t>(type);
            entry.flags = flags;
        }
    add_port(smart, "unclaimed", ClientType{0}, 0, 0);

    Switch legacy{{"legacy-network", "legacy-network-0001", "overlay", {}, {}}, std::nullopt, {}, {}, {}, {}, {}};
    legacy.config.global_properties[alias_property] = value_of("legacy-network");

    for (Switch* each : {&production, &storage, &smart, &legacy})
        made.switches.push_back(std::move(*each));
    return made;
}

// What follows from the ports of a switch when they stand.
void configure(Switch& owner, int64_t& filter_id)
{
    const uint32_t number = owner.entry->switch_number;
    const auto uplinks = uplinks_of(owner);
    std::vector<uint16_t> uplink_numbers;
    for (const Port* uplink : uplinks)
        uplink_numbers.push_back(static_cast<uint16_t>(uplink->entry.port));
    for (Port& port : owner.ports) {
        port.setting = {usual_conf(port.entry), usual_tx_uplinks(port.entry, uplink_numbers), {}};
        if (is_a(port, ClientType::vnic))
            port.filters.push_back(usual_filter(uplinks, port, filter_id++));
        if (!is_a(port, ClientType::uplink))
            continue;
        port.rss_engines = usual_rss_engines(port);
        if (number != 2 || port.entry.port == 0)
            port.private_counters = usual_private_counters(port);
    }
    constexpr uint32_t nic_models[] = {
        fpo_model_1_level_1 | fpo_model_1_level_2 | fpo_model_2a,
        0,
        fpo_model_1_level_1 | fpo_model_1_level_2 | fpo_model_2a | fpo_model_3a | fpo_model_3b,
    };
    constexpr LBMetric metrics[] = {LBMetric::cpu, LBMetric::count, LBMetric::none};
    owner.setting.filter_types = number == 2 ? 0x3 : 0x7;
    owner.features = {number == 0, 32, number == 0, number == 0 ? 2u : 3u, number != 1, usual_nic(nic_models[number])};
    owner.balancer.metric = metrics[number];
    owner.balancer.debug_text = usual_debug_text(owner);
    owner.mac_table.macs = usual_macs(owner, mac_generation(Host{}));
}

}  // namespace

Host default_host()
{
    Host made = make_host();
    int64_t filter_id = 0x100;
    for (Switch& each : made.switches)
        if (each.entry)
            configure(each, filter_id);
    made.placement = default_placement(made);
    made.timing = default_timing(made);
    made.l3span_records = default_l3span_records(made);
    made.smartnic = default_smartnic(made);
    made.flow_caches = default_flow_caches(made);  // those that are offloaded go through the SmartNIC's ports
    made.pipeline = default_pipeline(made);
    made.hardware_tables = default_hardware_tables(made);
    made.clock = Clock{};  // the time that it took to build is none of the host's
    return made;
}

}  // namespace host
