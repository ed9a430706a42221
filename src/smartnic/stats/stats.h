// Methods on the SmartNIC's counters and offload settings.
#pragma once

#include "module/python.h"

namespace qdp {

// pipeline_stats.cpp
Method PyQDP_LifStatsGet;
Method PyQDP_PortStatsGet;
Method PyQDP_P4IStatsGet;
Method PyQDP_P4EStatsGet;
Method PyQDP_CTStatsGet;

// flow_stats.cpp
Method PyQDP_P4StatsFlowGet;

// fpo_flow_stats_config.cpp
Method PyQDP_Get_FPO_Flow_Stats_Config;
Method PyQDP_Set_FPO_Flow_Stats_Config;

// offload.cpp
Method PyQDP_SetOffloadFlows;
Method PyQDP_GetOffloadFlows;
Method PyQDP_SetOffloadICMPEcho;
Method PyQDP_GetOffloadICMPEcho;

// dscp.cpp
Method PyQDP_DSCPConfSet;
Method PyQDP_DSCPConfGet;

}  // namespace qdp
