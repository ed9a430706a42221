// What a capture file holds: its first line, and what of a call tells it from another one.
//
// A line is a JSON object, one a call, in the order in which the calls returned:
//
//     {"operation": name, "in": [...], "out": [...], "result": ...}
//
// "in" has the arguments that go in: a number; a text; {"bytes": hex}; {"handle": token}; null for a null pointer. What
// is the caller's own (buffers, callbacks and their contexts, values that are given back) is not there.
// "out" has what lay in each output afterwards, or null where nothing did: {"bytes": hex} and, where it matters,
// "zeros", how many zero bytes follow them, and "size", the size word; {"handle": token}.
// "result" is the status, a text, {"handle": token}, or null. A walk also has "steps": the tokens that it called back.
//
// A token is a number that stands for one handle throughout a file; the null handle is 0.
#pragma once

#include <functional>

#include "host/call/call.h"
#include "host/call/json.h"

namespace host {

inline constexpr int capture_version = 1;
inline constexpr char capture_version_key[] = "capture";

using Tokens = std::function<uint64_t(uint64_t handle)>;

inline Json handle_json(uint64_t token)
{
    return Json::object({{"handle", token}});
}

// A text; its bytes when it is not valid UTF-8.
Json text_json(std::string_view text);

// The "in" of a call.
Json inputs_json(Arguments arguments, const Tokens& token_of);

}  // namespace host
