// Switch features and flow offload, which the switches' host properties steer.
#pragma once

#include <cstdint>

#include "platform/fpo.h"

namespace host {

struct SwitchFeatures {
    // What holds while the switch has no host property of the kind.
    bool numa_team = false;
    uint32_t burst_size = 32;
    uint32_t overlay_l2_flow = 0;

    uint32_t min_flow_layer = 3;
    uint32_t lro = 1;  // of the ports that have no setting of their own

    FpoUplinkStatus nic{};  // what the switch's uplinks can offload
};

// A NIC that knows these models; none at all offloads nothing.
FpoUplinkStatus default_nic(uint32_t models);

}  // namespace host
