// Counter blocks of the SmartNIC's pipeline, as the operations here and the hardware's tables both give them.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr uint32_t max_lifs = 1024;
inline constexpr uint32_t max_p4_ports = 1024;

struct P4TrafficCounters {
    uint64_t unicast_bytes;
    uint64_t unicast_packets;
    uint64_t multicast_bytes;
    uint64_t multicast_packets;
    uint64_t broadcast_bytes;
    uint64_t broadcast_packets;
    uint64_t reserved[2];
};
static_assert(sizeof(P4TrafficCounters) == 64);

struct P4PortCounters {
    P4TrafficCounters rx;
    P4TrafficCounters rx_drops;
    P4TrafficCounters tx;
    P4TrafficCounters tx_drops;
};
static_assert(sizeof(P4PortCounters) == 256);

struct P4LifCounters {
    P4PortCounters traffic;
    struct {
        uint64_t disabled;
        uint64_t empty;
        uint64_t error;
        uint64_t descriptor_fetch_error;
        uint64_t descriptor_data_error;
        uint64_t reserved[3];
    } rx_queue;
    struct {  // has no counter of empty queues
        uint64_t disabled;
        uint64_t error;
        uint64_t descriptor_fetch_error;
        uint64_t descriptor_data_error;
        uint64_t reserved[4];
    } tx_queue;
};
static_assert(offsetof(P4LifCounters, rx_queue) == 256);
static_assert(offsetof(P4LifCounters, tx_queue) == 320);
static_assert(sizeof(P4LifCounters) == 384);

struct P4IngressCounters {
    uint64_t from_host;
    uint64_t from_switch;
    uint64_t from_cpu;
    uint64_t user_checksum_errors;
    uint64_t substrate_checksum_errors;
    uint64_t malformed;
    uint64_t reserved[2];
};
static_assert(sizeof(P4IngressCounters) == 64);

struct P4EgressCounters {
    uint64_t to_host;
    uint64_t to_switch;
    uint64_t to_cpu;
    uint64_t flow_miss;
    uint64_t conntrack_redirects;
    uint64_t wrong_reinjects;
    uint64_t drops;
    uint64_t reserved;
};
static_assert(sizeof(P4EgressCounters) == 64);

// What connection tracking passed and dropped. Only the beginning is known; the library takes room for the whole.
struct P4ConntrackCounters {
    uint64_t tx_pass_bytes;
    uint64_t tx_pass_packets;
    uint64_t tx_drop_bytes;
    uint64_t tx_drop_packets;
    uint64_t rx_pass_bytes;
    uint64_t rx_pass_packets;
    uint64_t rx_drop_bytes;
    uint64_t rx_drop_packets;
    uint64_t reserved[24];
};
static_assert(offsetof(P4ConntrackCounters, rx_pass_bytes) == 32);
static_assert(offsetof(P4ConntrackCounters, rx_drop_packets) == 56);
static_assert(sizeof(P4ConntrackCounters) == 256);

extern "C" {

uint32_t Qdp_Lif_Stats_Get(uint32_t lif, P4LifCounters* counters, uint32_t* size);
uint32_t Qdp_Port_Stats_Get(uint32_t port, P4PortCounters* counters, uint32_t* size);
uint32_t Qdp_CT_Stats_Get(uint32_t index, P4ConntrackCounters* counters, uint32_t* size);
uint32_t Qdp_P4I_Stats_Get(P4IngressCounters* counters, uint32_t* size);
uint32_t Qdp_P4E_Stats_Get(P4EgressCounters* counters, uint32_t* size);

}  // extern "C"
