// Answers about the features of switches and of their ports.
#include "host/answers/answer.h"
#include "host/state/property.h"
#include "platform/switch_state.h"

namespace host {

namespace {

// A switch that a call names by its portset, and what holds while its host properties say nothing.
struct Named {
    const Switch& owner;
    const SwitchFeatures& defaults;
};

std::optional<Named> named(Host& host, std::string_view portset_name)
{
    const Switch* owner = host.switch_by_portset(portset_name);
    return owner ? std::optional{Named{*owner, owner->features}} : std::nullopt;
}

uint32_t get_numa_team(Host& host, std::string_view portset_name, uint32_t name_bytes, Output enabled)
{
    const auto found = named(host, portset_name);
    if (!found || name_bytes != portset_name_bytes)
        return status_refused;
    const uint32_t value = setting<ByteSetting>(found->owner, numa_team_property).value_or(found->defaults.numa_team);
    return enabled.put(static_cast<uint8_t>(value));
}

uint32_t get_burst_size(Host& host, std::string_view portset_name, Output size)
{
    const auto found = named(host, portset_name);
    if (!found)
        return status_refused;
    return size.put(setting<WordSetting>(found->owner, burst_size_property).value_or(found->defaults.burst_size));
}

uint32_t get_overlay_l2_flow(Host& host, std::string_view portset_name, Output value)
{
    const auto found = named(host, portset_name);
    if (!found)
        return status_refused;
    return value.put(
        setting<WordSetting>(found->owner, overlay_l2_flow_property).value_or(found->defaults.overlay_l2_flow));
}

// The port that an LRO call means, if it means one that there is.
Port* lro_port(Host& host, LroScope scope, uint32_t switch_number, uint32_t port)
{
    return scope == LroScope::port ? host.port(switch_number, port) : nullptr;
}

// The switch that an LRO call means as a whole, which is port 0 then.
Switch* lro_switch(Host& host, LroScope scope, uint32_t switch_number, uint32_t port)
{
    return scope == LroScope::whole_switch && port == 0 ? host.datapath_switch(switch_number) : nullptr;
}

uint32_t get_lro(Host& host, LroScope scope, uint32_t switch_number, uint32_t port, Output value)
{
    if (const Port* target = lro_port(host, scope, switch_number, port))
        return value.put(target->lro.value_or(host.datapath_switch(switch_number)->features.lro));
    const Switch* target = lro_switch(host, scope, switch_number, port);
    return target ? value.put(target->features.lro) : status_refused;
}

// A switch's setting overrides those that its ports had.
uint32_t set_lro(Host& host, LroScope scope, uint32_t switch_number, uint32_t port, uint32_t value)
{
    if (Port* target = lro_port(host, scope, switch_number, port)) {
        target->lro = value;
        return status_success;
    }
    Switch* target = lro_switch(host, scope, switch_number, port);
    if (!target)
        return status_refused;
    target->features.lro = value;
    for (Port& each : target->ports)
        each.lro.reset();
    return status_success;
}

uint32_t get_min_flow_layer(Host& host, uint32_t switch_number, Output layer)
{
    const Switch* owner = host.datapath_switch(switch_number);
    return owner ? layer.put(owner->features.min_flow_layer) : status_refused;
}

uint32_t set_min_flow_layer(Host& host, uint32_t switch_number, uint32_t layer)
{
    Switch* owner = host.datapath_switch(switch_number);
    if (!owner)
        return status_refused;
    owner->features.min_flow_layer = layer;
    return status_success;
}

const Answer feature_answers[] = {
    {"Qdp_GetSwitchNUMATeam", get_numa_team},
    {"Qdp_GetSwitchBurstSize", get_burst_size},
    {"Qdp_GetSwitchOverlayL2Flow", get_overlay_l2_flow},
    {"Qdp_GetLRO", get_lro},
    {"Qdp_SetLRO", set_lro},
    {"Qdp_GetSwitchMinFlowLayer", get_min_flow_layer},
    {"Qdp_SetSwitchMinFlowLayer", set_min_flow_layer},
};

}  // namespace

}  // namespace host
