// The run-time parameters of the load balancer of a switch. These methods raise what goes wrong.
#include <algorithm>
#include <iterator>

#include "core/build.h"
#include "platform/lb.h"
#include "switchid/identity.h"

namespace qdp {

namespace {

// A row's position is the parameter's id.
using R = LBParameters;
constexpr auto parameter_fields = fields<sizeof(R)>(
    lb_parameter_names, [](size_t id) { return bytes(offsetof(R, values) + id * sizeof(uint64_t), sizeof(uint64_t)); });

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
