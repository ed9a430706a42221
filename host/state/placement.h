// Where work runs: device affinity and mbuf slabs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

struct Host;

struct Placement {
    struct Device {
        std::string name;
        uint32_t affinity;
    };
    std::vector<Device> devices;
    bool has_mbuf_fastslabs = false;
};

// Of the built-in host, whose switches stand already.
Placement default_placement(const Host& host);

}  // namespace host
