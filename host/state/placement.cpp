// Where work runs: device affinity and mbuf slabs.
#include "host/state/placement.h"

namespace host {

Placement::Load Placement::load(uint32_t lcore) const
{
    const auto found = lcores.find(lcore);
    return found == lcores.end() ? Load{} : found->second;
}

uint64_t Placement::offload_rate(uint32_t lcore) const
{
    return load(lcore).offloaded_packets.value_or(20'000 + 500 * lcore);
}

}  // namespace host
