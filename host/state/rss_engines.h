// The receive-side scaling engines of the uplinks, and the encapsulations of mirrored (L3 SPAN) traffic.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "platform/l3span.h"
#include "platform/rss_engines.h"

namespace host {

struct Host;

struct RssEngines {
    std::map<std::pair<uint32_t, uint32_t>, std::vector<RSSEngine>> of_ports;  // by switch number and port
};

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

// Of the built-in host, whose switches stand already.
RssEngines default_rss_engines(const Host& host);
L3SpanRecords default_l3span_records(const Host& host);

}  // namespace host
