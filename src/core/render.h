// Rendering of addresses as text, and reading them back.
#pragma once

#include <bit>
#include <cstdint>

#include "core/bytes.h"
#include "core/python.h"
#include "platform/limits.h"

namespace qdp {

inline constexpr size_t mac_text_bytes = sizeof "00:00:00:00:00:00";

// Columns of a flow's line: two blanks and the address, padded to the longest IPv6 text, so that both line up. Cut to
// `size` bytes, the NUL included; the result is the length of the uncut column.
int ipv4_column(uint32_t address, char* out, uint32_t size);  // in network byte order
int ipv6_column(const void* address, char* out, uint32_t size);

// Reads an IPv4 address (4 bytes) for version 4 and an IPv6 address (16 bytes) for any other version. 1 for success,
// 0 for a text that is no address of that family.
int parse_address(uint32_t version, const char* text, void* address);

// The number of set bits.
constexpr int bit_count(uint64_t bits)
{
    return std::popcount(bits);
}

}  // namespace qdp

// Writes six bytes as "02:30:00:0a:0b:0c" and a NUL into the output, at least 18 bytes, and returns it.
QDP_EXPORT char* MACToStr(const uint8_t* mac, char* out);
