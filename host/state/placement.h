// Where work runs: device affinity and mbuf slabs.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace host {

struct Placement {
    struct Device {
        std::string name;
        uint32_t affinity;
    };
    std::vector<Device> devices;
    bool has_mbuf_fastslabs = false;
    // What is said of a lcore; the rest follows from its number and from what runs on it.
    struct Load {
        std::optional<uint64_t> offloaded_packets;  // that its offloaded flows see, a second
        std::optional<uint64_t> failures;           // of their offload, a second
        uint64_t cache_failures = 0;                // flows that find no room in its cache, a second
        std::optional<uint32_t> cpu;                // in percent
    };
    std::map<uint32_t, Load> lcores;

    Load load(uint32_t lcore) const;
    uint64_t offload_rate(uint32_t lcore) const;
};

}  // namespace host
