// Flags, ports and VLANs of a port's configuration, for the hosting process.
#pragma once

#include "core/python.h"

// Writes the names of a port's receive filter flags, each with a blank behind it, cut to `size` bytes, the NUL
// included.
QDP_EXPORT void FlagsToStr(uint32_t flags, char* out, uint32_t size);

// Lists for the hosting process. Each is as long as the low 16 bits of `count` say; None when it cannot be made.

// The numbers of the set bits of a 128-bit map of ports, lowest first. Where the map has fewer, None fills the list.
QDP_EXPORT PyObject* PyQDP_CreatePortList(uint32_t count, const uint64_t* bitmap);

QDP_EXPORT PyObject* PyQDP_CreateVlanList(uint32_t count, const uint16_t* vlans);
