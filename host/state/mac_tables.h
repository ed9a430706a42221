// The MAC tables of the switches.
#pragma once

#include <map>
#include <set>
#include <vector>

#include "platform/mac.h"

namespace host {

struct Host;
struct Port;

inline constexpr uint32_t port_mac_limit = 1024;
inline constexpr uint32_t switch_mac_limit = 32768;

// A static entry was added and never ages; the others the switch has learned.
struct Mac {
    uint32_t port;
    MacEntry entry;  // without its age
    bool is_static;
    uint64_t generation;  // when it was learned
};

struct MacTable {
    std::vector<Mac> macs;
    std::set<uint32_t> ports_over_limit;  // that were refused an entry
};

struct MacTables {
    std::map<uint32_t, MacTable> tables;  // by switch number

    MacTable* table(uint32_t switch_number);  // null when the host has no such switch
};

// Whether both are the entry of one address: an address is known once a switch and VLAN.
bool is_same_address(const MacEntry& one, const MacEntry& other);

// Forgets what the switch has learned of a port, and learns it anew if it learns from such ports.
void relearn_macs(Host& host, uint32_t switch_number, const Port& port);

// The age of entries is counted in generations.
uint64_t mac_generation(const Host& host);

// Of the built-in host, whose switches stand already.
MacTables default_mac_tables(const Host& host);

}  // namespace host
