// Counters of flows, and connection tracking: each a pair of tables, one for each direction.
#include "platform/p4_entries.h"
#include "smartnic/tables/reader.h"

namespace qdp {

namespace {

using I = P4IpfixEntry;
constexpr auto ipfix = table<P4Table::ipfix>({
    {"pkts", AT(I, packets), as_signed},
    {"bytes", AT(I, bytes), as_signed},
    {"tcpFlags", AT(I, tcp_flags)},
});

using C = P4CtCountersEntry;
constexpr auto ct_counters = table<P4Table::ct_counters>({
    {"passBytes0", AT(C, sets[0].pass_bytes), as_signed},
    {"passPkts0", AT(C, sets[0].pass_packets), as_signed},
    {"dropBytes0", AT(C, sets[0].drop_bytes), as_signed},
    {"dropPkts0", AT(C, sets[0].drop_packets), as_signed},
    {"passBytes1", AT(C, sets[1].pass_bytes), as_signed},
    {"passPkts1", AT(C, sets[1].pass_packets), as_signed},
    {"dropBytes1", AT(C, sets[1].drop_bytes), as_signed},
    {"dropPkts1", AT(C, sets[1].drop_packets), as_signed},
});

using S = P4CtStateEntry;
constexpr auto ct_state = table<P4Table::ct_state>({
    {"sloppy", bits(AT(S, flags), S::is_sloppy)},
    {"srcSeqlo", AT(S, source_sequence_low)},
    {"srcSeqhi", AT(S, source_sequence_high)},
    {"srcMaxWin", AT(S, source_window)},
    {"srcState", bits(AT(S, source_state_and_scale), S::state)},
    {"srcWscale", bits(AT(S, source_state_and_scale), S::window_scale)},
    {"dstSeqlo", AT(S, destination_sequence_low)},
    {"dstSeqhi", AT(S, destination_sequence_high)},
    {"dstMaxWin", AT(S, destination_window)},
    {"dstState", bits(AT(S, destination_state_and_scale), S::state)},
    {"dstWscale", bits(AT(S, destination_state_and_scale), S::window_scale)},
    {"swState", AT(S, software_state)},
    {"ctLog", bits(AT(S, flags), S::is_logged)},
});

}  // namespace

PyObject* PyQDP_TableIPFixGet(PyObject*, PyObject* args)
{
    return read_of_pair(args, ipfix, max_flows);
}

PyObject* PyQDP_TableCTStatsGet(PyObject*, PyObject* args)
{
    return read_of_pair(args, ct_counters, max_ct_counters);
}

PyObject* PyQDP_TableCTStateGet(PyObject*, PyObject* args)
{
    return read_of_pair(args, ct_state, max_flows);
}

}  // namespace qdp
