// How ports and switches are configured beyond the inventory: filters, features, pins, flow cache switches.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/port_conf.h"
#include "platform/ports.h"

namespace host {

void enable(PortConf& conf, PortFeature feature);

struct PortSetting {
    PortConf conf{};
    TxUplinks tx_uplinks{};
    std::optional<PortListEntry> unpinned;  // where the queues ran before a migration pinned them
};

struct SwitchSetting {
    bool learns_uplink_macs = true;
    bool has_flowcache = true;
    bool panics_on_tx_hang = false;
    uint16_t filter_types = 0x7;  // receive filter classes, unless the switch's property says otherwise
};

// What a port has whose configuration nobody describes: it follows from the port's number.
PortConf default_conf(const PortListEntry& entry);
TxUplinks default_tx_uplinks(const PortListEntry& entry, const std::vector<uint16_t>& uplinks);

}  // namespace host
