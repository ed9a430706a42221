// How traffic is made up, on every port of the host.
#pragma once

#include <cstdint>
#include <optional>

namespace host {

// Of one direction of a port.
struct Traffic {
    uint64_t packets;  // a second
    uint64_t packet_bytes;
    // A second; where nothing is said, a share of the packets, see below.
    std::optional<uint64_t> drops = {};
    std::optional<uint64_t> errors = {};
};

// Of all packets, 1 in so many.
inline constexpr uint64_t multicast_share = 50;
inline constexpr uint64_t broadcast_share = 200;
inline constexpr uint64_t drop_share = 10'000;
inline constexpr uint64_t error_share = 100'000;

}  // namespace host
