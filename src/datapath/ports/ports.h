// Methods on the datapath's switches and ports.
#pragma once

#include "core/python.h"

namespace qdp {

// inventory.cpp
Method PyQDP_List_Switches;
Method PyQDP_List_Ports;

// port_conf.cpp
Method PyQDP_Get_Port_Conf;

// port_control.cpp
Method PyQDP_Migrate_Port;
Method PyQDP_Unpin_Port;
Method PyQDP_Reset_Port;
Method PyQDP_Get_Port_Tx_Uplink;
Method PyQDP_Set_Uplink_MAC_Learn;
Method PyQDP_Get_Panic_On_Tx_Hang;
Method PyQDP_Set_Panic_On_Tx_Hang;

}  // namespace qdp

// Writes the names of a port's receive filter flags, each with a blank behind it, cut to `size` bytes, the NUL
// included.
QDP_EXPORT void FlagsToStr(uint32_t flags, char* out, uint32_t size);

// Lists for the hosting process. Each is as long as the low 16 bits of `count` say; None when it cannot be made.

// The numbers of the set bits of a 128-bit map of ports, lowest first. Where the map has fewer, None fills the list.
QDP_EXPORT PyObject* PyQDP_CreatePortList(uint32_t count, const uint64_t* bitmap);

QDP_EXPORT PyObject* PyQDP_CreateVlanList(uint32_t count, const uint16_t* vlans);
