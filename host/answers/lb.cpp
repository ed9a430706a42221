// Answers of the thread load balancer about its settings, its debug buffers and injected traffic.
#include <algorithm>

#include "host/answers/answer.h"
#include "host/state/property.h"

namespace host {

namespace {

SwitchBalancer* balancer_of(Host& host, uint32_t switch_number)
{
    Switch* owner = host.datapath_switch(switch_number);
    return owner ? &owner->balancer : nullptr;
}

// The switch's host property names the metric; without one the balancer keeps its own.
uint32_t metric_of(const Switch& owner)
{
    const auto settings = property<LBSettings>(owner, load_balancer_property);
    return settings && settings->version == 0 ? settings->metric : static_cast<uint32_t>(owner.balancer.metric);
}

uint32_t get_parameters(Host& host, std::string_view portset, Output output)
{
    const Switch* owner = host.switch_by_portset(portset);
    if (!owner)
        return not_found;
    LBParameters parameters{};
    parameters.metric = metric_of(*owner);
    std::ranges::copy(owner->balancer.parameters, parameters.values);
    return output.put(parameters);
}

uint32_t set_parameter(Host& host, std::string_view portset, uint32_t parameter, uint64_t value)
{
    Switch* owner = host.switch_by_portset(portset);
    if (!owner)
        return not_found;
    if (parameter >= lb_parameters)
        return bad_parameter;
    owner->balancer.parameters[parameter] = value;
    owner->balancer.log(host.clock.nanoseconds(),
                        "parameter " + std::to_string(parameter) + " = " + std::to_string(value));
    return success;
}

uint32_t dump_debug_buffer(Host& host, uint32_t switch_number, int8_t, Output output)
{
    const SwitchBalancer* balancer = balancer_of(host, switch_number);
    return balancer ? output.put(std::as_bytes(std::span{balancer->debug_text})) : not_found;
}

uint32_t flush_debug_buffer(Host& host, uint32_t switch_number)
{
    SwitchBalancer* balancer = balancer_of(host, switch_number);
    if (!balancer)
        return not_found;
    balancer->debug_text.clear();
    return success;
}

uint32_t inject_traffic(Host& host, const LBTrafficRequest* request)
{
    if (!request || request->count == 0 || request->count > max_lb_traffic)
        return bad_parameter;
    Switch* owner = host.datapath_switch(request->switch_number);
    if (!owner)
        return not_found;

    const std::span traffic{request->entries, request->count};
    const bool is_possible = std::ranges::all_of(traffic, [&](const LBTraffic& each) {
        return each.direction <= LBDirection::port_to_port && each.source_port < owner->ports.size() &&
               each.destination_port < owner->ports.size();
    });
    if (!is_possible)
        return bad_parameter;

    const uint64_t now = host.clock.nanoseconds();
    for (const LBTraffic& each : traffic)
        owner->balancer.inject(now, each);
    owner->balancer.log(now, "traffic of " + std::to_string(traffic.size()) + " flows injected");
    return success;
}

const Answer answers[] = {
    {"Qdp_GetLBParams", get_parameters},       {"Qdp_SetLBParam", set_parameter},
    {"Qdp_DumpLBDebugBuf", dump_debug_buffer}, {"Qdp_FlushLBDebugBuf", flush_debug_buffer},
    {"Qdp_InjectLBTraffic", inject_traffic},
};

}  // namespace

}  // namespace host
