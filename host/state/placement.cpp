// Where work runs: device affinity, lcores, mbuf slabs, uplink ring sizes.
#include "host/state/placement.h"

#include "host/host.h"

namespace host {

Placement default_placement(const Host&)
{
    return {};
}

}  // namespace host
