// Where work runs: device affinity, lcores, mbuf slabs, uplink ring sizes.
#pragma once

namespace host {

struct Host;

struct Placement {};

// Of the built-in host, whose switches stand already.
Placement default_placement(const Host& host);

}  // namespace host
