// Checks and packing that the keys of several hash tables share.
#pragma once

#include <cstdint>
#include <cstring>

#include "platform/limits.h"

namespace qdp {

// A 48-bit value as "L" parses it; a negative one has its upper bits set.
constexpr bool fits_48_bits(long long value)
{
    return static_cast<uint64_t>(value) >> 48 == 0;
}

// The low and high half of an address that may be an IPv4 one, which has its low 32 bits only.
constexpr bool fits_ipv4(long long low, long long high)
{
    return high == 0 && static_cast<uint64_t>(low) >> 32 == 0;
}

// Stores the low 48 bits of a value, least significant byte first.
inline void store_48_bits(uint8_t (&out)[mac_bytes], long long value)
{
    std::memcpy(out, &value, sizeof out);
}

}  // namespace qdp
