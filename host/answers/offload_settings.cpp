// Answers about the SmartNIC's offload and DSCP settings.
#include "host/answers/answer.h"

namespace host {

namespace {

uint32_t get_flow_stats_config(Host& host, Output output)
{
    return output.put(host.pipeline.flow_stats);
}

uint32_t set_flow_stats_config(Host& host, ByteSpan config)
{
    if (config.size() != sizeof host.pipeline.flow_stats)
        return status_refused;
    std::memcpy(&host.pipeline.flow_stats, config.data(), config.size());
    return status_success;
}

uint32_t set_offload_flows(Host& host, std::string_view portset, uint32_t is_enabled)
{
    if (!host.switch_by_portset(portset))
        return status_not_found;
    host.pipeline.offloaded.insert_or_assign(std::string{portset}, is_enabled);
    return status_success;
}

uint32_t get_offload_flows(Host& host, std::string_view portset, Output output)
{
    if (!host.switch_by_portset(portset))
        return status_not_found;
    const auto found = host.pipeline.offloaded.find(portset);
    return output.put(found == host.pipeline.offloaded.end() ? uint32_t{0} : found->second);
}

uint32_t set_offload_icmp_echo(Host& host, uint32_t is_enabled)
{
    host.pipeline.offloads_icmp_echo = is_enabled;
    return status_success;
}

uint32_t get_offload_icmp_echo(Host& host, Output output)
{
    return output.put(host.pipeline.offloads_icmp_echo);
}

uint32_t dscp_conf_set(Host& host, ByteSpan config)
{
    if (config.size() != sizeof host.pipeline.dscp)
        return status_refused;
    std::memcpy(&host.pipeline.dscp, config.data(), config.size());
    return status_success;
}

uint32_t dscp_conf_get(Host& host, Output output)
{
    return output.put(host.pipeline.dscp);
}

const Answer offload_setting_answers[] = {
    {"Qdp_Get_FPO_Flow_Stats_Config", get_flow_stats_config},
    {"Qdp_Set_FPO_Flow_Stats_Config", set_flow_stats_config},
    {"Qdp_Set_Offload_Flows", set_offload_flows},
    {"Qdp_Get_Offload_Flows", get_offload_flows},
    {"Qdp_Set_Offload_ICMP_Echo", set_offload_icmp_echo},
    {"Qdp_Get_Offload_ICMP_Echo", get_offload_icmp_echo},
    {"Qdp_DSCP_Conf_Set", dscp_conf_set},
    {"Qdp_DSCP_Conf_Get", dscp_conf_get},
};

}  // namespace

}  // namespace host
