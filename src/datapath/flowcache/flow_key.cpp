// Flow keys as text.
#include "core/render.h"
#include "datapath/flowcache/flowcache.h"
#include "datapath/flowcache/text_buffer.h"
#include "platform/flowcache.h"

namespace qdp {

namespace {

uint32_t layer_of(const FlowKey& key)
{
    if (key.flags_and_vlan & flow_key_is_l4)
        return 4;
    return key.flags_and_vlan & flow_key_is_l3 ? 3 : 2;
}

// Clears what has no meaning at the key's layer.
void normalise(FlowKey& key)
{
    const uint32_t layer = layer_of(key);
    if (layer < 3) {
        std::memset(key.first_address, 0, sizeof key.first_address);
        std::memset(key.second_address, 0, sizeof key.second_address);
    }
    if (layer < 4) {
        key.first_port = 0;
        key.second_port = 0;
        key.protocol = 0;
    }
}

void write_addresses(const FlowKey& key, TextBuffer& text)
{
    const auto room = [&text] { return static_cast<uint32_t>(text.room()); };
    if (key.flags_and_vlan & flow_key_is_ipv6) {
        text.advance(ipv6_column(key.first_address, text.cursor, room()));
        text.advance(ipv6_column(key.second_address, text.cursor, room()));
    } else {
        uint32_t addresses[2];
        std::memcpy(addresses, key.first_address, sizeof addresses);
        for (const uint32_t address : addresses)
            text.advance(ipv4_column(address, text.cursor, room()));
    }
}

uint32_t vlan_of(const FlowKey& key)
{
    return uint32_t{key.vlan_high} << 4 | key.flags_and_vlan >> 4;
}

uint32_t tag_of(const FlowKey& key)
{
    return (key.tag_high & 0x7fu) << 8 | key.tag_low;
}

uint32_t vni_of(const FlowKey& key)
{
    return uint32_t{key.vni_high} << 16 | key.vni_low;
}

uint32_t shown_port(const FlowKey& key, uint16_t port)
{
    const bool is_icmp = key.protocol == protocol_icmp || key.protocol == protocol_icmpv6;
    return is_icmp ? port : __builtin_bswap16(port);
}

}  // namespace

}  // namespace qdp

int FCFlowKeyToStr(void* key, char* out)
{
    using namespace qdp;

    FlowKey shown;
    std::memcpy(&shown, key, sizeof shown);
    normalise(shown);
    std::memcpy(key, &shown, sizeof shown);

    TextBuffer text{out, out + flow_key_text_bytes};
    const char layer[] = {'L', static_cast<char>('0' + layer_of(shown)), '\0'};
    text << layer;
    for (const uint8_t* mac : {shown.first_mac, shown.second_mac}) {
        char rendered[mac_text_bytes];
        text << "  " << std::string_view{MACToStr(mac, rendered), mac_text_bytes - 1};
    }
    text.column(vlan_of(shown), 4);
    text.column(tag_of(shown), 7);
    write_addresses(shown, text);
    text.column(shown.protocol, 5);
    text.column(vni_of(shown), 7);
    text.column(shown_port(shown, shown.first_port), 12);
    return text.column(shown_port(shown, shown.second_port), 12);
}
