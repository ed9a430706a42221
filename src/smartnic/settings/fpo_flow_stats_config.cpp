// How the statistics of offloaded flows are refreshed.
#include "core/fail.h"
#include "platform/pipeline.h"
#include "platform/timing.h"

namespace qdp {

PyObject* PyQDP_Get_FPO_Flow_Stats_Config(PyObject*, PyObject*)
{
    FpoFlowStatsConfig config{};
    if (Qdp_Get_FPO_Flow_Stats_Config(&config) != 0)
        return print_none("Failed to get FPO flow stats update config\n");
    return Py_BuildValue("{s:I, s:I}", "statsInterval", config.interval, "statsScanQuota", config.scan_quota);
}

PyObject* PyQDP_Set_FPO_Flow_Stats_Config(PyObject*, PyObject* args)
{
    uint32_t interval, scan_quota;
    if (!PyArg_ParseTuple(args, "II", &interval, &scan_quota))
        return print_none(invalid_parameter);

    FpoFlowStatsConfig config{};
    if (Qdp_Get_FPO_Flow_Stats_Config(&config) != 0)
        return print_none("Failed to get current FPO flow stats config\n");
    if (interval != keep_current)
        config.interval = interval;
    if (scan_quota != keep_current)
        config.scan_quota = scan_quota;
    return command_result(Qdp_Set_FPO_Flow_Stats_Config(&config), "Failed to set FPO flow stats update config\n");
}

}  // namespace qdp
