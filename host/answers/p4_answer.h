// The SmartNIC behind the command channel: how a command is answered.
#pragma once

#include "host/answers/answer.h"
#include "platform/p4_command.h"

namespace host {

// A function that answers one opcode, registered like an Answer:
//
//     uint32_t lif_port_update(Host& host, const P4LifUpdate& update, Output response);
//     const P4Answer lif_commands[] = {{P4Opcode::lif_port_update, lif_port_update}};
//
// The payload is a record of the opcode, whose size must match; a ByteSpan takes any; none at all takes an empty one.
class P4Answer {
public:
    using Function = uint32_t (*)(void (*answer)(), Host& host, ByteSpan payload, Output response);

    template <class Payload>
    P4Answer(P4Opcode opcode, uint32_t (*function)(Host&, const Payload&, Output))
        : P4Answer{opcode, reinterpret_cast<void (*)()>(function), call<Payload>}
    {
    }
    P4Answer(P4Opcode opcode, uint32_t (*function)(Host&, Output))
        : P4Answer{opcode, reinterpret_cast<void (*)()>(function), call_without_payload}
    {
    }

private:
    P4Answer(P4Opcode opcode, void (*answer)(), Function function);

    template <class Payload>
    static uint32_t call(void (*answer)(), Host& host, ByteSpan bytes, Output response)
    {
        const auto typed = reinterpret_cast<uint32_t (*)(Host&, const Payload&, Output)>(answer);
        if constexpr (std::is_same_v<Payload, ByteSpan>) {
            return typed(host, bytes, response);
        } else {
            const auto payload = record_in<Payload>(bytes);
            return payload ? typed(host, *payload, response) : status_refused;
        }
    }

    static uint32_t call_without_payload(void (*answer)(), Host& host, ByteSpan bytes, Output response)
    {
        if (!bytes.empty())
            return status_refused;
        return reinterpret_cast<uint32_t (*)(Host&, Output)>(answer)(host, response);
    }
};

}  // namespace host
