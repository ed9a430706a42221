// The flow caches of the lcores.
#pragma once

namespace host {

struct Host;

struct FlowCaches {};

// Of the built-in host, whose switches stand already.
FlowCaches default_flow_caches(const Host& host);

}  // namespace host
