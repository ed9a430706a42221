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

// The device counters of an uplink, or of one queue of it.
struct UplinkCounters {
    uint64_t rx_packets;
    uint64_t tx_packets;
    uint64_t rx_bytes;
    uint64_t tx_bytes;
    uint64_t rx_errors;
    uint64_t tx_errors;
    uint64_t rx_drops;
    uint64_t tx_drops;
    uint64_t rx_multicast_packets;
    uint64_t rx_broadcast_packets;
    uint64_t tx_multicast_packets;
    uint64_t tx_broadcast_packets;
    uint64_t collisions;
    uint64_t rx_length_errors;
    uint64_t rx_overflow_errors;
    uint64_t rx_crc_errors;
    uint64_t rx_frame_align_errors;
    uint64_t rx_fifo_errors;
    uint64_t rx_miss_errors;
    uint64_t tx_aborted_errors;
    uint64_t tx_carrier_errors;
    uint64_t tx_fifo_errors;
    uint64_t tx_heartbeat_errors;
    uint64_t tx_window_errors;
};
static_assert(offsetof(UplinkCounters, rx_multicast_packets) == 64);
static_assert(offsetof(UplinkCounters, collisions) == 96);
static_assert(offsetof(UplinkCounters, tx_window_errors) == 184);
static_assert(sizeof(UplinkCounters) == 192);
