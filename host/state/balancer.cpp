// The thread load balancer: parameters, statistics, injected traffic, debug buffers.
#include "host/state/balancer.h"

#include <cstdio>

#include "host/host.h"

namespace host {

namespace {

constexpr LBMetric default_metrics[] = {LBMetric::cpu, LBMetric::count, LBMetric::none};

SwitchBalancer switch_balancer(const Switch& owner)
{
    const SwitchListEntry& entry = *owner.entry;
    SwitchBalancer made{default_metrics[entry.switch_number % std::size(default_metrics)],
                        {1000, 85, 30, 60, 90, 20, 50'000, 100'000, 15, 10},
                        {},
                        {}};
    made.log(0, std::string{entry.name} + ": " + std::to_string(entry.num_lcores) + " lcores, " +
                    std::to_string(owner.ports.size()) + " ports");
    for (const Port& port : owner.ports)
        for (unsigned queue = 0; queue < port.entry.num_rx_queues; ++queue)
            made.log(0, port.name + " rx " + std::to_string(queue) + " -> context " +
                            std::to_string(port.entry.rx_queue_lcores[queue]));
    return made;
}

}  // namespace

void SwitchBalancer::log(uint64_t nanoseconds, const std::string& line)
{
    const uint64_t milliseconds = nanoseconds / 1'000'000;
    char time[32];
    std::snprintf(time, sizeof time, "[%5u.%03u] ", static_cast<unsigned>(milliseconds / 1000),
                  static_cast<unsigned>(milliseconds % 1000));
    debug_text += time + line + '\n';
    while (debug_text.size() > lb_debug_bytes)
        debug_text.erase(0, debug_text.find('\n') + 1);
}

Balancer default_balancer(const Host& host)
{
    Balancer made;
    for (const Switch& each : host.switches)
        if (each.entry)
            made.switches.emplace(each.entry->switch_number, switch_balancer(each));
    return made;
}

}  // namespace host
