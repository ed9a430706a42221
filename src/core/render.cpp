// Rendering of addresses as text, and reading them back.
#include "core/render.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace qdp {

namespace {

// Two blanks, and as wide as the longest IPv6 text.
constexpr size_t column_width = 2 + INET6_ADDRSTRLEN - 1;
static_assert(column_width == 47);

int address_column(const char* text, char* out, uint32_t size)
{
    char column[column_width];
    std::memset(column, ' ', sizeof column);
    std::memcpy(column + 2, text, std::strlen(text));
    if (size != 0) {
        const size_t length = std::min<size_t>(size - 1, sizeof column);
        std::memcpy(out, column, length);
        out[length] = '\0';
    }
    return column_width;
}

}  // namespace

int ipv4_column(uint32_t address, char* out, uint32_t size)
{
    uint8_t part[sizeof address];
    std::memcpy(part, &address, sizeof address);
    char text[INET_ADDRSTRLEN];
    char* end = text;
    for (const uint8_t byte : part) {
        end = std::to_chars(end, std::end(text), byte).ptr;
        *end++ = '.';
    }
    end[-1] = '\0';
    return address_column(text, out, size);
}

int ipv6_column(const void* address, char* out, uint32_t size)
{
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(AF_INET6, address, text, sizeof text);
    return address_column(text, out, size);
}

int parse_address(uint32_t version, const char* text, void* address)
{
    return inet_pton(version == 4 ? AF_INET : AF_INET6, text, address);
}

}  // namespace qdp

namespace {

// The two hexadecimal digits of each byte.
constexpr auto hex_pairs = [] {
    constexpr char digits[] = "0123456789abcdef";
    std::array<char[2], 256> pairs{};
    for (size_t byte = 0; byte < pairs.size(); ++byte) {
        pairs[byte][0] = digits[byte >> 4];
        pairs[byte][1] = digits[byte & 15];
    }
    return pairs;
}();

}  // namespace

char* MACToStr(const uint8_t* mac, char* out)
{
#pragma GCC unroll 6
    for (size_t i = 0; i < mac_bytes; ++i) {
        std::memcpy(out + 3 * i, hex_pairs[mac[i]], 2);
        out[3 * i + 2] = i + 1 < mac_bytes ? ':' : '\0';
    }
    return out;
}
