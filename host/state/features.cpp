// Switch features and flow offload, which the switches' host properties steer.
#include "host/state/features.h"

#include "host/host.h"

namespace host {

namespace {

// The NICs of the built-in host, from one that offloads nothing to one that knows every model.
constexpr uint32_t nic_models[] = {
    fpo_model_1_level_1 | fpo_model_1_level_2 | fpo_model_2a,
    0,
    fpo_model_1_level_1 | fpo_model_1_level_2 | fpo_model_2a | fpo_model_3a | fpo_model_3b,
};

FpoUplinkStatus nic_with(uint32_t models)
{
    if (models == 0)
        return {};
    FpoUplinkStatus nic{};
    nic.models = models;
    nic.num_groups = 4;
    nic.num_priorities = 16;
    nic.max_mark_action_bits = 24;
    nic.max_flows = models & fpo_model_3b ? 2'000'000 : 65'536;
    nic.max_counters = nic.max_flows;
    nic.max_flow_key_bits = 512;
    nic.max_dec_ttl_actions = models & fpo_model_2a ? 1 : 0;
    nic.actions = 0x3f7;
    return nic;
}

}  // namespace

uint32_t SwitchFeatures::lro_of(uint32_t port) const
{
    const auto own = port_lro.find(port);
    return own == port_lro.end() ? lro : own->second;
}

SwitchFeatures* Features::of(uint32_t switch_number)
{
    const auto found = switches.find(switch_number);
    return found == switches.end() ? nullptr : &found->second;
}

Features default_features(const Host& host)
{
    Features made;
    for (const Switch& each : host.switches) {
        if (!each.entry)
            continue;
        const uint32_t number = each.entry->switch_number;
        SwitchFeatures& features = made.switches[number];
        features.numa_team = number == 0;
        features.burst_size = 32;
        features.overlay_l2_flow = number == 0;
        features.min_flow_layer = number == 0 ? 2 : 3;
        features.lro = number != 1;
        features.nic = nic_with(nic_models[number % std::size(nic_models)]);
    }
    return made;
}

}  // namespace host
