// The SmartNIC's pipeline: counters, offload settings, memory, mirrors, contexts, latency, advanced statistics.
#include "host/state/pipeline.h"

#include "host/host.h"

namespace host {

Pipeline default_pipeline(const Host&)
{
    return {};
}

}  // namespace host
