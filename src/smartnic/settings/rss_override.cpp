// The RSS override of a vNIC port: the queue that takes the port's packets instead of the one that RSS chooses.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/p4_settings.h"
#include "smartnic/channel/channel.h"

namespace qdp {

namespace {

using R = P4RssOverride;
constexpr auto rss_override_fields = fields<sizeof(R)>({
    {"swID", AT(R, switch_number)},
    {"fcPortID", AT(R, port)},
    {"rssOverrideQid", AT(R, queue)},
    {"rssOverride", AT(R, is_override)},
});

}  // namespace

// The queue matters only to a set override: without one any queue is accepted.
PyObject* PyQDP_P4RssOverrideSet(PyObject*, PyObject* args)
{
    uint32_t switch_number, port, is_override, queue;
    if (!PyArg_ParseTuple(args, "IIII", &switch_number, &port, &is_override, &queue) || !is_switch(switch_number) ||
        port >= max_rss_ports || (is_override && queue >= max_rss_queues))
        return print_none(invalid_parameter);

    const P4RssOverride override{low_16(switch_number), low_16(port), low_8(queue), is_override != 0};
    if (send(P4Opcode::rss_override_set, override) != 0)
        return print_none("Failed to set RSS override\n");
    return PyBool_FromLong(1);
}

PyObject* PyQDP_P4RssOverrideGet(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_switch(switch_number) || port >= max_rss_ports)
        return print_none(invalid_parameter);

    P4RssOverride override{};
    if (ask(P4Opcode::rss_override_get, P4RssOverride{low_16(switch_number), low_16(port), 0, 0}, override) != 0)
        return print_none("Failed to get RSS override info.\n");

    return dict_or_none(rss_override_fields, bytes_of(override));
}

}  // namespace qdp
