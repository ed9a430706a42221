// The framing of the SmartNIC's commands.
#include "smartnic/channel/channel.h"

#include "platform/p4_command.h"

namespace qdp {

uint32_t send_command(P4Opcode opcode, const void* payload, size_t payload_size, void* response, uint32_t capacity)
{
    struct {
        P4CommandHeader header;
        unsigned char payload[max_payload_bytes];
    } request;
    const auto length = static_cast<uint16_t>(sizeof request.header + payload_size);
    request.header = {length, static_cast<uint16_t>(opcode)};
    if (payload_size != 0)
        std::memcpy(request.payload, payload, payload_size);
    return Qdp_P4_Cmd(&request, length, response, &capacity);
}

}  // namespace qdp
