// The thread load balancer: parameters, statistics, injected traffic, debug buffers.
#pragma once

namespace host {

struct Host;

struct Balancer {};

// Of the built-in host, whose switches stand already.
Balancer default_balancer(const Host& host);

}  // namespace host
