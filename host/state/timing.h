// Host-wide timing settings, RSS engines and L3 SPAN records.
#pragma once

namespace host {

struct Host;

struct Timing {};

// Of the built-in host, whose switches stand already.
Timing default_timing(const Host& host);

}  // namespace host
