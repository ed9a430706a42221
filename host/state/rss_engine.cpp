// The RSS engines of the uplinks.
#include "host/state/rss_engine.h"

#include "host/state/host.h"

namespace host {

namespace {

constexpr uint32_t toeplitz = 1;
constexpr uint32_t over_ip_and_ports = 0x3f;

// An engine over `count` queues from `first` on; the first one is its primary queue.
RSSEngine engine(uint32_t id, RSSEngineType type, uint32_t first, uint32_t count, uint32_t affinity)
{
    RSSEngine result{};
    result.id = id;
    result.type = static_cast<uint32_t>(type);
    result.primary_queue = first;
    result.num_queues = count - 1;
    result.hash_function = toeplitz;
    result.hash_type = over_ip_and_ports;
    result.key_size = 40;
    result.indirection_size = 128;
    for (uint32_t i = 0; i < result.num_queues; ++i)
        result.queues[i] = static_cast<uint16_t>(first + 1 + i);
    result.affinity = affinity;
    return result;
}

}  // namespace

std::vector<RSSEngine> default_rss_engines(const Port& uplink)
{
    const uint32_t affinity = uplink.entry.port % 2;
    return {
        engine(1, RSSEngineType::default_engine, 0, 4, affinity),
        engine(2, RSSEngineType::device, 4, 2, affinity),
        engine(3, RSSEngineType::shared, 6, 1, affinity),
        engine(4, RSSEngineType::offload, 7, 1, affinity),
    };
}

}  // namespace host
