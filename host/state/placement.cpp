// Where work runs: device affinity and mbuf slabs.
#include "host/state/placement.h"

namespace host {

uint64_t Placement::offload_rate(uint32_t lcore) const
{
    const auto found = offload_rates.find(lcore);
    return found == offload_rates.end() ? 20'000 + 500 * lcore : found->second;
}

}  // namespace host
