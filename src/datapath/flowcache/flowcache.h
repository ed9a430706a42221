// The texts of flows, for other readers of the datapath's records.
#pragma once

#include "core/python.h"

namespace qdp {

inline constexpr uint32_t flow_key_text_bytes = 256;

}  // namespace qdp

// --- The callers' records need not be aligned, and are as long as what is read of them. ---

// Writes the line of a flow key into flow_key_text_bytes. Clears those fields of the key, in place, that have no
// meaning at its layer. Returns the length of the last column.
QDP_EXPORT int FCFlowKeyToStr(void* key, char* out);

// Writes what a flow's action area says: its header, and each action of the group at `group_offset`. The sections of
// the tail are found backwards from `tail_length`; the flow's entry tells the connection-tracking contexts. Returns 0;
// or 1, and says so on standard error, when the output ended before the actions.
QDP_EXPORT int FCActionsToStr(const void* area, char* out, uint32_t size, uint32_t tail_length, const void* entry,
                              uint32_t group_offset);

// Writes the actions of a group alone, from `out` up to `end`. Returns 0; or 1 when the output ended before them.
QDP_EXPORT int FCActionGroupToStr(const void* area, const void* group, char* out, char* end, uint32_t tail_length,
                                  const void* entry);
