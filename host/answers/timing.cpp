// Answers about the host-wide timing of flows and of their offload: what was set last.
#include "host/answers/answer.h"

namespace host {

namespace {

// The calls that take one word, or one record, and keep it.
template <auto Timing::*setting>
uint32_t get(Host& host, Output output)
{
    return output.put(host.timing.*setting);
}

template <uint32_t Timing::*setting>
uint32_t set_word(Host& host, uint32_t value)
{
    host.timing.*setting = value;
    return status_success;
}

uint32_t set_reval(Host& host, const FpoRevalConfig* config)
{
    if (!config)
        return status_refused;
    FpoRevalConfig& current = host.timing.reval;
    const FpoRevalConfig before = current;
    current = *config;
    if (config->flow_scan_quota == keep_current)
        current.flow_scan_quota = before.flow_scan_quota;
    if (config->reval_interval == keep_current)
        current.reval_interval = before.reval_interval;
    return status_success;
}

uint32_t set_conntrack_delay(Host& host, const FpoConntrackDelay* delay)
{
    if (!delay)
        return status_refused;
    host.timing.conntrack_delay = *delay;
    return status_success;
}

const Answer timing_answers[] = {
    {"Qdp_Get_Flow_Timeout", get<&Timing::flow_timeout>},
    {"Qdp_Set_Flow_Timeout", set_word<&Timing::flow_timeout>},
    {"Qdp_Get_FPO_Reval_Config", get<&Timing::reval>},
    {"Qdp_Set_FPO_Reval_Config", set_reval},
    {"Qdp_Get_FPO_DelayCtOl_Config", get<&Timing::conntrack_delay>},
    {"Qdp_Set_FPO_DelayCtOl_Config", set_conntrack_delay},
    {"Qdp_Get_Refresh_Pkt_Injection", get<&Timing::refresh_packet_injection>},
    {"Qdp_Set_Refresh_Pkt_Injection", set_word<&Timing::refresh_packet_injection>},
};

}  // namespace

}  // namespace host
