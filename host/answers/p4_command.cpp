// The command channel: takes a command's framing apart and hands its payload to the answer of its opcode.
#include "host/answers/p4_answer.h"

namespace host {

namespace {

struct RegisteredCommand {
    void (*answer)();
    P4Answer::Function function;
};

std::map<uint16_t, RegisteredCommand>& commands()
{
    static std::map<uint16_t, RegisteredCommand> answers;
    return answers;
}

uint32_t p4_command(Host& host, ByteSpan request, Output response)
{
    P4CommandHeader header;
    if (request.size() < sizeof header)
        return status_refused;
    std::memcpy(&header, request.data(), sizeof header);
    const auto found = commands().find(header.opcode);
    if (header.length != request.size() || found == commands().end())
        return status_refused;
    return found->second.function(found->second.answer, host, request.subspan(sizeof header), response);
}

const Answer p4_command_answers[] = {{"Qdp_P4_Cmd", p4_command}};

}  // namespace

P4Answer::P4Answer(P4Opcode opcode, void (*answer)(), Function function)
{
    commands()[static_cast<uint16_t>(opcode)] = {answer, function};
}

}  // namespace host
