// Answers about flow offload. Its counters follow from the lcore or the uplink and the clock.
#include "host/answers/answer.h"
#include "host/state/property.h"

namespace host {

namespace {

constexpr uint32_t lcore_bits = 64;

// What a switch may offload now: what its uplinks can, as far as its host property allows it. A switch without the
// property offloads whatever its uplinks can.
uint32_t models_in_use(const Switch& owner)
{
    const auto settings = property<FpoSettings>(owner, fpo_property);
    if (!settings)
        return owner.features.nic.models;
    return settings->flags & fpo_enabled ? owner.features.nic.models & settings->models : 0;
}

// A switch without ports has no flows.
FpoLcoreStats lcore_stats(const Host& host, const Switch& owner, uint32_t lcore)
{
    const uint64_t hits = owner.ports.empty() ? 0 : host.clock.counter_value(host.placement.offload_rate(lcore));
    FpoLcoreStats stats{};
    stats.lcore = lcore;
    stats.hits = hits;
    stats.delay_mark_matching = hits / 1'000;
    stats.ephemeral_flows = hits / 400;
    stats.transient_flows = hits / 800;
    stats.conntrack_packets_queued = hits / 100;
    stats.conntrack_packets_injected = hits / 110;
    stats.conntrack_packets_in_software = stats.conntrack_packets_queued - stats.conntrack_packets_injected;
    const auto said = host.placement.load(lcore).failures;
    const uint64_t failures = said && hits ? host.clock.counter_value(*said) : hits / 100'000;
    stats.conntrack_contexts_failed = failures;
    stats.mark_mismatched = said ? failures / 2 : hits / 5'000;
    stats.pnic_mismatched = said ? failures / 4 : hits / 20'000;
    return stats;
}

// One entry a wanted lcore, all of which must belong to the switch; of the record only as much as they take.
uint32_t get_stats(Host& host, uint32_t switch_number, ByteSpan wanted, Output output)
{
    const Switch* owner = host.datapath_switch(switch_number);
    std::vector<uint32_t> lcores(wanted.size() / sizeof(uint32_t));
    const size_t head = offsetof(FpoLcoreStatsList, entries);
    if (!owner || head + lcores.size() * sizeof(FpoLcoreStats) > output.capacity)
        return status_refused;
    if (!lcores.empty())
        std::memcpy(lcores.data(), wanted.data(), lcores.size() * sizeof(uint32_t));
    for (const uint32_t lcore : lcores)
        if (lcore >= lcore_bits || !(owner->entry->lcore_mask >> lcore & 1))
            return status_refused;

    const uint32_t counts[] = {static_cast<uint32_t>(lcores.size()), 0};
    static_assert(sizeof counts == head);
    output.write(0, bytes_of(counts));
    size_t end = head;
    for (const uint32_t lcore : lcores) {
        output.write(end, bytes_of(lcore_stats(host, *owner, lcore)));
        end += sizeof(FpoLcoreStats);
    }
    output.set_size(end);
    return status_success;
}

uint32_t get_offload_status(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    const Port* uplink = host.uplink(switch_number, port);
    if (!uplink)
        return status_refused;
    const Switch& owner = *host.datapath_switch(switch_number);
    FpoUplinkStatus status = owner.features.nic;
    status.models = models_in_use(owner);
    status.num_flows_offloaded = status.models ? uplink->offload.flows : 0;
    return output.put(status);
}

// An uplink whose NIC offloads nothing is never called.
uint32_t get_offload_stats(Host& host, uint32_t switch_number, uint32_t port, Output output)
{
    const Port* uplink = host.uplink(switch_number, port);
    if (!uplink)
        return status_refused;
    FpoUplinkStats stats{};
    if (host.datapath_switch(switch_number)->features.nic.models) {
        const uint64_t flows = host.clock.counter_value(uplink->offload.flow_rate);
        stats.ring_full = flows / 5'000;
        stats.creation_full = flows / 9'000;
        stats.succeeded = {flows, flows, flows - flows / 10, 5 * flows, 1};
        stats.bulk_succeeded = {flows / 64, flows / 70, flows / 8, flows / 32, flows / 128};
        stats.failed = {flows / 700, flows / 1'000, flows / 4'000, flows / 3'000, 0};
        stats.num_pending_calls = flows % 7;
        stats.bulk_failed.allocate = flows / 20'000;
        stats.context_succeeded = {flows / 4, flows / 5, flows / 6, flows / 3};
        stats.context_failed.create = flows / 2'000;
        stats.num_enable_calls = 1;
    }
    return output.put(stats);
}

const Answer fpo_answers[] = {
    {"Qdp_Get_FPO_Stats", get_stats},
    {"Qdp_Get_FPO_Uplink_Status", get_offload_status},
    {"Qdp_Get_FPO_Uplink_Stats", get_offload_stats},
};

}  // namespace

}  // namespace host
