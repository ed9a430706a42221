// Uplinks: their private statistics, the filters that steer traffic to their queues, filter classes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/uplink.h"

namespace host {

struct Port;
struct Switch;

// A counter that only an uplink's driver knows.
struct PrivateCounter {
    std::string name;
    uint64_t per_second;
};

// A receive filter of a vNIC, and the queues of its switch's uplinks that it steers to.
struct ReceiveFilter {
    NetQFilterType type;
    NetQMacKey mac;        // of the MAC filters
    NetQTunnelKey tunnel;  // of the GENEVE and VXLAN filters
    struct Queue {
        uint32_t uplink;  // port
        uint32_t queue;
        int64_t filter_id;
    };
    std::vector<Queue> queues;
};

inline bool is_tunnel(NetQFilterType type)
{
    return type == NetQFilterType::geneve || type == NetQFilterType::vxlan;
}

std::vector<const Port*> uplinks_of(const Switch& owner);

// What an uplink's driver counts, and the filter of a vNIC, when nobody describes them.
std::vector<PrivateCounter> default_private_counters(const Port& uplink);
ReceiveFilter default_filter(const std::vector<const Port*>& uplinks, const Port& vnic, int64_t filter_id);

}  // namespace host
