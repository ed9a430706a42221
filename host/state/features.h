// Switch features and flow offload, which the switches' host properties steer.
#pragma once

#include <cstdint>
#include <map>

#include "platform/fpo.h"

namespace host {

struct Host;

struct SwitchFeatures {
    // What holds while the switch has no host property of the kind.
    bool numa_team;
    uint32_t burst_size;
    uint32_t overlay_l2_flow;

    uint32_t min_flow_layer;
    uint32_t lro;
    std::map<uint32_t, uint32_t> port_lro;  // of the ports whose setting is their own, by number

    // What holds for a port.
    uint32_t lro_of(uint32_t port) const;

    FpoUplinkStatus nic;  // what the switch's uplinks can offload
};

struct Features {
    std::map<uint32_t, SwitchFeatures> switches;  // by number

    // Null when there is no such switch.
    SwitchFeatures* of(uint32_t switch_number);
};

// Of the built-in host, whose switches stand already.
Features default_features(const Host& host);

}  // namespace host
