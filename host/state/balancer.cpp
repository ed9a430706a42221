// The thread load balancer: parameters, statistics, injected traffic, debug buffers.
#include "host/state/balancer.h"

#include "host/host.h"

namespace host {

Balancer default_balancer(const Host&)
{
    return {};
}

}  // namespace host
