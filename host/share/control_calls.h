// The control interface of a shared host: functions of control.h that clients call by name, in JSON.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace host::share {

// {"call": NAME, "arguments": [...]} is answered by {"result": ...} or {"error": TEXT}. A name lacks its qdp_host_;
// bytes are hexadecimal digits. What a client has taken, snapshots and a recording, is its own.
std::string control_reply(std::string_view request, uint64_t client);

// Ends what the client has taken.
void forget_client(uint64_t client);

}  // namespace host::share
