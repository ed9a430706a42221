// Uplinks: their private statistics, the filters that steer traffic to their queues, filter classes.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/uplink.h"

namespace host {

struct Host;

using PortAddress = std::pair<uint32_t, uint32_t>;  // switch number and port

// A counter that only an uplink's driver knows.
struct PrivateCounter {
    std::string name;
    uint64_t per_second;
};

// A receive filter of a vNIC, and the queues of its switch's uplinks that it steers to.
struct ReceiveFilter {
    PortAddress vnic;
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

struct Uplinks {
    std::map<PortAddress, std::vector<PrivateCounter>> private_counters;  // of the uplinks whose drivers have some
    std::vector<ReceiveFilter> filters;
    std::map<uint32_t, uint16_t> filter_types;  // by switch number, unless the switch's property says otherwise
};

// Of the built-in host, whose switches stand already.
Uplinks default_uplinks(const Host& host);

}  // namespace host
