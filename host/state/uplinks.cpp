// Uplinks: their device counters, private statistics, queues and filters.
#include "host/state/uplinks.h"

#include "host/host.h"

namespace host {

Uplinks default_uplinks(const Host&)
{
    return {};
}

}  // namespace host
