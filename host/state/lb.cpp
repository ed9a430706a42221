// The thread load balancer: parameters, statistics, injected traffic, debug buffers.
#include "host/state/lb.h"

#include <cstdio>

#include "host/state/host.h"

namespace host {

namespace {

std::string timed(uint64_t nanoseconds, const std::string& line)
{
    const uint64_t milliseconds = nanoseconds / 1'000'000;
    char time[32];
    std::snprintf(time, sizeof time, "[%5u.%03u] ", static_cast<unsigned>(milliseconds / 1000),
                  static_cast<unsigned>(milliseconds % 1000));
    return time + line + '\n';
}

void keep_newest_lines(std::string& text)
{
    if (text.size() > lb_debug_bytes)
        text.erase(0, text.find('\n', text.size() - lb_debug_bytes - 1) + 1);
}

}  // namespace

void SwitchLb::inject(uint64_t now, const LBTraffic& traffic)
{
    if (injected.size() >= max_injected_flows)
        injected.erase(injected.begin(), injected.begin() + max_injected_flows / 2);
    injected.push_back({now, traffic});
}

void SwitchLb::log(uint64_t nanoseconds, const std::string& line)
{
    debug_text += timed(nanoseconds, line);
    keep_newest_lines(debug_text);
}

std::string default_debug_text(const Switch& owner)
{
    const SwitchListEntry& entry = *owner.entry;
    const std::string name{entry.name, strnlen(entry.name, sizeof entry.name)};
    std::string result = timed(0, name + ": " + std::to_string(entry.num_lcores) + " lcores, " +
                                      std::to_string(owner.ports.size()) + " ports");
    for (const Port& port : owner.ports)
        for (unsigned queue = 0; queue < port.entry.num_rx_queues; ++queue)
            result += timed(0, port.name + " rx " + std::to_string(queue) + " -> context " +
                                   std::to_string(port.entry.rx_queue_lcores[queue]));
    keep_newest_lines(result);
    return result;
}

}  // namespace host
