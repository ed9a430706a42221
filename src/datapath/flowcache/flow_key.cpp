// Flow keys as text.
#include "core/render.h"
#include "datapath/flowcache/cut_text.h"
#include "datapath/flowcache/flowcache.h"
#include "platform/flow_cache.h"

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

void write_addresses(const FlowKey& key, CutText& text)
{
    const auto room = [&text] { return static_cast<uint32_t>(text.room()); };
    if (key.flags_and_vlan & flow_key_is_ipv6) {
        text.written(ipv6_column(key.first_address, text.cursor, room()));
        text.written(ipv6_column(key.second_address, text.cursor, room()));
    } else {
        uint32_t addresses[2];
        std::memcpy(addresses, key.first_address, sizeof addresses);
        for (const uint32_t address : addresses)
            text.written(ipv4_column(address, text.cursor, room()));
    }
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

    CutText text{out, out + flow_key_text_bytes};
    const uint8_t* first = shown.first_mac;
    const uint8_t* second = shown.second_mac;
    text.print("L%u  %02x:%02x:%02x:%02x:%02x:%02x  %02x:%02x:%02x:%02x:%02x:%02x  %-4u  %-7u", layer_of(shown),
               first[0], first[1], first[2], first[3], first[4], first[5], second[0], second[1], second[2], second[3],
               second[4], second[5], shown.vlan_high << 4 | shown.flags_and_vlan >> 4,
               (shown.tag_high & 0x7f) << 8 | shown.tag_low);
    write_addresses(shown, text);
    text.print("  %-5u", shown.protocol);
    text.print("  %-7u", shown.vni_high << 16 | shown.vni_low);
    text.print("  %-12u", shown_port(shown, shown.first_port));
    return text.print("  %-12u", shown_port(shown, shown.second_port));
}
