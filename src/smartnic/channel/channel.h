// The SmartNIC's command channel. A method declares its command's opcode, its payload and its response as records; the
// framing is made here. Requests and responses live on the stack.
#pragma once

#include "core/bytes.h"
#include "platform/p4_command.h"

namespace qdp {

// The largest payload of a command; a table read, whose key may be longer, frames itself.
inline constexpr size_t max_payload_bytes = 16;

// Sends one command: a payload of `payload_size` bytes behind the header, a response of at most `capacity` bytes, or a
// null response and a capacity of 0. The status of the library: 0 for success.
uint32_t send_command(P4Opcode opcode, const void* payload, size_t payload_size, void* response, uint32_t capacity);

// Typed: without a response, with a payload and a response, with a response only. A response should be zeroed before:
// a short answer then decodes as zeros.
template <class Payload>
uint32_t send(P4Opcode opcode, const Payload& payload)
{
    static_assert(sizeof payload <= max_payload_bytes);
    return send_command(opcode, &payload, sizeof payload, nullptr, 0);
}

template <class Payload, class Response>
uint32_t ask(P4Opcode opcode, const Payload& payload, Response& response)
{
    static_assert(sizeof payload <= max_payload_bytes);
    return send_command(opcode, &payload, sizeof payload, &response, sizeof response);
}

template <class Response>
uint32_t ask(P4Opcode opcode, Response& response)
{
    return send_command(opcode, nullptr, 0, &response, sizeof response);
}

}  // namespace qdp
