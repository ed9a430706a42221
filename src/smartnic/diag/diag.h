// Methods that diagnose the SmartNIC's pipeline.
#pragma once

#include "core/python.h"

namespace qdp {

// hw_tables.cpp
Method PyQDP_P4HWTableList;
Method PyQDP_P4HWTableDump;
Method PyQDP_P4CacheInvalidate;

// contexts.cpp
Method PyQDP_CTContextQuery;
Method PyQDP_FPOQueryContextMgr;
Method PyQDP_FPOHWDestroy;

// mirrors.cpp
Method PyQDP_P4MirrorTableDump;
Method PyQDP_P4PortMirrorTableDump;

// latency.cpp
Method PyQDP_P4UKLatencySet;
Method PyQDP_P4UKLatencyDump;

// advanced_stats.cpp
Method PyQDP_AdvStatsSetEnabled;
Method PyQDP_AdvStatsGetEnabled;
Method PyQDP_AdvStatsGetCounters;

}  // namespace qdp
