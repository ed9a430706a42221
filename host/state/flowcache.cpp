// The flow caches of the lcores.
#include "host/state/flowcache.h"

#include <algorithm>

#include "host/state/host.h"

namespace host {

namespace {

bool has_lcore(const Switch& owner, uint32_t lcore)
{
    return lcore < max_lcores && (owner.entry->lcore_mask >> lcore & 1);
}

}  // namespace

FlowTables::FlowTables(std::array<std::vector<Flow>, max_lcores> tables) : tables_{std::move(tables)}
{
    for (const auto& table : tables_)
        for (const Flow& flow : table)
            if (is_in_pipeline(flow))
                in_pipeline_.emplace(flow.offload->hardware_index, &flow);
}

const Flow* FlowTables::in_pipeline(uint32_t hardware_index) const
{
    const auto found = in_pipeline_.find(hardware_index);
    return found == in_pipeline_.end() ? nullptr : found->second;
}

std::span<const Flow> Flowcache::of(uint32_t lcore) const
{
    return lcores[lcore].since ? std::span{tables->of(lcore)} : std::span<const Flow>{};
}

const Flow* Flowcache::offloaded(uint32_t hardware_index) const
{
    const Flow* flow = tables->in_pipeline(hardware_index);
    return flow && lcores[flow->lcore].since ? flow : nullptr;
}

uint64_t Flowcache::num_offloaded() const
{
    uint64_t count = 0;
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        count += static_cast<uint64_t>(std::ranges::count_if(of(lcore), is_in_pipeline));
    return count;
}

uint64_t software_hits(const Host& host, const Flow& flow)
{
    return host.clock.counter_value(flow.software_rate, host.flowcache.lcores[flow.lcore].since.value_or(0));
}

uint64_t hardware_hits(const Host& host, const Flow& flow)
{
    return host.clock.counter_value(flow.hardware_rate, host.flowcache.lcores[flow.lcore].since.value_or(0));
}

void clear_flows(Host& host, const Switch& owner)
{
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore) {
        LcoreFlows& state = host.flowcache.lcores[lcore];
        if (!has_lcore(owner, lcore) || !state.since)
            continue;
        for (const Flow& each : host.flowcache.of(lcore)) {
            ++state.cleared.count;
            state.cleared.software_hits += software_hits(host, each);
            state.cleared.hardware_hits += hardware_hits(host, each);
        }
        state.since.reset();
    }
}

// The same flows come again; those that were offloaded get their indexes back.
void fill_flows(Host& host, const Switch& owner)
{
    for (uint32_t lcore = 0; lcore < max_lcores; ++lcore)
        if (has_lcore(owner, lcore))
            host.flowcache.lcores[lcore].since = host.clock.nanoseconds();
}

}  // namespace host
