// Answers about the features of switches and of their ports.
#include "host/property.h"
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
    const SwitchFeatures* defaults = owner ? host.features.of(owner->entry->switch_number) : nullptr;
    return defaults ? std::optional{Named{*owner, *defaults}} : std::nullopt;
}

uint32_t get_numa_team(Host& host, std::string_view portset_name, uint32_t name_bytes, Output enabled)
{
    const auto found = named(host, portset_name);
    if (!found || name_bytes != portset_name_bytes)
        return refused;
    const uint32_t value = setting<ByteSetting>(found->owner, numa_team_property).value_or(found->defaults.numa_team);
    return enabled.put(static_cast<uint8_t>(value));
}

uint32_t get_burst_size(Host& host, std::string_view portset_name, Output size)
{
    const auto found = named(host, portset_name);
    if (!found)
        return refused;
    return size.put(setting<WordSetting>(found->owner, burst_size_property).value_or(found->defaults.burst_size));
}

uint32_t get_overlay_l2_flow(Host& host, std::string_view portset_name, Output value)
{
    const auto found = named(host, portset_name);
    if (!found)
        return refused;
    return value.put(
        setting<WordSetting>(found->owner, overlay_l2_flow_property).value_or(found->defaults.overlay_l2_flow));
}

// The switch that an LRO call means, if the call names a port that there is, or port 0 for the whole switch.
SwitchFeatures* lro_target(Host& host, LroScope scope, uint32_t switch_number, uint32_t port)
{
    const bool is_known = scope == LroScope::port ? host.port(switch_number, port) != nullptr
                                                  : scope == LroScope::whole_switch && port == 0;
    return is_known ? host.features.of(switch_number) : nullptr;
}

uint32_t get_lro(Host& host, LroScope scope, uint32_t switch_number, uint32_t port, Output value)
{
    const SwitchFeatures* target = lro_target(host, scope, switch_number, port);
    if (!target)
        return refused;
    return value.put(scope == LroScope::port ? target->lro_of(port) : target->lro);
}

// A switch's setting overrides those that its ports had.
uint32_t set_lro(Host& host, LroScope scope, uint32_t switch_number, uint32_t port, uint32_t value)
{
    SwitchFeatures* target = lro_target(host, scope, switch_number, port);
    if (!target)
        return refused;
    if (scope == LroScope::port) {
        target->port_lro[port] = value;
    } else {
        target->lro = value;
        target->port_lro.clear();
    }
    return success;
}

uint32_t get_min_flow_layer(Host& host, uint32_t switch_number, Output layer)
{
    const SwitchFeatures* features = host.features.of(switch_number);
    return features ? layer.put(features->min_flow_layer) : refused;
}

uint32_t set_min_flow_layer(Host& host, uint32_t switch_number, uint32_t layer)
{
    SwitchFeatures* features = host.features.of(switch_number);
    if (!features)
        return refused;
    features->min_flow_layer = layer;
    return success;
}

const Answer answers[] = {
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
