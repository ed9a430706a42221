// The SmartNIC's pipeline: counters, offload settings, memory, mirrors, contexts, latency, advanced statistics.
#pragma once

namespace host {

struct Host;

struct Pipeline {};

// Of the built-in host, whose switches stand already.
Pipeline default_pipeline(const Host& host);

}  // namespace host
