// Uplinks: their device counters, private statistics, queues and filters.
#pragma once

namespace host {

struct Host;

struct Uplinks {};

// Of the built-in host, whose switches stand already.
Uplinks default_uplinks(const Host& host);

}  // namespace host
