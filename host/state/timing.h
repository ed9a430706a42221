// Host-wide timing of flows and of their offload.
#pragma once

#include <cstdint>

#include "platform/timing.h"

namespace host {

struct Timing {
    uint32_t flow_timeout = 10;  // in seconds
    FpoRevalConfig reval = {.enabled = 1, .inject_packet = 0, .flow_scan_quota = 256, .reval_interval = 1000};
    FpoConntrackDelay conntrack_delay = {.num_packets = 16, .enabled = 0};
    uint32_t refresh_packet_injection = 1;
};

}  // namespace host
