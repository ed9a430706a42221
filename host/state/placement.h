// Where work runs: device affinity and mbuf slabs.
#pragma once

#include <cstdint>
#include <map>
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
    std::map<uint32_t, uint64_t> offload_rates;  // packets a second that a lcore's offloaded flows see, by lcore

    uint64_t offload_rate(uint32_t lcore) const;
};

}  // namespace host
