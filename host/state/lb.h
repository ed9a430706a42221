// The thread load balancer: parameters, statistics, injected traffic, debug buffers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/lb.h"

namespace host {

struct Switch;

// Traffic runs from its injection on.
struct InjectedTraffic {
    uint64_t since;  // in nanoseconds of the host's clock
    LBTraffic traffic;
};

struct SwitchLb {
    LBMetric metric = LBMetric::cpu;  // unless the switch's host property names another
    uint64_t parameters[lb_parameters] = {1000, 85, 30, 60, 90, 20, 50'000, 100'000, 15, 10};
    std::vector<InjectedTraffic> injected;
    std::string debug_text;

    void inject(uint64_t now, const LBTraffic& traffic);

    // Adds a line to the debug buffer; the oldest ones leave a full one.
    void log(uint64_t nanoseconds, const std::string& line);
};

// A balancer that has so many forgets the older half.
inline constexpr size_t max_injected_flows = 65'536;

// Of a switch whose ports stand already: how it was placed, to begin with.
std::string default_debug_text(const Switch& owner);

}  // namespace host
