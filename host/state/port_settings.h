// How ports and switches are configured beyond the inventory: filters, features, pins, flow cache switches.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "platform/port_conf.h"
#include "platform/ports.h"

namespace host {

struct Host;

// The bits of a port's features that this host knows.
struct PortFeature {
    size_t byte;
    unsigned bit;
};
inline constexpr PortFeature feature_lro{0, 2};

void enable(PortConf& conf, const PortFeature& feature);

struct PortSetting {
    PortConf conf;
    TxUplinks tx_uplinks;
    std::optional<PortListEntry> unpinned;  // where the queues ran before a migration pinned them
};

struct SwitchSetting {
    bool learns_uplink_macs = true;
    bool has_flow_cache = true;
    bool panics_on_tx_hang = false;
};

struct PortSettings {
    std::map<std::pair<uint32_t, uint32_t>, PortSetting> ports;  // by switch number and port
    std::map<uint32_t, SwitchSetting> switches;

    // Null when the host has no such object.
    PortSetting* port(uint32_t switch_number, uint32_t port_number);
    SwitchSetting* datapath_switch(uint32_t switch_number);
};

// Of the built-in host, whose switches stand already.
PortSettings default_port_settings(const Host& host);

}  // namespace host
