// Counters of flows, and connection tracking: each a pair of tables, one for each direction.
#include "smartnic/tables/reader.h"
#include "smartnic/tables/tables.h"

namespace qdp {

namespace {

constexpr auto ipfix = table<P4Table::ipfix>({
    {"pkts", bytes(0, 8), as_signed},
    {"bytes", bytes(8, 8), as_signed},
    {"tcpFlags", bytes(16, 1)},
});

constexpr auto ct_counters = table<P4Table::ct_counters>({
    {"passBytes0", bytes(0, 8), as_signed},
    {"passPkts0", bytes(8, 8), as_signed},
    {"dropBytes0", bytes(16, 8), as_signed},
    {"dropPkts0", bytes(24, 8), as_signed},
    {"passBytes1", bytes(32, 8), as_signed},
    {"passPkts1", bytes(40, 8), as_signed},
    {"dropBytes1", bytes(48, 8), as_signed},
    {"dropPkts1", bytes(56, 8), as_signed},
});

// States and window scales of both ends lie together in bytes 10 and 11.
constexpr auto ct_state = table<P4Table::ct_state>({
    {"sloppy", bits(23, 1, 1)},
    {"srcSeqlo", bytes(0, 4)},
    {"srcSeqhi", bytes(4, 4)},
    {"srcMaxWin", bytes(8, 2)},
    {"srcState", bits(10, 0, 4)},
    {"srcWscale", bits(10, 4, 4)},
    {"dstSeqlo", bytes(12, 4)},
    {"dstSeqhi", bytes(16, 4)},
    {"dstMaxWin", bytes(20, 2)},
    {"dstState", bits(11, 0, 4)},
    {"dstWscale", bits(11, 4, 4)},
    {"swState", bytes(22, 1)},
    {"ctLog", bits(23, 0, 1)},
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
