// Methods on the datapath's counters.
#pragma once

#include "core/python.h"

namespace qdp {

// port_stats.cpp
Method PyQDP_Get_Port_Stats;
Method PyQDP_Get_Rep_Port_Stats;

// uplink_stats.cpp
Method PyQDP_Get_Uplink_Stats;
Method PyQDP_Get_Uplink_Queue_Stats;

// lcore_stats.cpp
Method PyQDP_Get_Flow_Stats;

}  // namespace qdp
