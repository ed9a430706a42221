// The flow caches of the lcores.
#pragma once

#include <cstdint>

namespace host {

struct Host;

struct FlowCaches {};

// Of the built-in host, whose switches stand already.
FlowCaches default_flow_caches(const Host& host);

// Empties the flow tables of a switch.
void clear_flows(Host& host, uint32_t switch_number);

}  // namespace host
