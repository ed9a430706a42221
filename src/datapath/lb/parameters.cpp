// The run-time parameters of the load balancer of a switch. These methods raise what goes wrong.
#include <algorithm>
#include <iterator>

#include "core/build.h"
#include "datapath/lb/lb.h"
#include "platform/load_balancer.h"
#include "platform/qdp_control.h"
#include "switchid/identity.h"

namespace qdp {

namespace {

// A row's position is the parameter's id.
using R = LBParameters;
constexpr auto parameter_fields = fields<sizeof(R)>({
    {"run_in_msec", AT(R, values[0])},
    {"cpuload_high", AT(R, values[1])},
    {"cpuload_low", AT(R, values[2])},
    {"cpuload_target", AT(R, values[3])},
    {"cpuload_high_per_unit", AT(R, values[4])},
    {"cpuload_low_per_unit", AT(R, values[5])},
    {"min_v2v_pps", AT(R, values[6])},
    {"min_v2v_pps_bind", AT(R, values[7])},
    {"pps_var_sensitivity", AT(R, values[8])},
    {"cpu_var_sensitivity", AT(R, values[9])},
});

constexpr char no_parameters[] = "invalid parameter passed.";
constexpr char no_such_switch[] = "cannot find dvs alias.";

}  // namespace

PyObject* PyQDP_SetLBParam(PyObject*, PyObject* args)
{
    const char *alias, *name;
    unsigned long long value;
    if (!PyArg_ParseTuple(args, "ssK", &alias, &name, &value))
        return raise(PyExc_ValueError, no_parameters);

    const auto& rows = parameter_fields.rows;
    const auto* row = std::ranges::find(rows, std::string_view{name}, &Field::key);
    if (row == std::end(rows))
        return raise(PyExc_ValueError, "Unknown parameter name.");

    PortsetName portset;
    if (!find_portset_name(alias, portset))
        return raise(PyExc_ValueError, no_such_switch);
    if (Qdp_SetLBParam(portset.text, static_cast<uint32_t>(row - rows), value) != 0)
        return raise(PyExc_OSError, "failed to set parameter.");
    return none();
}

PyObject* PyQDP_GetLBParams(PyObject*, PyObject* args)
{
    const char* alias;
    if (!PyArg_ParseTuple(args, "s", &alias))
        return raise(PyExc_ValueError, no_parameters);

    PortsetName portset;
    if (!find_portset_name(alias, portset))
        return raise(PyExc_ValueError, no_such_switch);

    LBParameters record{};
    if (Qdp_GetLBParams(portset.text, &record) != 0)
        return raise(PyExc_OSError, "failed to get parameters.");
    return dict_of(parameter_fields, bytes_of(record));
}

}  // namespace qdp
