// Methods on the thread load balancer.
#pragma once

#include "core/python.h"

namespace qdp {

// debug_buffer.cpp
Method PyQDP_DumpLBDebugBuf;
Method PyQDP_FlushLBDebugBuf;

// metric.cpp
Method PyQDP_GetLBMetric;
Method PyQDP_SetLBMetric;

// parameters.cpp
Method PyQDP_SetLBParam;
Method PyQDP_GetLBParams;

// traffic.cpp
Method PyQDP_InjectLBTraffic;

// stats.cpp
Method PyQDP_DumpLBStats;

}  // namespace qdp
