// Answers about the contexts of the SmartNIC's connections.
#include "host/answers/answer.h"
#include "host/state/offloaded_flows.h"

namespace host {

namespace {

FpoContextSide side_of(const ConnectionEnd& end)
{
    return {end.lowest_sequence, end.highest_sequence, end.highest_sequence - end.lowest_sequence, end.max_window,
            end.state,           end.window_scale};
}

FpoContext context_of(const Connection& connection)
{
    return {sizeof(FpoContext),
            0,
            connection.software_state != 0,
            0,
            side_of(connection.source),
            side_of(connection.destination)};
}

// A context is known by the switch, a flow of its SmartNIC, and the flow's connection.
uint32_t query_context(Host& host, ByteSpan request, Output output)
{
    const auto query = record_in<FpoContextRequest>(request);
    uint32_t size = 0;
    if (output.data && output.capacity >= sizeof size)
        std::memcpy(&size, output.data, sizeof size);
    if (!query || query->query_type != context_query_type || size != sizeof(FpoContext))
        return status_refused;

    const auto [switch_number, hardware_index, connection_number] = query->ids;
    const Flow* flow = host.flowcache.offloaded(hardware_index);
    if (switch_number != host.smartnic.uplink_switch || !flow || !is_tracked(*flow) ||
        record_of(*flow) != connection_number)
        return status_not_found;
    return output.put(context_of(connection(host, connection_number)));
}

const Answer context_answers[] = {{"Qdp_FPOQueryMgr", query_context}};

}  // namespace

}  // namespace host
