// The MAC tables of the switches.
#include "host/state/mac_tables.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "host/state/host.h"

namespace host {

namespace {

constexpr uint64_t generation_seconds = 30;

constexpr uint32_t neighbours_of_an_uplink = 12;
constexpr uint32_t max_nested = 3;  // behind a port of a virtual machine

// An uplink sees the hosts behind it, in VLANs from 100 on; another port itself, and some addresses nested in it.
template <class IsKnown>
void learn(std::vector<Mac>& macs, uint32_t switch_number, const Port& port, uint64_t generation, IsKnown is_known)
{
    const PortListEntry& entry = port.entry;
    const auto add = [&](const uint8_t(&mac)[mac_bytes], uint32_t vlan) {
        MacEntry result{};
        std::memcpy(result.mac, mac, sizeof result.mac);
        result.vlan = static_cast<uint16_t>(vlan);
        result.qdp_port = entry.qdp_port;
        if (!is_known(result))
            macs.push_back({entry.port, result, false, generation});
    };

    const uint32_t vlan = 100 + entry.port % 8;
    if (!is_a(port, ClientType::uplink))
        add(entry.mac, vlan);
    const uint32_t others = is_a(port, ClientType::uplink) ? neighbours_of_an_uplink : entry.port % (max_nested + 1);
    for (uint32_t i = 0; i < others; ++i)
        add({0x02, 0x20, 0x00, static_cast<uint8_t>(switch_number), static_cast<uint8_t>(entry.port),
             static_cast<uint8_t>(i)},
            is_a(port, ClientType::uplink) ? 100 + i % 8 : vlan);
}

}  // namespace

uint64_t mac_generation(const Host& host)
{
    return host.clock.counter_value(1) / generation_seconds;
}

uint64_t address_key(const MacEntry& entry)
{
    uint64_t key = entry.vlan;
    for (const uint8_t byte : entry.mac)
        key = key << 8 | byte;
    return key;
}

bool is_same_address(const MacEntry& one, const MacEntry& other)
{
    return address_key(one) == address_key(other);
}

void relearn_macs(Host& host, Switch& owner, const Port& port)
{
    std::vector<Mac>& macs = owner.mac_table.macs;
    std::erase_if(macs, [&](const Mac& mac) { return mac.port == port.entry.port && !mac.is_static; });
    if (!is_a(port, ClientType::uplink) || owner.setting.learns_uplink_macs)
        learn(macs, owner.entry->switch_number, port, mac_generation(host), [&](const MacEntry& entry) {
            const auto of_port = std::ranges::count(macs, port.entry.port, &Mac::port);
            return macs.size() >= owner.mac_table.limit ||
                   std::cmp_greater_equal(of_port, owner.mac_table.port_limit) ||
                   std::ranges::any_of(macs, [&](const Mac& known) { return is_same_address(known.entry, entry); });
        });
}

std::vector<Mac> default_macs(const Switch& owner, uint64_t generation)
{
    std::vector<Mac> result;
    std::unordered_set<uint64_t> known;
    for (const Port& port : owner.ports)
        learn(result, owner.entry->switch_number, port, generation,
              [&](const MacEntry& entry) { return !known.insert(address_key(entry)).second; });
    return result;
}

}  // namespace host
