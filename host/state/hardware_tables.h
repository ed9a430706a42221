// What the SmartNIC's pipeline works on: its ports, tunnels, mirrors and flows. The entries of its hardware tables are
// made from them when they are read.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace host {

struct Host;

namespace hardware {

// As numbers; an IPv4 address has the low 32 bits only.
struct Address {
    bool is_ipv4;
    uint64_t high, low;
};

// A port of the pipeline, and the LIF behind it.
struct Port {
    uint16_t port;
    uint16_t lif;
    uint16_t host_port;  // of the datapath's switch
    uint16_t tag;
    uint16_t vlan;
    uint16_t mux_vlan;
    bool is_uplink;
    uint16_t pinned_port;  // the uplink that its packets leave by
    uint8_t application;
    uint64_t mac;
    uint64_t rx_packets, tx_packets;  // a second, into and out of the pipeline
};

struct Tunnel {
    uint16_t record;  // the index of the headers that it adds
    uint8_t vtep;
    uint16_t uplink;
    uint16_t vlan;
    uint16_t outer_flow;
    uint64_t local_mac, remote_mac;
    Address local, remote;
};

struct MirrorSession {
    uint8_t session;
    bool is_egress;
    uint16_t port;
    uint16_t vlan;
    uint32_t cookie;
    uint64_t source_mac, destination_mac;
    Address source, destination;
};

struct FlowEnd {
    uint64_t mac;
    Address address;
    uint16_t transport_port;
    uint16_t vlan;                   // 0 behind a tunnel
    uint16_t port;                   // of the pipeline
    std::optional<uint16_t> tunnel;  // the record of the tunnel that it is behind
};

// One direction of a conversation.
struct Flow {
    uint32_t index;
    uint32_t ipfix;
    uint32_t conversation;  // the index of its connection's state
    bool is_reply;
    bool is_dropped;
    std::optional<uint8_t> mirror;  // the session that sees its packets as they come in
    uint8_t protocol;
    uint16_t vlan;
    uint32_t vni;
    uint64_t packets;  // a second
    uint64_t packet_bytes;
    FlowEnd source, destination;
};

}  // namespace hardware

struct HardwareTables {
    std::vector<hardware::Port> ports;
    std::vector<hardware::Tunnel> tunnels;
    std::vector<hardware::MirrorSession> mirrors;
    std::vector<hardware::Flow> flows;
};

namespace hardware {

// Where its ports and its flows come from.
std::vector<Port> ports_of(const Host& host);
std::vector<Flow> flows_of(const HardwareTables& tables);

}  // namespace hardware

// Of the built-in host, whose switches stand already.
HardwareTables default_hardware_tables(const Host& host);

}  // namespace host
