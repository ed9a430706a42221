// Methods on where the datapath's work runs: affinity of the physical NICs, lcores, and mbuf slabs.
#pragma once

#include "core/python.h"

namespace qdp {

// device_affinity.cpp
Method PyQDP_List_Device_Affinity;
Method PyQDP_Set_Device_Affinity;

// lcore_ids.cpp
Method PyQDP_ListLCoreIDs;

// mbuf_fastslabs.cpp
Method PyQDP_InitMbufFastslabs;

}  // namespace qdp
