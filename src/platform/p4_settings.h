// Settings of the SmartNIC's P4 application, which travel over its command channel.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr uint32_t max_rss_ports = 1023;  // deliberately one less than the pipeline's ports
inline constexpr uint32_t max_rss_queues = 64;
inline constexpr uint32_t max_log_levels = 6;

// Where a port's packets go instead of the queue that RSS chooses. A request that reads it fills the first two words.
struct P4RssOverride {
    uint16_t switch_number;
    uint16_t port;
    uint8_t queue;
    int8_t is_override;
};
static_assert(offsetof(P4RssOverride, queue) == 4);
static_assert(sizeof(P4RssOverride) == 6);

struct P4LogLevel {
    uint8_t level;
};
static_assert(sizeof(P4LogLevel) == 1);
