// What the load balancer of a switch balances by: the metric that the switch's host property keeps.
#include <algorithm>
#include <iterator>

#include "core/build.h"
#include "platform/lb.h"
#include "platform/switch_state.h"
#include "switchid/property.h"

namespace qdp {

namespace {

// The settings that a switch keeps; for a switch that keeps none, the metric that the load balancer works with. False
// after a message, or without one when the load balancer does not answer.
bool read_settings(const char* alias, LBSettings& settings)
{
    SwitchId id;
    if (!resolve_switch_id(alias, id))
        return false;
    const SettingStatus kept = read_setting(id, lb_property, settings);
    if (kept != SettingStatus::absent)
        return kept == SettingStatus::present;

    PortsetName name;
    LBParameters parameters{};
    if (!resolve_portset_name(alias, name) || Qdp_GetLBParams(name.text, &parameters) != 0)
        return false;
    settings = {};
    settings.metric = parameters.metric;
    return true;
}

// Stores the metric beside whatever else the switch's settings hold. The settings are read before the name is looked
// at, so that an unknown switch is reported first.
bool set_metric(const char* alias, const char* name)
{
    LBSettings settings;
    if (!read_settings(alias, settings))
        return false;

    const auto* found = std::ranges::find(lb_metrics, std::string_view{name}, &NamedValue::name);
    if (found == std::end(lb_metrics)) {
        print_format("Invalid metric name %s.\n", name);
        return false;
    }
    settings.metric = static_cast<uint32_t>(found->value);

    SwitchId id;
    return resolve_switch_id(alias, id) && write_setting(id, lb_property, settings);
}

}  // namespace

PyObject* PyQDP_GetLBMetric(PyObject*, PyObject* args)
{
    const char* alias;
    if (!PyArg_ParseTuple(args, "s", &alias))
        return print_none(invalid_parameter);

    LBSettings settings;
    if (!read_settings(alias, settings))
        return none();
    const bool is_known = settings.metric < std::size(lb_metrics);
    return Py_BuildValue("s", is_known ? lb_metrics[settings.metric].name : "invalid");
}

PyObject* PyQDP_SetLBMetric(PyObject*, PyObject* args)
{
    const char *alias, *name;
    if (!PyArg_ParseTuple(args, "ss", &alias, &name))
        return print_false(invalid_parameter);
    return PyBool_FromLong(set_metric(alias, name));
}

}  // namespace qdp
