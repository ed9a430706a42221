// Answers about the counters of the SmartNIC's pipeline.
#include "host/answers/answer.h"

namespace host {

namespace {

uint32_t lif_stats_get(Host& host, uint32_t lif, Output output)
{
    return lif < max_lifs ? output.put(lif_counters(host, lif)) : status_refused;
}

uint32_t port_stats_get(Host& host, uint32_t port, Output output)
{
    return port < max_p4_ports ? output.put(p4_port_counters(host, port)) : status_refused;
}

uint32_t conntrack_stats_get(Host& host, uint32_t index, Output output)
{
    return index < max_p4_ports ? output.put(conntrack_counters(host, index)) : status_refused;
}

uint32_t ingress_stats_get(Host& host, Output output)
{
    return output.put(ingress_counters(host));
}

uint32_t egress_stats_get(Host& host, Output output)
{
    return output.put(egress_counters(host));
}

const Answer pipeline_stats_answers[] = {
    {"Qdp_Lif_Stats_Get", lif_stats_get},      {"Qdp_Port_Stats_Get", port_stats_get},
    {"Qdp_CT_Stats_Get", conntrack_stats_get}, {"Qdp_P4I_Stats_Get", ingress_stats_get},
    {"Qdp_P4E_Stats_Get", egress_stats_get},
};

}  // namespace

}  // namespace host
