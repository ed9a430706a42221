// Methods on the SmartNIC's counters.
#pragma once

#include "core/python.h"

namespace qdp {

// pipeline_stats.cpp
Method PyQDP_LifStatsGet;
Method PyQDP_PortStatsGet;
Method PyQDP_P4IStatsGet;
Method PyQDP_P4EStatsGet;
Method PyQDP_CTStatsGet;

// flow_stats.cpp
Method PyQDP_P4StatsFlowGet;

}  // namespace qdp
