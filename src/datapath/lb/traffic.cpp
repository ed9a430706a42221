// Synthetic traffic for the load balancer: the caller's tuples, checked against the switch's ports and sent in batches.
#include "core/arguments.h"
#include "core/bytes.h"
#include "core/fail.h"
#include "platform/lb.h"
#include "platform/ports.h"

namespace qdp {

namespace {

// These texts end in two line breaks, deliberately.
constexpr char no_traffic_memory[] = "Memory allocation failed.\n\n";

constexpr uint32_t max_load_percent = 100;
constexpr uint64_t packets_per_percent = 100'000;
constexpr uint64_t packet_bytes = 64;

// What a caller's tuple says, in its order.
struct TrafficArguments {
    uint32_t source_port;
    uint32_t source_queue;
    uint32_t destination_port;
    uint32_t destination_queue;
    uint32_t percent;
};

// An item that is no integer leaves no exception behind.
bool parse_arguments(PyObject* object, TrafficArguments& arguments)
{
    uint32_t* const numbers[] = {&arguments.source_port, &arguments.source_queue, &arguments.destination_port,
                                 &arguments.destination_queue, &arguments.percent};
    const Py_ssize_t count = sizeof numbers / sizeof *numbers;
    if (!PyTuple_Check(object) || PyTuple_Size(object) != count)
        return false;
    for (Py_ssize_t i = 0; i < count; ++i)
        if (!parse_integer(PyTuple_GetItem(object, i), *numbers[i])) {
            PyErr_Clear();
            return false;
        }
    return true;
}

// The port list's count may claim more than the list holds.
PortListEntry port_at(const PortList& ports, uint32_t position)
{
    return entries_of(ports).load<PortListEntry>(position * sizeof(PortListEntry));
}

bool is_uplink(const PortListEntry& port)
{
    return static_cast<ClientType>(port.client_type) == ClientType::uplink;
}

// An uplink's queue is the library's choice; any other port names one that it has.
bool names_queue(const PortListEntry& port, uint32_t queue, uint32_t num_queues)
{
    return is_uplink(port) ? queue == lb_no_queue : queue < num_queues;
}

LBDirection direction_between(const PortListEntry& source, const PortListEntry& destination)
{
    if (is_uplink(source))
        return LBDirection::uplink_to_port;
    return is_uplink(destination) ? LBDirection::port_to_uplink : LBDirection::port_to_port;
}

// The traffic that a caller's tuple asks for. False when it is none between these ports.
bool parse_traffic(PyObject* object, const PortList& ports, LBTraffic& traffic)
{
    TrafficArguments arguments;
    if (!parse_arguments(object, arguments) || arguments.percent > max_load_percent ||
        arguments.source_port >= ports.count || arguments.destination_port >= ports.count)
        return false;

    const PortListEntry source = port_at(ports, arguments.source_port);
    const PortListEntry destination = port_at(ports, arguments.destination_port);
    if ((is_uplink(source) && is_uplink(destination)) ||
        !names_queue(source, arguments.source_queue, source.num_tx_queues) ||
        !names_queue(destination, arguments.destination_queue, destination.num_rx_queues))
        return false;

    traffic.direction = direction_between(source, destination);
    traffic.source_port = arguments.source_port;
    traffic.source_queue = arguments.source_queue;
    traffic.destination_port = arguments.destination_port;
    traffic.destination_queue = arguments.destination_queue;
    traffic.packet_rate = arguments.percent * packets_per_percent;
    traffic.byte_rate = traffic.packet_rate * packet_bytes;
    return true;
}

}  // namespace

PyObject* PyQDP_InjectLBTraffic(PyObject*, PyObject* args)
{
    uint32_t switch_number;
    PyObject* loads;
    if (!PyArg_ParseTuple(args, "IO", &switch_number, &loads) || !PyTuple_Check(loads))
        return print_none(invalid_parameter_blank_line);

    const auto ports = allocate_large<PortList>();
    if (!ports)
        return print_none(no_traffic_memory);
    uint32_t size = sizeof(PortList);
    if (Qdp_Get_Port_List(switch_number, ports.get(), &size) != 0)
        return print_none("Failed to retrieve list of ports.\n");

    const auto request = allocate<LBTrafficRequest>();
    if (!request)
        return print_none(no_traffic_memory);
    request->switch_number = switch_number;

    const Py_ssize_t count = PyTuple_Size(loads);
    for (Py_ssize_t i = 0; i < count; ++i) {
        // What went out in earlier batches stays injected when this one is wrong.
        if (!parse_traffic(PyTuple_GetItem(loads, i), *ports, request->entries[request->count]))
            return print_none_format("Invalid traffic format at traffic %d.\n\n", static_cast<int>(i));
        ++request->count;

        const bool is_last = i + 1 == count;
        if (request->count < max_lb_traffic && !is_last)
            continue;
        if (Qdp_InjectLBTraffic(request.get()) != 0)
            return print_none("Failed to inject traffic.\n\n");
        if (is_last)
            break;
        *request = {switch_number, 0, {}};
        if (PyErr_CheckSignals() != 0)  // Ctrl-C ends an injection of many batches
            return nullptr;
    }
    return none();
}

}  // namespace qdp
