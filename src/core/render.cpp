// Rendering of addresses as text, and reading them back.
#include "core/render.h"

#include <arpa/inet.h>

#include <cstdio>

namespace qdp {

namespace {

// As wide as the longest IPv6 text.
constexpr char column_format[] = "  %-45s";
static_assert(INET6_ADDRSTRLEN == 45 + 1);

}  // namespace

int ipv4_column(uint32_t address, char* out, uint32_t size)
{
    uint8_t part[sizeof address];
    std::memcpy(part, &address, sizeof address);
    char text[INET_ADDRSTRLEN];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", part[0], part[1], part[2], part[3]);
    return std::snprintf(out, size, column_format, text);
}

int ipv6_column(const void* address, char* out, uint32_t size)
{
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(AF_INET6, address, text, sizeof text);
    return std::snprintf(out, size, column_format, text);
}

int parse_address(uint32_t version, const char* text, void* address)
{
    return inet_pton(version == 4 ? AF_INET : AF_INET6, text, address);
}

}  // namespace qdp

char* MACToStr(const uint8_t* mac, char* out)
{
    constexpr char digits[] = "0123456789abcdef";
    char* cursor = out;
    for (size_t i = 0; i < mac_bytes; ++i) {
        *cursor++ = digits[mac[i] >> 4];
        *cursor++ = digits[mac[i] & 15];
        *cursor++ = ':';
    }
    cursor[-1] = '\0';
    return out;
}
