// The counters of the SmartNIC's pipeline: of a LIF, a port, a connection-tracking entry, and of the whole.
#include "platform/p4_counters.h"
#include "smartnic/counters/counters.h"

namespace qdp {

namespace {

using C = P4ConntrackCounters;
constexpr auto conntrack_counter_fields = fields<sizeof(C)>({
    {"txPassBytes", AT(C, tx_pass_bytes), as_signed},
    {"txPassPkts", AT(C, tx_pass_packets), as_signed},
    {"txDropBytes", AT(C, tx_drop_bytes), as_signed},
    {"txDropPkts", AT(C, tx_drop_packets), as_signed},
    {"rxPassBytes", AT(C, rx_pass_bytes), as_signed},
    {"rxPassPkts", AT(C, rx_pass_packets), as_signed},
    {"rxDropBytes", AT(C, rx_drop_bytes), as_signed},
    {"rxDropPkts", AT(C, rx_drop_packets), as_signed},
});

}  // namespace

PyObject* PyQDP_LifStatsGet(PyObject*, PyObject* args)
{
    uint32_t lif;
    if (!PyArg_ParseTuple(args, "I", &lif) || lif >= max_lifs)
        return print_none(invalid_parameter);

    P4LifCounters counters{};
    uint32_t size = sizeof counters;
    if (Qdp_Lif_Stats_Get(lif, &counters, &size) != 0)
        return print_none("Failed to get lif stats\n");
    return dict_or_none(p4_lif_counter_fields, bytes_of(counters));
}

PyObject* PyQDP_PortStatsGet(PyObject*, PyObject* args)
{
    uint32_t port;
    if (!PyArg_ParseTuple(args, "I", &port) || port >= max_p4_ports)
        return print_none(invalid_parameter);

    P4PortCounters counters{};
    uint32_t size = sizeof counters;
    if (Qdp_Port_Stats_Get(port, &counters, &size) != 0)
        return print_none("Failed to get port stats\n");
    return dict_or_none(p4_port_counter_fields, bytes_of(counters));
}

PyObject* PyQDP_P4IStatsGet(PyObject*, PyObject*)
{
    P4IngressCounters counters{};
    uint32_t size = sizeof counters;
    if (Qdp_P4I_Stats_Get(&counters, &size) != 0)
        return print_none("Failed to get p4 ingress stats\n");
    return dict_or_none(p4_ingress_counter_fields, bytes_of(counters));
}

PyObject* PyQDP_P4EStatsGet(PyObject*, PyObject*)
{
    P4EgressCounters counters{};
    uint32_t size = sizeof counters;
    if (Qdp_P4E_Stats_Get(&counters, &size) != 0)
        return print_none("Failed to get p4 egress stats\n");
    return dict_or_none(p4_egress_counter_fields, bytes_of(counters));
}

PyObject* PyQDP_CTStatsGet(PyObject*, PyObject* args)
{
    uint32_t index;
    if (!PyArg_ParseTuple(args, "I", &index))
        return print_none(invalid_parameter);

    P4ConntrackCounters counters{};
    uint32_t size = sizeof counters;
    if (Qdp_CT_Stats_Get(index, &counters, &size) != 0)
        return print_none("Failed to get port conntrack stats\n");
    return dict_or_none(conntrack_counter_fields, bytes_of(counters));
}

}  // namespace qdp
