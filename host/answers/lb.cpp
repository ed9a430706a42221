// Answers of the thread load balancer about its settings, its debug buffers and injected traffic.
#include <algorithm>

#include "host/answers/answer.h"
#include "host/state/property.h"

namespace host {

namespace {

SwitchLb* lb_of(Host& host, uint32_t switch_number)
{
    Switch* owner = host.datapath_switch(switch_number);
    return owner ? &owner->lb : nullptr;
}

// The switch's host property names the metric; without one the load balancer keeps its own.
uint32_t metric_of(const Switch& owner)
{
    const auto settings = property<LBSettings>(owner, lb_property);
    return settings && settings->version == 0 ? settings->metric : static_cast<uint32_t>(owner.lb.metric);
}

uint32_t get_parameters(Host& host, std::string_view portset, Output output)
{
    const Switch* owner = host.switch_by_portset(portset);
    if (!owner)
        return status_not_found;
    LBParameters parameters{};
    parameters.metric = metric_of(*owner);
    std::ranges::copy(owner->lb.parameters, parameters.values);
    return output.put(parameters);
}

uint32_t set_parameter(Host& host, std::string_view portset, uint32_t parameter, uint64_t value)
{
    Switch* owner = host.switch_by_portset(portset);
    if (!owner)
        return status_not_found;
    if (parameter >= lb_parameters)
        return status_bad_parameter;
    owner->lb.parameters[parameter] = value;
    owner->lb.log(host.clock.nanoseconds(), "parameter " + std::to_string(parameter) + " = " + std::to_string(value));
    return status_success;
}

uint32_t dump_debug_buffer(Host& host, uint32_t switch_number, int8_t, Output output)
{
    const SwitchLb* lb = lb_of(host, switch_number);
    return lb ? output.put(std::as_bytes(std::span{lb->debug_text})) : status_not_found;
}

uint32_t flush_debug_buffer(Host& host, uint32_t switch_number)
{
    SwitchLb* lb = lb_of(host, switch_number);
    if (!lb)
        return status_not_found;
    lb->debug_text.clear();
    return status_success;
}

uint32_t inject_traffic(Host& host, const LBTrafficRequest* request)
{
    if (!request || request->count == 0 || request->count > max_lb_traffic)
        return status_bad_parameter;
    Switch* owner = host.datapath_switch(request->switch_number);
    if (!owner)
        return status_not_found;

    const std::span traffic{request->entries, request->count};
    const bool is_possible = std::ranges::all_of(traffic, [&](const LBTraffic& each) {
        return each.direction <= LBDirection::port_to_port && each.source_port < owner->ports.size() &&
               each.destination_port < owner->ports.size();
    });
    if (!is_possible)
        return status_bad_parameter;

    const uint64_t now = host.clock.nanoseconds();
    for (const LBTraffic& each : traffic)
        owner->lb.inject(now, each);
    owner->lb.log(now, "traffic of " + std::to_string(traffic.size()) + " flows injected");
    return status_success;
}

const Answer lb_answers[] = {
    {"Qdp_GetLBParams", get_parameters},       {"Qdp_SetLBParam", set_parameter},
    {"Qdp_DumpLBDebugBuf", dump_debug_buffer}, {"Qdp_FlushLBDebugBuf", flush_debug_buffer},
    {"Qdp_InjectLBTraffic", inject_traffic},
};

}  // namespace

}  // namespace host
