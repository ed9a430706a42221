// What the SmartNIC's hardware tables hold beyond its port model and the offloaded flows: tunnels, and headers of
// mirror sessions. The entries of the tables are made from all of these when they are read.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/mirrors.h"
#include "platform/p4_tables.h"

namespace host {

namespace hardware {

// As numbers; an IPv4 address has the low 32 bits only.
struct Address {
    bool is_ipv4;
    uint64_t high, low;
};

struct Tunnel {
    uint16_t record;  // the index of the headers that it adds
    bool is_geneve;   // else VXLAN
    uint8_t vtep;
    uint16_t uplink;  // port
    uint16_t vlan;
    uint16_t outer_flow;
    uint64_t local_mac, remote_mac;
    Address local, remote;
};

// The headers that a mirror session adds to its packets.
struct MirrorHeaders {
    uint32_t number;  // of the session's entry
    uint16_t vlan;
    uint32_t cookie;
    uint64_t source_mac, destination_mac;
    Address source, destination;
};

// The entry of a session: those for what goes out lie behind those for what comes in.
uint32_t mirror_number(const ::MirrorSession& session);

}  // namespace hardware

struct HardwareTables {
    std::vector<hardware::Tunnel> tunnels;
    std::vector<hardware::MirrorHeaders> mirrors;
};

}  // namespace host
