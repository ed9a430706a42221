// The values of the switch state library that its callers hold, by who frees them.
#pragma once

#include <deque>
#include <set>

#include "host/call/call.h"

namespace host {

class Values {
public:
    // Copies a value into memory of the output's owner, and sets the caller's words.
    void put(const ValueOutput& output, ByteSpan value);

    // Keeps a value of the library's own; it stays where it is until forget_kept.
    const Value& keep(Value value);
    void forget_kept() { kept_.clear(); }

    // Frees a value that its caller gives back. A pointer that no caller holds ends the process.
    void release(void* value);

    size_t num_unreleased() const { return unreleased_.size(); }

private:
    std::deque<Value> kept_;
    std::set<void*> unreleased_;
};

}  // namespace host
