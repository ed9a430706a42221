// Methods on the queues, filters and rings of uplinks.
#pragma once

#include "core/python.h"

namespace qdp {

// netq.cpp
Method PyQDP_Get_Port_NetQ_Info;
Method PyQDP_Migrate_NetQ_Filter;

// ring_size.cpp
Method PyQDP_Get_Uplink_Ring_Size;
Method PyQDP_Set_Uplink_Ring_Size;

// filter_types.cpp
Method PyQDP_Get_Switch_Filter_Types;
Method PyQDP_Set_Switch_Filter_Types;

}  // namespace qdp

// The dict of a NetQ information record of `size` bytes from malloc, which it takes over and frees. None, with
// SystemError set, when the dict cannot be built.
QDP_EXPORT PyObject* PyQDP_PortNetQInfo(void* info, uint32_t size);

// Writes a switch's filter class property. Prints its failures itself.
QDP_EXPORT void PyQDPSetFiltTypeProp(const char* alias, uint16_t mask);
