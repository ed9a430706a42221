// The thread load balancer: parameters, statistics, injected traffic, debug buffers.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/load_balancer.h"

namespace host {

struct Host;

// Traffic runs from its injection on.
struct InjectedTraffic {
    uint64_t since;  // in nanoseconds of the host's clock
    LBTraffic traffic;
};

struct SwitchBalancer {
    LBMetric metric;  // unless the switch's host property names another
    uint64_t parameters[lb_parameters];
    std::vector<InjectedTraffic> injected;
    std::string debug_text;

    // Adds a line to the debug buffer; the oldest ones leave a full one.
    void log(uint64_t nanoseconds, const std::string& line);
};

struct Balancer {
    std::map<uint32_t, SwitchBalancer> switches;  // by switch number
    bool is_automatic = false;                    // it then moves ports' queues and filters alone
};

// Of the built-in host, whose switches stand already.
Balancer default_balancer(const Host& host);

}  // namespace host
