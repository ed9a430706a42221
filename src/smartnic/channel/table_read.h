// Requests for one entry of a hardware table, which the hosting process may make as well.
#pragma once

#include "core/python.h"

// Both read one entry into a buffer whose capacity stands in the length word. The status of the library, 0 for success;
// for any other they print a message. Whatever the library reports in the length word is left there.

// The entry with a number.
QDP_EXPORT uint32_t QdpGetIndexTableData(uint32_t index, uint16_t table, void* entry, uint32_t* entry_length);

// The entry with a key, of a hash table. The two 16-bit lengths of the request keep the low bits of longer lengths.
QDP_EXPORT uint32_t QdpGetGenericKeyTableData(const void* key, uint32_t key_length, uint16_t table, void* entry,
                                              uint32_t* entry_length);
