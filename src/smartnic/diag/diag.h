// Methods that diagnose and tune the SmartNIC's pipeline.
#pragma once

#include "module/python.h"

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

// p4_app.cpp
Method PyQDP_P4AppSet;
Method PyQDP_P4AppGet;

// latency.cpp
Method PyQDP_P4UKLatencySet;
Method PyQDP_P4UKLatencyDump;

// advanced_stats.cpp
Method PyQDP_AdvStatsSetEnabled;
Method PyQDP_AdvStatsGetEnabled;
Method PyQDP_AdvStatsGetCounters;

// aging.cpp
Method PyQDP_Get_Aging_Interval;
Method PyQDP_Set_Aging_Interval;

// rss_override.cpp
Method PyQDP_P4RssOverrideSet;
Method PyQDP_P4RssOverrideGet;

// log_level.cpp
Method PyQDP_P4LogLevelSet;
Method PyQDP_P4LogLevelGet;

}  // namespace qdp
