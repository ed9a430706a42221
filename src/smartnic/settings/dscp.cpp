// The pipeline's DSCP configuration.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/pipeline.h"

namespace qdp {

namespace {

using D = DscpConfig;
constexpr auto dscp_fields = fields<sizeof(D)>({
    {"dscp", AT(D, dscp)},
    {"mask", AT(D, mask)},
});

}  // namespace

PyObject* PyQDP_DSCPConfSet(PyObject*, PyObject* args)
{
    uint32_t selector, dscp, mask;
    if (!PyArg_ParseTuple(args, "III", &selector, &dscp, &mask))
        return print_none(invalid_parameter);

    const DscpConfig config{selector, low_8(dscp), low_8(mask)};
    return command_result(Qdp_DSCP_Conf_Set(&config, sizeof config), "Failed to set DSCP conf\n");
}

PyObject* PyQDP_DSCPConfGet(PyObject*, PyObject*)
{
    DscpConfig config{};
    uint32_t size = sizeof config;
    if (Qdp_DSCP_Conf_Get(&config, &size) != 0)
        return print_none("Failed to get dscp conf\n");
    return dict_or_none(dscp_fields, bytes_of(config));
}

}  // namespace qdp
