// Bounds that every subsystem of the datapath shares.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr uint32_t max_switches = 16;
inline constexpr uint32_t max_ports = 16384;  // of one switch
inline constexpr uint32_t max_queues = 64;    // of one port and direction
inline constexpr uint32_t max_lcores = 64;    // of the host
inline constexpr size_t mac_bytes = 6;
inline constexpr uint32_t max_vlan = 4094;
