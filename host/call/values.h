// The values of the switch state library that its callers hold, by who frees them.
#pragma once

#include <map>
#include <set>
#include <utility>

#include "host/call/call.h"

namespace host {

class Values {
public:
    // Copies a value into memory of the output's owner, and sets the caller's words.
    void put(const ValueOutput& output, ByteSpan value);

    // Forgets what was put; and the value that was put into an output since, none when the output was left alone.
    void begin_call() { put_.clear(); }
    std::optional<ByteSpan> value_put(const ValueOutput& output) const;

    // Keeps a value of the library's own, equal ones once; it stays where it is until forget_kept.
    const Value& keep(Value value);

    // The text at an address, without its NUL. One that was kept last may have none, and ends with its bytes.
    std::string_view text_at(const char* text) const;
    void forget_kept();

    // Frees a value that its caller gives back. A pointer that no caller holds ends the process.
    void release(void* value);
    bool is_held(void* value) const { return unreleased_.contains(value); }

    // Frees all that callers hold: they have ended.
    void release_all();

    size_t num_unreleased() const { return unreleased_.size(); }
    size_t unreleased_bytes() const { return unreleased_bytes_; }

private:
    std::set<Value> kept_;
    const Value* kept_last_ = nullptr;
    std::map<void*, size_t> unreleased_;  // with their sizes
    size_t unreleased_bytes_ = 0;
    std::vector<std::pair<const void**, ByteSpan>> put_;  // in the present call
};

}  // namespace host
