// What the SmartNIC keeps of an offloaded flow: its counters and its connection. A flow's two records have one number.
#pragma once

#include <cstdint>
#include <optional>

namespace host {

struct Flow;
struct Host;

struct FlowCounters {
    uint64_t packets;
    uint64_t bytes;
    uint8_t tcp_flags;
};

struct ConnectionEnd {
    uint32_t lowest_sequence, highest_sequence;
    uint16_t max_window;
    uint8_t window_scale;
    uint8_t state;
};

struct Connection {
    ConnectionEnd source, destination;
    uint8_t software_state;
    bool is_logged;
};

// The number of an offloaded flow's records.
uint32_t record_of(const Flow& flow);

bool is_dropped(const Flow& flow);

// Connections of TCP are tracked, unless their packets are dropped.
bool is_tracked(const Flow& flow);

// Zeros where there is no such record.
FlowCounters flow_counters(const Host& host, uint32_t record);
Connection connection(const Host& host, uint32_t record);

}  // namespace host
