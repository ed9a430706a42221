// The MAC tables of the switches.
#pragma once

#include <set>
#include <vector>

#include "platform/mac.h"

namespace host {

struct Host;
struct Port;
struct Switch;

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
    uint32_t limit = 32768;
    uint32_t port_limit = 1024;
};

// An address with its VLAN as one number.
uint64_t address_key(const MacEntry& entry);

// Whether both are the entry of one address: an address is known once a switch and VLAN.
bool is_same_address(const MacEntry& one, const MacEntry& other);

// Forgets what the switch has learned of a port, and learns it anew, within the limits, if it learns from such ports.
void relearn_macs(Host& host, Switch& owner, const Port& port);

// What a switch has learned of its ports when nobody describes it.
std::vector<Mac> default_macs(const Switch& owner, uint64_t generation);

// The age of entries is counted in generations.
uint64_t mac_generation(const Host& host);

}  // namespace host
