// NetQ information and filter classes, for the hosting process.
#pragma once

#include "core/python.h"

// The dict of a NetQ information record of `size` bytes from malloc, which it takes over and frees. None, with
// SystemError set, when the dict cannot be built.
QDP_EXPORT PyObject* PyQDP_PortNetQInfo(void* info, uint32_t size);

// Writes a switch's filter class property. Prints its failures itself.
QDP_EXPORT void PyQDPSetFiltTypeProp(const char* alias, uint16_t mask);
