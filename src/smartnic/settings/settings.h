// Methods on the settings of the SmartNIC: what it offloads, ages, marks, logs, and where a port's packets go.
#pragma once

#include "core/python.h"

namespace qdp {

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

// p4_app.cpp
Method PyQDP_P4AppSet;
Method PyQDP_P4AppGet;

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
