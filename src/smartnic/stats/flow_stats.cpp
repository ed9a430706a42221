// The counters of one offloaded flow, from the raw memory of the IPFIX table.
#include "platform/table_memory.h"
#include "smartnic/channel/table_memory.h"

namespace qdp {

namespace {

using E = IpfixEntry;
constexpr auto flow_fields = fields<sizeof(E)>({
    {"pcnt", AT(E, packets), as_signed_big_endian},
    {"bcnt", AT(E, bytes), as_signed_big_endian},
    {"tcp_flags", AT(E, tcp_flags)},
});

}  // namespace

PyObject* PyQDP_P4StatsFlowGet(PyObject*, PyObject* args)
{
    uint32_t index;
    if (!PyArg_ParseTuple(args, "I", &index))
        return print_none("TypeError: Invalid startIndex passed.\n");
    return table_entry(ipfix_table, index, flow_fields, "Failed to dump ipfix table entry.\n");
}

}  // namespace qdp
