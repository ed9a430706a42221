// The text of a flow's actions, written from bounded views of what it is read from.
#pragma once

#include "core/bytes.h"

namespace qdp {

// What the text of a flow's actions is read from. Other readers of the datapath's records hand in four pointers, a
// dump hands in four places in its response.
struct FlowActionData {
    Bytes area;   // a FlowActionArea
    Bytes group;  // a FlowActionGroup
    Bytes tail;   // a FlowActionTail
    Bytes entry;  // a FlowEntry: its connection-tracking contexts alone are read
};

// Writes the actions of a flow into `size` bytes. False, having said so on standard error, when they do not fit.
bool write_actions(const FlowActionData& flow, char* out, size_t size);

}  // namespace qdp
