// Where work runs: device affinity and mbuf slabs.
#include "host/state/placement.h"

#include "host/host.h"

namespace host {

uint64_t Placement::offload_rate(uint32_t lcore) const
{
    const auto found = offload_rates.find(lcore);
    return found == offload_rates.end() ? 20'000 + 500 * lcore : found->second;
}

// The NICs behind the uplinks, in turns on two memory nodes.
Placement default_placement(const Host& host)
{
    Placement made;
    for (const Switch& owner : host.switches)
        for (const Port& port : owner.ports)
            if (is_a(port, ClientType::uplink))
                made.devices.push_back({port.name, static_cast<uint32_t>(made.devices.size() % 2)});
    return made;
}

}  // namespace host
