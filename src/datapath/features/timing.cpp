// Host-wide timing: when flows expire, and when offloaded flows and connections are looked at.
#include "platform/timing.h"
#include "core/build.h"
#include "platform/qdp_control.h"

namespace qdp {

namespace {

// The interval comes before the quota, here and in the setter's arguments; in the record behind it.
using R = FpoRevalConfig;
constexpr auto reval_fields = fields<sizeof(R)>({
    {"enabled", AT(R, enabled)},
    {"injectPacket", AT(R, inject_packet)},
    {"revalInterval", AT(R, reval_interval)},
    {"flowScanQuota", AT(R, flow_scan_quota)},
});

using D = FpoConntrackDelay;
constexpr auto conntrack_delay_fields = fields<sizeof(D)>({
    {"numPkts", AT(D, num_packets)},
    {"enabled", AT(D, enabled)},
});

// The connection-tracking delay deliberately borrows these texts.
constexpr char cannot_get_reval_config[] = "Failed to get FPO revalidation config\n";
constexpr char cannot_set_reval_config[] = "Failed to set FPO revalidation config\n";

}  // namespace

PyObject* PyQDP_GetFlowTimeout(PyObject*, PyObject*)
{
    uint32_t seconds = 0;
    if (Qdp_Get_Flow_Timeout(&seconds) != 0)
        return print_none("ValueError: Failed to get flow timeout.\n\n");
    return PyLong_FromUnsignedLong(seconds);
}

PyObject* PyQDP_SetFlowTimeout(PyObject*, PyObject* args)
{
    uint32_t seconds;
    if (!PyArg_ParseTuple(args, "I", &seconds))
        return print_none(invalid_parameter_blank_line);
    return command_result(Qdp_Set_Flow_Timeout(seconds), "ValueError: Failed to set flow timeout.\n\n");
}

PyObject* PyQDP_Get_FPO_Reval_Config(PyObject*, PyObject*)
{
    FpoRevalConfig config{};
    if (Qdp_Get_FPO_Reval_Config(&config) != 0)
        return print_none(cannot_get_reval_config);
    return dict_or_no_memory(reval_fields, bytes_of(config));
}

PyObject* PyQDP_Set_FPO_Reval_Config(PyObject*, PyObject* args)
{
    FpoRevalConfig wanted{};
    if (!PyArg_ParseTuple(args, "IIII", &wanted.enabled, &wanted.inject_packet, &wanted.reval_interval,
                          &wanted.flow_scan_quota))
        return print_none(invalid_parameter);

    FpoRevalConfig current{};
    if (Qdp_Get_FPO_Reval_Config(&current) != 0)
        return print_none("Failed to get current FPO revalidation config\n");
    if (wanted.reval_interval == keep_current)
        wanted.reval_interval = current.reval_interval;
    if (wanted.flow_scan_quota == keep_current)
        wanted.flow_scan_quota = current.flow_scan_quota;

    return command_result(Qdp_Set_FPO_Reval_Config(&wanted), cannot_set_reval_config);
}

PyObject* PyQDP_Get_FPO_DelayCtOl_Config(PyObject*, PyObject*)
{
    FpoConntrackDelay delay{};
    if (Qdp_Get_FPO_DelayCtOl_Config(&delay) != 0)
        return print_none(cannot_get_reval_config);
    return dict_or_no_memory(conntrack_delay_fields, bytes_of(delay));
}

// The arguments come in the reverse order of the record.
PyObject* PyQDP_Set_FPO_DelayCtOl_Config(PyObject*, PyObject* args)
{
    FpoConntrackDelay delay{};
    if (!PyArg_ParseTuple(args, "II", &delay.enabled, &delay.num_packets))
        return print_none(invalid_parameter);
    return command_result(Qdp_Set_FPO_DelayCtOl_Config(&delay), cannot_set_reval_config);
}

PyObject* PyQdp_Get_Refresh_Pkt_Injection(PyObject*, PyObject*)
{
    uint32_t value = 0;
    if (Qdp_Get_Refresh_Pkt_Injection(&value) != 0)
        return print_none("Failed to get refresh packet injection config\n");
    return PyLong_FromUnsignedLong(value);
}

PyObject* PyQdp_Set_Refresh_Pkt_Injection(PyObject*, PyObject* args)
{
    uint32_t value;
    if (!PyArg_ParseTuple(args, "I", &value))
        return print_none(invalid_parameter);
    return command_result(Qdp_Set_Refresh_Pkt_Injection(value), "Failed to set refresh packet injection config\n");
}

}  // namespace qdp
