// The texts of a flow as one writes them by hand for speed: digits and pieces put into a buffer, without printf. Every
// compiled way that the module is measured against renders with these.
#pragma once

#include <arpa/inet.h>

#include <charconv>
#include <cstring>

#include "bench/native/keys.h"
#include "platform/flowcache.h"

namespace flow_text {

inline constexpr size_t key_bytes = 256;
inline constexpr size_t actions_bytes = 512;

// A text that is cut where its buffer ends, and full then. Its NUL is written when it is complete.
struct Text {
    char* cursor;
    char* end;

    bool is_full() const { return cursor >= end; }

    Text& add(const char* piece, size_t length)
    {
        const auto room = static_cast<size_t>(end - cursor);
        memcpy(cursor, piece, length < room ? length : room);
        cursor += length < room ? length : room;
        return *this;
    }
    template <size_t size>
    Text& add(const char (&literal)[size])
    {
        return add(literal, size - 1);
    }
    Text& number(uint64_t number)
    {
        char digits[20];
        return add(digits, static_cast<size_t>(std::to_chars(digits, digits + sizeof digits, number).ptr - digits));
    }
    Text& hex(uint64_t number)
    {
        char digits[18] = "0x";
        char* first = number == 0 ? digits : digits + 2;
        return add(digits, static_cast<size_t>(std::to_chars(first, digits + sizeof digits, number, 16).ptr - digits));
    }
    void finish(char* start, size_t size) { start[is_full() ? size - 1 : static_cast<size_t>(cursor - start)] = '\0'; }
};

inline char* put_mac(char* cursor, const uint8_t* mac)
{
    write_mac(mac, cursor);
    return cursor + mac_text_bytes - 1;
}

// Two blanks, and the number in a column of blanks.
inline char* put_column(char* cursor, uint32_t number, size_t width)
{
    memset(cursor, ' ', 2 + width);
    char* last = std::to_chars(cursor + 2, cursor + 2 + 10, number).ptr;
    cursor += 2 + width;
    return last < cursor ? cursor : last;
}

inline char* put_address(char* cursor, const char* text, size_t length)
{
    constexpr size_t width = 45;
    memset(cursor, ' ', 2 + width);
    memcpy(cursor + 2, text, length);
    return cursor + 2 + width;
}

// The text of a key always fits: its columns have most lengths.
inline void write_key(const uint8_t* record, char* cursor)
{
    FlowKey key;
    memcpy(&key, record, sizeof key);
    const unsigned layer = key.flags_and_vlan & flow_key_is_l4 ? 4 : key.flags_and_vlan & flow_key_is_l3 ? 3 : 2;
    if (layer < 3) {
        memset(key.first_address, 0, sizeof key.first_address);
        memset(key.second_address, 0, sizeof key.second_address);
    }
    if (layer < 4) {
        key.first_port = 0;
        key.second_port = 0;
        key.protocol = 0;
    }
    *cursor++ = 'L';
    *cursor++ = static_cast<char>('0' + layer);
    *cursor++ = ' ';
    *cursor++ = ' ';
    cursor = put_mac(cursor, key.first_mac);
    *cursor++ = ' ';
    *cursor++ = ' ';
    cursor = put_mac(cursor, key.second_mac);
    cursor = put_column(cursor, static_cast<unsigned>(key.vlan_high << 4 | key.flags_and_vlan >> 4), 4);
    cursor = put_column(cursor, static_cast<unsigned>((key.tag_high & 0x7f) << 8 | key.tag_low), 7);
    char text[INET6_ADDRSTRLEN] = "";
    if (key.flags_and_vlan & flow_key_is_ipv6) {
        inet_ntop(AF_INET6, key.first_address, text, sizeof text);
        cursor = put_address(cursor, text, strlen(text));
        inet_ntop(AF_INET6, key.second_address, text, sizeof text);
        cursor = put_address(cursor, text, strlen(text));
    } else {
        for (int i = 0; i < 8; i += 4) {
            char* last = text;
            for (int k = i; k < i + 4; ++k) {
                last = std::to_chars(last, text + sizeof text, key.first_address[k]).ptr;
                *last++ = '.';
            }
            cursor = put_address(cursor, text, static_cast<size_t>(last - 1 - text));
        }
    }
    const bool is_icmp = key.protocol == protocol_icmp || key.protocol == protocol_icmpv6;
    cursor = put_column(cursor, key.protocol, 5);
    cursor = put_column(cursor, static_cast<unsigned>(key.vni_high << 16 | key.vni_low), 7);
    cursor = put_column(cursor, is_icmp ? key.first_port : ntohs(key.first_port), 12);
    cursor = put_column(cursor, is_icmp ? key.second_port : ntohs(key.second_port), 12);
    *cursor = '\0';
}

inline uint32_t three_bytes(const uint8_t* bytes)
{
    return static_cast<uint32_t>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
}

// False when the actions do not fit.
inline bool write_action(unsigned bit, const FlowEntry& flow, const FlowActionGroup& group, const FlowActionTail& tail,
                         Text& text)
{
    switch (static_cast<FlowAction>(bit)) {
    case FlowAction::input_child_port:
        text.add("KCPInputChildPort: ").number(group.input_child_port).add("; ");
        break;
    case FlowAction::lro:
        text.add("LRO; ");
        break;
    case FlowAction::ipfix_ingress:
        text.add("IPFIX Ingress; ");
        break;
    case FlowAction::drop:
        text.add("DROP; ");
        break;
    case FlowAction::firewall_source:
        if (flow.source_has_context)
            text.add("DFW on srcPort, ctCtxId: ").hex(flow.source_context).add("; ");
        else
            text.add("DFW on srcPort; ");
        break;
    case FlowAction::firewall_destination:
        if (flow.destination_has_context)
            text.add("DFW on dstPort, ctCtxId: ").hex(flow.destination_context).add("; ");
        else
            text.add("DFW on dstPort; ");
        break;
    case FlowAction::slow_path:
        text.add("SP; ");
        break;
    case FlowAction::vlan_insert:
        text.add("VI: ").number(group.vlan).add("; ");
        break;
    case FlowAction::vlan_remove:
        text.add("VR; ");
        break;
    case FlowAction::port_insert:
        text.add("PI: ").number(group.port_index).add("; ");
        break;
    case FlowAction::port_remove:
        text.add("PR; ");
        break;
    case FlowAction::guest_vlan_insert:
        text.add("GVLAN Insert; ");
        break;
    case FlowAction::mirror_ingress:
        text.add("Mirror Ingress: ").number(group.ingress_mirror).add("; ");
        break;
    case FlowAction::destination_mac:
        text.add("DMAC; ");
        break;
    case FlowAction::vni:
        text.add("VNI: ").number(group.vni).add("; ");
        break;
    case FlowAction::geneve_decap:
        text.add("GENEVE DECAP; ");
        break;
    case FlowAction::vxlan_decap:
        text.add("VXLAN DECAP; ");
        break;
    case FlowAction::geneve_encap:
        text.add("VNI: ").number(group.vni).add("; ");
        text.add("GENEVE ENCAP VNI: ").number(three_bytes(tail.geneve_vni)).add("; ");
        break;
    case FlowAction::vxlan_encap:
        text.add("VNI: ").number(group.vni).add("; ");
        text.add("VXLAN ENCAP VNI: ").number(three_bytes(tail.vxlan_vni)).add("; ");
        break;
    case FlowAction::guest_vlan_remove:
        text.add("GVLAN Remove; ");
        break;
    case FlowAction::ipfix_egress:
        text.add("IPFIX Egress; ");
        break;
    case FlowAction::mirror_egress:
        text.add("Mirror Egress: ").number(group.egress_mirror).add("; ");
        break;
    case FlowAction::output_vlan:
        text.add("KCPOutputVLAN: ").number(group.output_vlan).add("; ");
        break;
    case FlowAction::inner_lookup:
        text.add("InnerLookup; ");
        break;
    case FlowAction::l3_vlan_routed:
        text.add("L3 Vlan Routed; ");
        break;
    case FlowAction::lta:
        text.add("LTA; ");
        break;
    case FlowAction::meta_flow:
        text.add("MetaFlow; ");
        break;
    case FlowAction::routing:
        text.add("VDR inst: ").number(tail.num_instances).add("; ");
        for (unsigned i = 0; i < tail.num_instances; ++i) {
            if (text.is_full())
                return false;
            uint32_t value = 0;
            if (i * routing_instance_bytes + sizeof value <= sizeof tail.instances)
                memcpy(&value, tail.instances + i * routing_instance_bytes, sizeof value);
            text.add("INST ").number(i + 1).add(value == 0 ? ": 0x0; " : ": ", value == 0 ? 7 : 2);
            if (value != 0)
                text.hex(value).add("; ");
        }
        break;
    default:
        break;
    }
    return true;
}

// False when the actions do not fit. The entry lies in a page that has room for it.
inline bool write_flow(const uint8_t* entry, uint32_t group_offset, Text& text)
{
    FlowEntry flow;
    FlowActionGroup group;
    FlowActionTail tail;
    memcpy(&flow, entry, sizeof flow);
    const FlowActionArea& area = flow.area;
    memcpy(&group, entry + offsetof(FlowEntry, area) + group_offset, sizeof group);
    memcpy(&tail, entry + offsetof(FlowEntry, area) + area.length - sizeof tail, sizeof tail);

    if (area.offload_flags & offload_is_offloaded) {
        text.add("OL; ");
        if (area.offload_flags & offload_has_indexes) {
            text.add("swFlowIdx: ");
            if (!(area.offload_flags & offload_software_index_is_pointer))
                text.number(static_cast<unsigned>(area.software_index)).add("; hwFlowIdx: ");
            else if (area.software_index == 0)
                text.add("(nil); hwFlowIdx: N/A; ");
            else
                text.hex(area.software_index).add("; hwFlowIdx: N/A; ");
            if (!(area.offload_flags & offload_software_index_is_pointer))
                text.number(area.hardware_index).add("; ");
        }
    }
    if (area.group_flags & action_group_is_multicast) {
        text.add("MC: inval(s):").number(area.num_invalidations).add(" cg:").number(area.generation);
        text.add(" len:").number(area.length).add("; flag ").hex(area.group_flags);
        text.add(" n_ag:").number(area.num_groups).add(" n_dp:").number(area.num_destination_ports);
        return true;
    }
    text.add("bmap:").hex(group.bitmap).add(" inval(s):").number(area.num_invalidations);
    text.add(" cg:").number(area.generation).add(" dp:");
    if (group.bitmap & action_bit(FlowAction::destination_port))
        text.hex(group.destination_port);
    else
        text.add("-");
    text.add(" len:").number(area.length).add("; ");
    for (uint64_t bits = group.bitmap; bits != 0; bits &= bits - 1) {
        const auto bit = static_cast<unsigned>(__builtin_ctzl(bits));
        if (text.is_full() || !write_action(bit, flow, group, tail, text))
            return false;
        if (bit == static_cast<unsigned>(FlowAction::drop))
            return true;
    }
    return true;
}

inline bool write_actions(const uint8_t* entry, uint32_t group_offset, char* out)
{
    Text text{out, out + actions_bytes};
    const bool fits = write_flow(entry, group_offset, text);
    text.finish(out, actions_bytes);
    return fits;
}

inline uint64_t software_hits(const uint8_t* entry)
{
    uint64_t hits = 0;
    memcpy(&hits, entry + offsetof(FlowEntry, area.software_hits), sizeof FlowActionArea::software_hits);
    return hits;
}

}  // namespace flow_text
