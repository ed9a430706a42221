// Records of the datapath's port, uplink and lcore counters.
#pragma once

#include <cstddef>
#include <cstdint>

// The counters of one direction of a port.
struct PortDirectionCounters {
    uint64_t bytes;
    uint64_t packets;
    uint64_t multicast_bytes;
    uint64_t multicast_packets;
    uint64_t broadcast_bytes;
    uint64_t broadcast_packets;
    uint64_t drops;
    uint64_t errors;
};

// The fast path and the slow path fill the same record.
struct PortCounters {
    PortDirectionCounters tx;
    PortDirectionCounters rx;
};
static_assert(offsetof(PortCounters, tx.packets) == 8);
static_assert(offsetof(PortCounters, tx.errors) == 56);
static_assert(offsetof(PortCounters, rx.bytes) == 64);
static_assert(offsetof(PortCounters, rx.errors) == 120);
static_assert(sizeof(PortCounters) == 128);
