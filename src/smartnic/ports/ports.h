// The methods about the SmartNIC's port model: mux switches, host PFs, LIFs, mux VLAN ports, the output port table.
#pragma once

#include "core/python.h"

namespace qdp {

// mux.cpp
Method PyQDP_GetSwitchMuxMode;
Method PyQDP_ListSwitchMuxVLAN;
Method PyQDP_ListSwitchShadowPorts;

// host_pf.cpp
Method PyQDP_HostPFSet;
Method PyQDP_HostPFGet;

// lif_port.cpp
Method PyQDP_LifPortCreate;
Method PyQDP_LifPortUpdate;
Method PyQDP_LifPortList;

// vlan_port.cpp
Method PyQDP_VlanPortCreate;
Method PyQDP_VlanPortUpdate;
Method PyQDP_VlanPortList;

// output_port.cpp
Method PyQDP_PortUpdate;
Method PyQDP_PortDelete;
Method PyQDP_PortList;

}  // namespace qdp
