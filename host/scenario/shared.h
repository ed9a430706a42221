// What several parts of a scenario's description share.
#pragma once

#include "host/scenario/composed.h"

namespace host::scenario {

inline constexpr uint32_t last_vni = max_vnis - 1;

inline constexpr char same_family[] = "an address of the same family as the source";
inline constexpr char existing_switch[] = "the number of a switch of the datapath";

inline bool has_datapath_switch(const Host& host, uint32_t number)
{
    return std::ranges::any_of(
        host.switches, [number](const Switch& each) { return each.entry && each.entry->switch_number == number; });
}

// What follows from the order in which a scenario's entries are read.
struct Order {
    int64_t next_filter = 0x100;
    uint32_t next_hardware_flow = first_hardware_flow;
    std::vector<uint32_t> uplinks;  // of the present switch, so far
    bool keeps_repeated_flows = true;
};

template <class V>
void describe_traffic(V& v, Traffic& traffic)
{
    v.optional("packets", traffic.packets, number(), "Packets a second.");
    v.optional("packetBytes", traffic.packet_bytes, number(), "Bytes of each packet.");
    v.derived("drops", traffic.drops, optional_format(number()),
              "Packets that are dropped a second. Absent: one in ten thousand of the packets.");
    v.derived(
        "errors", traffic.errors, optional_format(number()),
        "Errors a second, on uplinks and on the SmartNIC's LIFs. Absent: a small share of the packets, of an uplink "
        "only of those that it receives.");
}

inline const auto traffic_format = object_format([](auto& v, Traffic& traffic) { describe_traffic(v, traffic); });

}  // namespace host::scenario
