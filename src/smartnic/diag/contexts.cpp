// The TCP state of offloaded connections: a raw entry of the connection-tracking table, and the context manager's view.
#include "core/build.h"
#include "platform/pipeline.h"
#include "platform/table_memory.h"
#include "smartnic/channel/table_memory.h"

namespace qdp {

namespace {

constexpr Place state_at(size_t state_and_scale)
{
    return bits(state_and_scale, 4, 4);
}

constexpr Place scale_at(size_t state_and_scale)
{
    return bits(state_and_scale, 0, 4);
}

using E = ConntrackEntry;
constexpr auto conntrack_fields = fields<sizeof(E)>({
    {"src_seqlo", AT(E, source.lowest_sequence), as_big_endian},
    {"src_seqhi", AT(E, source.highest_sequence), as_big_endian},
    {"src_max_win", AT(E, source.max_window), as_big_endian},
    {"src_state", state_at(offsetof(E, source.state_and_scale))},
    {"src_wscale", scale_at(offsetof(E, source.state_and_scale))},
    {"dst_seqlo", AT(E, destination.lowest_sequence), as_big_endian},
    {"dst_seqhi", AT(E, destination.highest_sequence), as_big_endian},
    {"dst_max_win", AT(E, destination.max_window), as_big_endian},
    {"dst_state", state_at(offsetof(E, destination.state_and_scale))},
    {"dst_wscale", scale_at(offsetof(E, destination.state_and_scale))},
    {"sw_state", AT(E, software_state)},
    {"ct_log", AT(E, log)},
});

using C = FpoContext;
constexpr auto context_fields = fields<sizeof(C)>({
    {"enable", AT(C, is_enabled)},
    {"disableWindowValidation", AT(C, disable_window_validation)},
    {"lseqlo", AT(C, local.lowest_sequence)},
    {"lseqhi", AT(C, local.highest_sequence)},
    {"lseqdiff", AT(C, local.sequence_difference)},
    {"lmaxWin", AT(C, local.max_window)},
    {"lstate", AT(C, local.state)},
    {"lwscale", AT(C, local.window_scale)},
    {"rseqlo", AT(C, remote.lowest_sequence)},
    {"rseqhi", AT(C, remote.highest_sequence)},
    {"rseqdiff", AT(C, remote.sequence_difference)},
    {"rmaxWin", AT(C, remote.max_window)},
    {"rstate", AT(C, remote.state)},
    {"rwscale", AT(C, remote.window_scale)},
});

}  // namespace

PyObject* PyQDP_CTContextQuery(PyObject*, PyObject* args)
{
    uint32_t index;
    if (!PyArg_ParseTuple(args, "I", &index))
        return print_none(invalid_parameter);
    return table_entry(conntrack_table, index, conntrack_fields, "Failed to get HW CT entry\n");
}

// Some of its texts end in a doubled line break, some in a single one: deliberate.
PyObject* PyQDP_FPOQueryContextMgr(PyObject*, PyObject* args)
{
    uint32_t ids[3];
    if (!PyArg_ParseTuple(args, "III", &ids[0], &ids[1], &ids[2]))
        return print_none(invalid_parameter_blank_line);

    const auto request = allocate<FpoContextRequest>();
    if (!request)
        return print_none("Failed to allocate memory for contextReq\n");
    const auto context = allocate<FpoContext>();
    if (!context)
        return print_none("Failed to allocate memory for contextResp\n");

    *request = {{ids[0], ids[1], ids[2]}, context_query_type};
    context->size = sizeof(FpoContext);
    uint32_t size = sizeof(FpoContext);
    if (Qdp_FPOQueryMgr(request.get(), context.get(), &size) != 0)
        return print_none("Query mgr failed.\n\n");

    PyRef list{PyList_New(1)};
    if (!list)
        return print_none("Failed to allocate buffer for plist\n");
    PyRef dict{PyDict_New()};
    if (!dict)
        return print_none("Failed to allocate buffer for dict\n");
    const bool complete =
        fill(dict.get(), context_fields, bytes_of(*context)) && set_list_item(list.get(), 0, dict.release());
    return built_or_none(std::move(list), complete);
}

PyObject* PyQDP_FPOHWDestroy(PyObject*, PyObject*)
{
    return print_none("Not supported in release build.\n\n");
}

}  // namespace qdp
