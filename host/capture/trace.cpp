// What a capture file holds.
#include "host/capture/trace.h"

#include "host/call/hex.h"

namespace host {

Json text_json(std::string_view text)
{
    return is_utf8(text) ? Json(text) : Json::object({{"bytes", hex(std::as_bytes(std::span{text}))}});
}

Json inputs_json(Arguments arguments, const Tokens& token_of)
{
    Json inputs = Json::list({});
    for (const Argument& argument : arguments) {
        switch (argument.kind) {
        case Argument::Kind::value:
            if (argument.meaning == Argument::Meaning::number || argument.meaning == Argument::Meaning::host_text)
                inputs.add(argument.value);
            else if (argument.meaning == Argument::Meaning::handle)
                inputs.add(handle_json(token_of(argument.value)));
            break;
        case Argument::Kind::text:
            inputs.add(argument.value ? text_json(reinterpret_cast<const char*>(argument.value)) : Json());
            break;
        case Argument::Kind::bytes:
            inputs.add(argument.value ? Json::object({{"bytes", hex(argument.bytes)}}) : Json());
            break;
        case Argument::Kind::output:
        case Argument::Kind::value_output:
            break;
        }
    }
    return inputs;
}

}  // namespace host
