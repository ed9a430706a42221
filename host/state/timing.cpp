// Host-wide timing of flows and of their offload.
#include "host/state/timing.h"

#include "host/host.h"

namespace host {

Timing default_timing(const Host&)
{
    return {
        .flow_timeout = 10,
        .reval = {.enabled = 1, .inject_packet = 0, .flow_scan_quota = 256, .reval_interval = 1000},
        .conntrack_delay = {.num_packets = 16, .enabled = 0},
        .refresh_packet_injection = 1,
    };
}

}  // namespace host
