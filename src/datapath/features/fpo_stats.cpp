// Counters of flow offload, by lcore and by uplink, and what an uplink can offload.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/fpo.h"

namespace qdp {

namespace {

// Deliberately in two widths: the first six counters are reported modulo 2^32.
using L = FpoLcoreStats;
constexpr auto lcore_fields = fields<sizeof(L)>({
    {"lcoreID", AT(L, lcore)},
    {"hits", low_32(AT(L, hits))},
    {"markMismatched", low_32(AT(L, mark_mismatched))},
    {"pnicMismatched", low_32(AT(L, pnic_mismatched))},
    {"delayMarkMatching", low_32(AT(L, delay_mark_matching))},
    {"ephemeralFlows", low_32(AT(L, ephemeral_flows))},
    {"transientFlows", low_32(AT(L, transient_flows))},
    {"ctHWPktQueued", AT(L, conntrack_packets_queued), as_signed},
    {"ctPktsInjectedtoHW", AT(L, conntrack_packets_injected), as_signed},
    {"ctPktsContinuedInSW", AT(L, conntrack_packets_in_software), as_signed},
    {"ctHwContextFailed", AT(L, conntrack_contexts_failed), as_signed},
});

// Deliberately one character short of all the names, each with its comma and blank.
constexpr size_t models_text_bytes = 64;

PyObject* models_object(Bytes record, const Field& field)
{
    const uint64_t mask = record.unsigned_at(field.where);
    if (mask == 0)
        return text_object("None");

    char text[models_text_bytes] = "";
    for (const auto& [name, model] : fpo_models)
        if (mask & model) {
            std::strncat(text, name, sizeof text - 1 - std::strlen(text));
            std::strncat(text, ", ", sizeof text - 1 - std::strlen(text));
        }
    return text_object(text);
}

using U = FpoUplinkStatus;
constexpr auto uplink_status_fields = fields<sizeof(U)>({
    {"models", AT(U, models), models_object},
    {"numGroupSupported", AT(U, num_groups)},
    {"numPrioritySupported", AT(U, num_priorities)},
    {"maxMarkActionBits", AT(U, max_mark_action_bits)},
    {"maxFlowsSupported", AT(U, max_flows)},
    {"maxCountersSupported", AT(U, max_counters)},
    {"maxFlowKeyLengthInBits", AT(U, max_flow_key_bits)},
    {"maxDecTTLActions", AT(U, max_dec_ttl_actions)},
    {"numFlowsOffloaded", AT(U, num_flows_offloaded)},
    {"actionsSupported", AT(U, actions), as_signed},
});

// In the record all flow calls that failed come after the bulk calls that succeeded; in the dict before them.
using S = FpoUplinkStats;
constexpr auto uplink_stats_fields = fields<sizeof(S)>({
    {"ringFull", AT(S, ring_full), as_signed},
    {"creationFull", AT(S, creation_full), as_signed},
    {"destroyFull", AT(S, destroy_full), as_signed},
    {"updateFull", AT(S, update_full), as_signed},
    {"genMismatched", AT(S, gen_mismatched), as_signed},
    {"limitExceeded", AT(S, limit_exceeded), as_signed},
    {"numSucceededValidateCalls", AT(S, succeeded.validate), as_signed},
    {"numSucceededCreateCalls", AT(S, succeeded.create), as_signed},
    {"numSucceededDestroyCalls", AT(S, succeeded.destroy), as_signed},
    {"numSucceededQueryCalls", AT(S, succeeded.query), as_signed},
    {"numSucceededFlushCalls", AT(S, succeeded.flush), as_signed},
    {"numFailedValidateCalls", AT(S, failed.validate), as_signed},
    {"numFailedCreateCalls", AT(S, failed.create), as_signed},
    {"numFailedDestroyCalls", AT(S, failed.destroy), as_signed},
    {"numFailedQueryCalls", AT(S, failed.query), as_signed},
    {"numFailedFlushCalls", AT(S, failed.flush), as_signed},
    {"numSucceededBulkResAllocCalls", AT(S, bulk_succeeded.allocate), as_signed},
    {"numSucceededBulkResFreeCalls", AT(S, bulk_succeeded.free), as_signed},
    {"numSucceededBulkResQueryCalls", AT(S, bulk_succeeded.query), as_signed},
    {"numSucceededBulkResSetCalls", AT(S, bulk_succeeded.set), as_signed},
    {"numSucceededBulkResResetCalls", AT(S, bulk_succeeded.reset), as_signed},
    {"numPendingFpoCallList", AT(S, num_pending_calls), as_signed},
    {"numFailedBulkResAllocCalls", AT(S, bulk_failed.allocate), as_signed},
    {"numFailedBulkResFreeCalls", AT(S, bulk_failed.free), as_signed},
    {"numFailedBulkResQueryCalls", AT(S, bulk_failed.query), as_signed},
    {"numFailedBulkResSetCalls", AT(S, bulk_failed.set), as_signed},
    {"numFailedBulkResResetCalls", AT(S, bulk_failed.reset), as_signed},
    {"numSucceededCreateCtxCalls", AT(S, context_succeeded.create), as_signed},
    {"numSucceededDestroyCtxCalls", AT(S, context_succeeded.destroy), as_signed},
    {"numSucceededModifyCtxCalls", AT(S, context_succeeded.modify), as_signed},
    {"numSucceededQueryCtxCalls", AT(S, context_succeeded.query), as_signed},
    {"numFailedCreateCtxCalls", AT(S, context_failed.create), as_signed},
    {"numFailedDestroyCtxCalls", AT(S, context_failed.destroy), as_signed},
    {"numFailedModifyCtxCalls", AT(S, context_failed.modify), as_signed},
    {"numFailedQueryCtxCalls", AT(S, context_failed.query), as_signed},
    {"numFPOUplinkEnableCalls", AT(S, num_enable_calls), as_signed},
    {"numFPOUplinkDisableCalls", AT(S, num_disable_calls), as_signed},
    {"numFPOCallsInDisabledState", AT(S, num_calls_while_disabled), as_signed},
});

}  // namespace

PyObject* PyQDP_Get_FPO_Stats(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    PyObject* tuple;
    Lcores lcores;
    if (!PyArg_ParseTuple(args, "IO", &switch_number, &tuple) || !parse_lcores(tuple, lcores))
        return print_none(invalid_parameter_blank_line);

    const auto record = allocate<FpoLcoreStatsList>();
    if (!record)
        return print_none(no_memory);

    uint32_t size = sizeof(FpoLcoreStatsList);
    if (Qdp_Get_FPO_Stats(switch_number, lcores.ids, lcores.count, record.get(), &size) != 0)
        return print_none("Failed to retrieve flow stats.\n");

    PyRef list{PyList_New(record->count)};
    if (!list)
        return print_none(no_memory);
    SharedKeys keys{record->count};
    const bool complete = fill_list(list.get(), record->count, [&](size_t i) {
        return keys.whole_dict(lcore_fields, entries_of(*record).from(i * sizeof(FpoLcoreStats)));
    });
    return built_or_none(std::move(list), complete);
}

PyObject* PyQDP_Get_FPO_Uplink_Status(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    FpoUplinkStatus record{};
    uint32_t size = sizeof record;
    if (Qdp_Get_FPO_Uplink_Status(switch_number, port, &record, &size) != 0)
        return print_none("Failed to get FPO uplink status.\n");
    return dict_or_no_memory(uplink_status_fields, bytes_of(record));
}

PyObject* PyQDP_Get_FPO_Uplink_Stats(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    FpoUplinkStats record{};
    uint32_t size = sizeof record;
    if (Qdp_Get_FPO_Uplink_Stats(switch_number, port, &record, &size) != 0)
        return print_none("Failed to get FPO uplink stats.\n");
    return dict_or_no_memory(uplink_stats_fields, bytes_of(record));
}

}  // namespace qdp
