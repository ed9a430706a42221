// Counters of LIFs, of ports and of the whole pipeline, from their hardware tables.
#include "platform/p4_tables.h"
#include "smartnic/counters/counters.h"
#include "smartnic/tables/reader.h"

namespace qdp {

namespace {

constexpr auto lif_counters = table<P4Table::lif_counters>(p4_lif_counter_fields);
constexpr auto port_counters = table<P4Table::port_counters>(p4_port_counter_fields);
constexpr auto ingress_counters = table<P4Table::ingress_counters>(p4_ingress_counter_fields);
constexpr auto egress_counters = table<P4Table::egress_counters>(p4_egress_counter_fields);

}  // namespace

PyObject* PyQDP_TableLifStatsGet(PyObject*, PyObject* args)
{
    return read_by_index(args, lif_counters, max_lifs);
}

PyObject* PyQDP_TablePortStatsGet(PyObject*, PyObject* args)
{
    return read_by_index(args, port_counters, max_p4_ports);
}

PyObject* PyQDP_TableP4IStatsGet(PyObject*, PyObject*)
{
    return read_entry(ingress_counters, 0);
}

PyObject* PyQDP_TableP4EStatsGet(PyObject*, PyObject*)
{
    return read_entry(egress_counters, 0);
}

}  // namespace qdp
