// A port's traffic counters, of the fast path and of the slow path.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/stats.h"

namespace qdp {

namespace {

// In the record bytes come before packets; in the dict packets come first. The counters are shown signed.
using R = PortCounters;
constexpr auto fast_path_fields = fields<sizeof(R)>({
    {"txPkts", AT(R, tx.packets), as_signed},
    {"txBytes", AT(R, tx.bytes), as_signed},
    {"txMcastPkts", AT(R, tx.multicast_packets), as_signed},
    {"txMcastBytes", AT(R, tx.multicast_bytes), as_signed},
    {"txBcastPkts", AT(R, tx.broadcast_packets), as_signed},
    {"txBcastBytes", AT(R, tx.broadcast_bytes), as_signed},
    {"txDrops", AT(R, tx.drops), as_signed},
    {"txErrors", AT(R, tx.errors), as_signed},
    {"rxPkts", AT(R, rx.packets), as_signed},
    {"rxBytes", AT(R, rx.bytes), as_signed},
    {"rxMcastPkts", AT(R, rx.multicast_packets), as_signed},
    {"rxMcastBytes", AT(R, rx.multicast_bytes), as_signed},
    {"rxBcastPkts", AT(R, rx.broadcast_packets), as_signed},
    {"rxBcastBytes", AT(R, rx.broadcast_bytes), as_signed},
    {"rxDrops", AT(R, rx.drops), as_signed},
    {"rxErrors", AT(R, rx.errors), as_signed},
});

constexpr auto slow_path_fields = fields<sizeof(R)>({
    {"spTxPkts", AT(R, tx.packets), as_signed},
    {"spTxBytes", AT(R, tx.bytes), as_signed},
    {"spTxMcastPkts", AT(R, tx.multicast_packets), as_signed},
    {"spTxMcastBytes", AT(R, tx.multicast_bytes), as_signed},
    {"spTxBcastPkts", AT(R, tx.broadcast_packets), as_signed},
    {"spTxBcastBytes", AT(R, tx.broadcast_bytes), as_signed},
    {"spTxDrops", AT(R, tx.drops), as_signed},
    {"spTxErrors", AT(R, tx.errors), as_signed},
    {"spRxPkts", AT(R, rx.packets), as_signed},
    {"spRxBytes", AT(R, rx.bytes), as_signed},
    {"spRxMcastPkts", AT(R, rx.multicast_packets), as_signed},
    {"spRxMcastBytes", AT(R, rx.multicast_bytes), as_signed},
    {"spRxBcastPkts", AT(R, rx.broadcast_packets), as_signed},
    {"spRxBcastBytes", AT(R, rx.broadcast_bytes), as_signed},
    {"spRxDrops", AT(R, rx.drops), as_signed},
    {"spRxErrors", AT(R, rx.errors), as_signed},
});

}  // namespace

PyObject* PyQDP_Get_Port_Stats(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    const auto record = allocate<PortCounters>();
    if (!record)
        return print_none(no_memory);

    uint32_t size = sizeof(PortCounters);
    if (Qdp_Get_Port_Stats(switch_number, port, record.get(), &size) != 0)
        return print_none("Failed to retrieve port stats.\n");

    PyRef stats{PyDict_New()};
    if (!stats)
        return print_none("Failed to allocate stats tuple.\n");
    if (!fill(stats.get(), fast_path_fields, bytes_of(*record)))
        return none();

    size = sizeof(PortCounters);
    if (Qdp_Get_Port_Stats_Slowpath(switch_number, port, record.get(), &size) != 0)
        return print_none("Failed to retrieve slowpath port stats.\n");
    const bool complete = fill(stats.get(), slow_path_fields, bytes_of(*record));
    return built_or_none(std::move(stats), complete);
}

// Holds the place of a method that does nothing yet: deliberate.
PyObject* PyQDP_Get_Rep_Port_Stats(PyObject*, PyObject*)
{
    return none();
}

}  // namespace qdp
