// What a capture file holds.
#include "host/capture/trace.h"

#include "host/call/hex.h"

namespace host {

using Json = nlohmann::json;

Json text_json(std::string_view text)
{
    try {
        Json result = text;
        static_cast<void>(result.dump());  // throws for a text that is not UTF-8
        return result;
    } catch (const Json::type_error&) {
        return {{"bytes", hex(std::as_bytes(std::span{text}))}};
    }
}

Json inputs_json(Arguments arguments, const Tokens& token_of)
{
    Json inputs = Json::array();
    for (const Argument& argument : arguments) {
        switch (argument.kind) {
        case Argument::Kind::value:
            if (argument.meaning == Argument::Meaning::number || argument.meaning == Argument::Meaning::host_text)
                inputs.push_back(argument.value);
            else if (argument.meaning == Argument::Meaning::handle)
                inputs.push_back(handle_json(token_of(argument.value)));
            break;
        case Argument::Kind::text:
            inputs.push_back(argument.value ? text_json(reinterpret_cast<const char*>(argument.value)) : Json());
            break;
        case Argument::Kind::bytes:
            inputs.push_back(argument.value ? Json{{"bytes", hex(argument.bytes)}} : Json());
            break;
        case Argument::Kind::output:
        case Argument::Kind::value_output:
            break;
        }
    }
    return inputs;
}

}  // namespace host
