// The SmartNIC's pipeline: counters, offload settings, memory, mirrors, contexts, latency, advanced statistics.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/state/table_memory.h"
#include "platform/mirrors.h"
#include "platform/p4_counters.h"
#include "platform/pipeline.h"

namespace host {

class Clock;
struct Host;

// Counts the seconds in which something was on.
class Stopwatch {
public:
    void turn(bool on, const Clock& clock);
    void clear(const Clock& clock);
    bool is_on() const { return since_.has_value(); }
    uint64_t seconds(const Clock& clock) const;

private:
    uint64_t counted_ = 0;
    std::optional<uint64_t> since_;
};

// What the driver does with the pipeline's flows, a second. As many are removed as inserted.
struct FlowOperationRates {
    uint64_t inserts = 20;
    uint64_t updates = 5;
    uint64_t gets = 100;
};

struct Pipeline {
    FpoFlowStatsConfig flow_stats{};
    std::map<std::string, uint32_t, std::less<>> offloaded;  // by portset name
    uint32_t offloads_icmp_echo = 0;
    DscpConfig dscp{};

    std::vector<MemoryTable> tables;
    std::vector<MirrorSession> mirror_sessions;
    std::vector<PortMirror> port_mirrors;

    uint64_t packet_rate = 100'000;  // of the whole pipeline from the host, a second
    FlowOperationRates operations;

    uint32_t app_is_enabled = 0;
    Stopwatch latency;
    std::map<uint32_t, Stopwatch> advanced_stats;  // by switch number
};

// The counter blocks as they stand now; of a LIF or a port that is not there, or down, they are zeros. The SmartNIC
// refreshes them once a second, so that two reads side by side agree.
P4LifCounters lif_counters(const Host& host, uint32_t number);
P4PortCounters p4_port_counters(const Host& host, uint32_t port);
P4ConntrackCounters conntrack_counters(const Host& host, uint32_t port);
P4IngressCounters ingress_counters(const Host& host);
P4EgressCounters egress_counters(const Host& host);

}  // namespace host
