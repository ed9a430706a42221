// Host-wide timing of flows and of their offload.
#pragma once

#include <cstdint>

#include "platform/timing.h"

namespace host {

struct Host;

struct Timing {
    uint32_t flow_timeout;  // in seconds
    FpoRevalConfig reval;
    FpoConntrackDelay conntrack_delay;
    uint32_t refresh_packet_injection;
};

// Of the built-in host, whose switches stand already.
Timing default_timing(const Host& host);

}  // namespace host
