// The encapsulations of mirrored (L3 SPAN) traffic.
#pragma once

#include <array>
#include <cstdint>
#include <map>

#include "platform/l3span.h"

namespace host {

// A destination of mirrored traffic; IPv4 addresses are followed by zeros.
struct L3SpanDestination {
    uint32_t switch_number;
    bool is_ipv6;
    std::array<uint8_t, 16> address;

    auto operator<=>(const L3SpanDestination&) const = default;
};

struct L3SpanRecords {
    std::map<L3SpanDestination, L3SPANRecord> records;
};

}  // namespace host
