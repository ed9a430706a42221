// Switch features and flow offload, which the switches' host properties steer.
#include "host/state/features.h"

namespace host {

FpoUplinkStatus default_nic(uint32_t models)
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

}  // namespace host
