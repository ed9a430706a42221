// The counters of the lcores' flow caches.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/stats.h"

namespace qdp {

namespace {

// All counters are shown modulo 2^32, and the two totals of backoff flows are not shown: deliberate, as the callers
// know it. The hits of first lookups come last in the record, but behind the local hits in the dict.
using R = LcoreFlowStats;
constexpr auto flow_stats_fields = fields<sizeof(R)>({
    {"lcoreID", AT(R, lcore)},
    {"numFlows", AT(R, num_flows)},
    {"numModel2Flows", AT(R, num_model2_flows)},
    {"numFlowsCreated", low_32(AT(R, num_flows_created))},
    {"hits", low_32(AT(R, hits))},
    {"miss", low_32(AT(R, misses))},
    {"slowpath", low_32(AT(R, slow_path))},
    {"fpoHits", low_32(AT(R, offload_hits))},
    {"localHits", low_32(AT(R, local_hits))},
    {"firstLookupHits", low_32(AT(R, first_lookup_hits))},
    {"firstLookupLocalCacheHits", low_32(AT(R, first_lookup_local_hits))},
    {"actionAllocFails", low_32(AT(R, action_alloc_fails))},
    {"actionGroupAllocFails", low_32(AT(R, action_group_alloc_fails))},
    {"keyInsertFailCount", low_32(AT(R, key_insert_fails))},
    {"latSampleCount", low_32(AT(R, latency_samples))},
    {"fpoCTHwPktQueued", low_32(AT(R, conntrack_packets_queued))},
    {"fpoCTHwPktDrop", low_32(AT(R, conntrack_packets_dropped))},
    {"fpoCTPktsInjectedToHW", low_32(AT(R, conntrack_packets_injected))},
    {"fpoCTPktsContinuedInSW", low_32(AT(R, conntrack_packets_continued))},
    {"fpoCTHwContextFailed", low_32(AT(R, conntrack_context_fails))},
    {"fpoCTHwFlowInval", low_32(AT(R, conntrack_flow_invalidations))},
    {"fpoMarkMismatched", low_32(AT(R, mark_mismatches))},
    {"fpoPnicMismatched", low_32(AT(R, pnic_mismatches))},
    {"fpoDelayMarkMatching", low_32(AT(R, delayed_mark_matches))},
    {"fpoEphemeralFlows", low_32(AT(R, ephemeral_flows))},
    {"fpoTransientFlows", low_32(AT(R, transient_flows))},
    {"fpoBackoffTimes", low_32(AT(R, backoff_times))},
});

}  // namespace

PyObject* PyQDP_Get_Flow_Stats(PyObject*, PyObject* args)
{
    uint32_t selector, value;
    PyObject* ids;
    Lcores lcores;
    if (!PyArg_ParseTuple(args, "IOI", &selector, &ids, &value) || !parse_lcores(ids, lcores))
        return print_none(invalid_parameter_blank_line);  // the doubled line break is deliberate

    const auto record = allocate<FlowStats>();
    if (!record)
        return print_none(no_memory);

    uint32_t size = sizeof(FlowStats);
    if (Qdp_Get_Flow_Stats(selector, lcores.ids, lcores.count, value, record.get(), &size) != 0)
        return print_none("Failed to retrieve flow stats.\n");

    PyRef list{PyList_New(record->count)};
    if (!list)
        return print_none(no_memory);
    const Bytes entries = entries_of(*record);
    SharedKeys keys{record->count};
    const bool complete = fill_list(list.get(), record->count, [&](size_t i) {
        return keys.whole_dict(flow_stats_fields, entries.from(i * sizeof(R)));
    });
    return built_or_none(std::move(list), complete);
}

}  // namespace qdp
