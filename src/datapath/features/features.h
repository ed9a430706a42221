// Methods on a switch's features, on flow offload, the timing of flows, RSS engines and L3 SPAN.
#pragma once

#include "core/python.h"

namespace qdp {

// switch_settings.cpp
Method PyQDP_GetSwitchNUMATeam;
Method PyQDP_SetSwitchNUMATeam;
Method PyQDP_GetSwitchBurstSize;
Method PyQDP_SetSwitchBurstSize;
Method PyQDP_GetSwitchOverlayL2Flow;
Method PyQDP_SetSwitchOverlayL2Flow;
Method PyQDP_GetSwitchMetaFlow;
Method PyQDP_SetSwitchMetaFlow;

// lro.cpp
Method PyQDP_GetPortLRO;
Method PyQDP_SetPortLRO;
Method PyQDP_GetSwitchLRO;
Method PyQDP_SetSwitchLRO;

// min_flow_layer.cpp
Method PyQDP_GetSwitchMinFlowLayer;
Method PyQDP_SetSwitchMinFlowLayer;

// fpo.cpp
Method PyQDP_GetFPOEnabled;
Method PyQDP_EnableFPO;

// fpo_stats.cpp
Method PyQDP_Get_FPO_Stats;
Method PyQDP_Get_FPO_Uplink_Status;
Method PyQDP_Get_FPO_Uplink_Stats;

// timing.cpp
Method PyQDP_GetFlowTimeout;
Method PyQDP_SetFlowTimeout;
Method PyQDP_Get_FPO_Reval_Config;
Method PyQDP_Set_FPO_Reval_Config;
Method PyQDP_Get_FPO_DelayCtOl_Config;
Method PyQDP_Set_FPO_DelayCtOl_Config;
Method PyQdp_Get_Refresh_Pkt_Injection;
Method PyQdp_Set_Refresh_Pkt_Injection;

// rss_engine.cpp
Method PyQDP_List_RSS_Engine;

// l3span.cpp
Method PyQDP_Get_L3SPAN_Record;

}  // namespace qdp
