// The SmartNIC's port model: host PFs, LIFs, mux VLAN ports, output ports, mux mode, RSS overrides, log level, aging.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "host/state/traffic.h"
#include "platform/mux.h"
#include "platform/p4_ports.h"
#include "platform/p4_settings.h"

namespace host {

// Types of a LIF; mux VLAN ports have one too, in the output port table.
enum LifType : uint8_t { uplink_lif = 1, pf_lif = 2, vf_lif = 3, vlan_port_lif = 4 };

inline constexpr uint16_t port_is_up = 1;  // the status of ports that carry traffic

// What a switch in mux mode has.
struct MuxSwitch {
    std::map<uint32_t, MuxVlanEntry> vlans;            // by FC port
    std::map<uint32_t, ShadowPortEntry> shadow_ports;  // by FC port
};

// What a port of the SmartNIC carries.
struct P4Traffic {
    Traffic rx, tx;
};

struct SmartNic {
    std::optional<uint32_t> uplink_switch;  // whose uplinks end in the SmartNIC
    P4HostPfs host_pfs{};
    std::map<uint32_t, P4LifPort> lifs;                                    // by LIF number
    std::map<uint32_t, P4VlanPort> vlan_ports;                             // by mux VLAN
    std::map<uint32_t, uint16_t> default_vlans;                            // by port; 0 where none is set
    std::map<uint32_t, uint16_t> fc_ports;                                 // by port: the switch's port behind it
    std::map<uint32_t, MuxSwitch> mux_switches;                            // by switch number
    std::map<std::pair<uint32_t, uint32_t>, P4RssOverride> rss_overrides;  // by switch number and port
    P4LogLevel log_level{};
    std::map<uint32_t, P4Traffic> traffic;         // by port; of those whose traffic does not follow from their number
    std::map<uint32_t, uint32_t> aging_intervals;  // by selector; those that have been set

    // Whether the host has a SmartNIC at all.
    bool is_present() const;

    // Null when there is no such object.
    const P4LifPort* lif(uint32_t number) const;
    const P4VlanPort* vlan_port(uint32_t mux_vlan) const;
    const MuxSwitch* mux_switch(uint32_t switch_number) const;

    // The output port table, by destination port: a row for the source port of every LIF and of every mux VLAN port.
    std::map<uint32_t, P4OutputPort> output_ports() const;
    std::optional<P4OutputPort> output_port(uint32_t port) const;
    std::vector<P4OutputPort> uplinks() const;
    P4Traffic traffic_of(uint32_t port) const;

    // The port that the switch's port lies behind; 0 when there is none.
    uint16_t port_of(uint32_t fc_port) const;

    P4RssOverride rss_override(uint32_t switch_number, uint32_t port) const;
    uint32_t aging_interval(uint32_t selector) const;

    // Takes away the port and what has it as its source port. False when there is no such port.
    bool delete_port(uint32_t port);
};

// How the pipeline marks what comes in from a port.
uint16_t tag_of(uint32_t port);

}  // namespace host
