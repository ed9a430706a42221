// An uplink's device counters, those of one of its queues, and the private statistics of its driver.
#include "core/arguments.h"
#include "core/build.h"
#include "platform/stats.h"

namespace qdp {

namespace {

// The counters are shown signed, in the order of the record.
using R = UplinkCounters;
constexpr auto counters = fields<sizeof(R)>({
    {"rxPkts", AT(R, rx_packets), as_signed},
    {"txPkts", AT(R, tx_packets), as_signed},
    {"rxBytes", AT(R, rx_bytes), as_signed},
    {"txBytes", AT(R, tx_bytes), as_signed},
    {"rxErrors", AT(R, rx_errors), as_signed},
    {"txErrors", AT(R, tx_errors), as_signed},
    {"rxDrops", AT(R, rx_drops), as_signed},
    {"txDrops", AT(R, tx_drops), as_signed},
    {"rxMulticastPkts", AT(R, rx_multicast_packets), as_signed},
    {"rxBroadcastPkts", AT(R, rx_broadcast_packets), as_signed},
    {"txMulticastPkts", AT(R, tx_multicast_packets), as_signed},
    {"txBroadcastPkts", AT(R, tx_broadcast_packets), as_signed},
    {"collisions", AT(R, collisions), as_signed},
    {"rxLengthErrors", AT(R, rx_length_errors), as_signed},
    {"rxOverflowErrors", AT(R, rx_overflow_errors), as_signed},
    {"rxCRCErrors", AT(R, rx_crc_errors), as_signed},
    {"rxFrameAlignErrors", AT(R, rx_frame_align_errors), as_signed},
    {"rxFifoErrors", AT(R, rx_fifo_errors), as_signed},
    {"rxMissErrors", AT(R, rx_miss_errors), as_signed},
    {"txAbortedErrors", AT(R, tx_aborted_errors), as_signed},
    {"txCarrierErrors", AT(R, tx_carrier_errors), as_signed},
    {"txFifoErrors", AT(R, tx_fifo_errors), as_signed},
    {"txHeartbeatErrors", AT(R, tx_heartbeat_errors), as_signed},
    {"txWindowErrors", AT(R, tx_window_errors), as_signed},
});

// A list of (name, value) tuples; a failure is printed and makes it None.
PyObject* counter_list(const UplinkCounters& record)
{
    PyRef list{PyList_New(std::size(counters.rows))};
    if (!list)
        return print_none("Failed to allocate uplink stats.\n");

    Py_ssize_t position = 0;
    for (const Field& counter : counters.rows) {
        PyObject* tuple = Py_BuildValue("(s, l)", counter.key, bytes_of(record).signed_at(counter.where));
        if (!tuple)
            return print_none("Failed to allocate uplink stats counter.\n");
        if (PyList_SetItem(list.get(), position++, tuple) != 0)
            return print_none("Failed to set uplink stats counter.\n");
    }
    return list.release();
}

// A text of `length` bytes, or null. A NUL follows it, for a library that fills it without one. By calloc, which does
// not touch the memory of an absurd length.
Owned<char> allocate_text(size_t length)
{
    return Owned<char>{static_cast<char*>(std::calloc(length + 1, 1))};
}

// The length of the driver's private statistics; an uplink whose driver cannot say it has none.
uint32_t private_stats_length(uint32_t switch_number, uint32_t port)
{
    uint32_t length = 0;
    uint32_t size = sizeof length;
    return Qdp_Get_Uplink_Priv_Stats_Len(switch_number, port, &length, &size) == 0 ? length : 0;
}

}  // namespace

PyObject* PyQDP_Get_Uplink_Stats(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    Owned<char> text;
    if (uint32_t length = private_stats_length(switch_number, port); length != 0) {
        text = allocate_text(length);
        if (!text)
            return print_none(no_memory);
        if (Qdp_Get_Uplink_Priv_Stats(switch_number, port, text.get(), &length) != 0)
            return print_null("Failed to get private stats.\n");
    }

    UplinkCounters record{};
    uint32_t size = sizeof record;
    if (Qdp_Get_Uplink_Stats(switch_number, port, &record, &size) != 0)
        return print_null("Failed to get uplink stats.\n");

    const PyRef list{counter_list(record)};
    return Py_BuildValue("{s:O, s:s}", "uplinkStats", list.get(), "privStats", text ? text.get() : "");
}

PyObject* PyQDP_Get_Uplink_Queue_Stats(PyObject*, PyObject* args)
{
    uint32_t switch_number, port, direction, queue;
    if (!PyArg_ParseTuple(args, "IIII", &switch_number, &port, &direction, &queue) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    UplinkCounters record{};
    uint32_t size = sizeof record;
    if (Qdp_Get_Uplink_Queue_Stats(switch_number, port, queue, direction != 0, &record, &size) != 0)
        return print_none("Failed to get uplink stats.\n");
    return counter_list(record);
}

}  // namespace qdp
