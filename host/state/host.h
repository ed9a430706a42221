// The state of the embedded host: its switches with their ports and properties, and its clock.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/call/call.h"
#include "host/state/clock.h"
#include "host/state/features.h"
#include "host/state/flowcache.h"
#include "host/state/hardware_tables.h"
#include "host/state/l3span.h"
#include "host/state/lb.h"
#include "host/state/mac_tables.h"
#include "host/state/pipeline.h"
#include "host/state/placement.h"
#include "host/state/port_settings.h"
#include "host/state/rss_engine.h"
#include "host/state/smartnic.h"
#include "host/state/timing.h"
#include "host/state/traffic.h"
#include "host/state/uplinks.h"
#include "platform/ports.h"
#include "platform/stats.h"

namespace host {

using Properties = std::map<std::string, Value, std::less<>>;

// The flows that an uplink's NIC has taken over, and how many it takes over a second.
struct UplinkOffload {
    uint32_t flows;
    uint64_t flow_rate;
};

struct Port {
    std::string name;
    PortListEntry entry{};
    Traffic tx{}, rx{};
    std::vector<uint64_t> tx_queue_rates, rx_queue_rates;  // packets a second of each queue; empty: shared evenly
    Properties data;                                       // that the host kernel keeps for it
    PortSetting setting;
    std::optional<uint32_t> lro;                   // unless it is as the switch says
    std::vector<ReceiveFilter> filters;            // of a vNIC
    std::vector<RSSEngine> rss_engines;            // of an uplink, as is the rest
    std::vector<PrivateCounter> private_counters;  // none when the driver has none
    UplinkOffload offload{};
};

// Whether the port is of this client type.
inline bool is_a(const Port& port, ClientType client)
{
    return port.entry.client_type == static_cast<uint32_t>(client);
}

// What the switch state library knows of a switch.
struct SwitchConfig {
    std::string alias;
    std::string id;
    std::string class_name;
    Properties host_properties;
    Properties global_properties;
};

struct LoadedSwitch : SwitchConfig {
    std::string readable_id;  // callers read an id as a buffer of switch_id_bytes
};

using LoadedSwitches = std::vector<LoadedSwitch>;

struct Switch {
    SwitchConfig config;
    std::optional<SwitchListEntry> entry;  // of a switch of the datapath, as is the rest
    std::vector<Port> ports;
    SwitchSetting setting;
    SwitchFeatures features;
    SwitchLb lb;
    MacTable mac_table;
};

struct Host {
    // Defined in one place, which spares every user of the type a good deal of code.
    Host();
    Host(const Host& other);
    Host(Host&& other) noexcept;
    Host& operator=(const Host& other);
    Host& operator=(Host&& other) noexcept;
    ~Host();

    Clock clock;
    std::vector<Switch> switches;

    // The switch state library's snapshot; empty until a configuration is loaded into it. Handles point into it.
    std::shared_ptr<const LoadedSwitches> loaded = std::make_shared<const LoadedSwitches>();

    Flowcache flowcache;
    Placement placement;
    bool lb_is_automatic = false;  // it then moves ports' queues and filters alone
    Timing timing;
    L3SpanRecords l3span_records;
    SmartNic smartnic;
    Pipeline pipeline;
    HardwareTables hardware_tables;

    // Null when the host has no such object.
    Switch* datapath_switch(uint32_t switch_number);
    Port* port(uint32_t switch_number, uint32_t port);
    Port* uplink(uint32_t switch_number, uint32_t port);
    Switch* switch_by_id(std::string_view id);
    Switch* switch_by_portset(std::string_view portset_name);
};

// Whether a handle points to a switch of a snapshot, or to a property of one.
bool has_switch(const LoadedSwitches& loaded, const void* handle);
bool has_property(const LoadedSwitches& loaded, const void* handle);

// The port of a switch with this number, or null.
const Port* find_port(const Switch& owner, uint32_t number);

}  // namespace host
