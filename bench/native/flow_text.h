// The texts of a flow as one writes them by hand: snprintf after snprintf into a buffer. Every compiled way that the
// module is measured against renders with these.
#pragma once

#include <arpa/inet.h>

#include <cstdio>
#include <cstring>

#include "platform/flow_cache.h"

namespace flow_text {

inline constexpr size_t key_bytes = 256;
inline constexpr size_t actions_bytes = 512;

#define APPEND(...)                                                                                         \
    do {                                                                                                    \
        const int length_ = snprintf(cursor, static_cast<size_t>(end - cursor), __VA_ARGS__);               \
        cursor = static_cast<size_t>(length_) < static_cast<size_t>(end - cursor) ? cursor + length_ : end; \
    } while (0)

inline void write_key(const uint8_t* record, char* cursor)
{
    char* end = cursor + key_bytes;
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
    const uint8_t* first = key.first_mac;
    const uint8_t* second = key.second_mac;
    APPEND("L%u  %02x:%02x:%02x:%02x:%02x:%02x  %02x:%02x:%02x:%02x:%02x:%02x  %-4u  %-7u", layer, first[0], first[1],
           first[2], first[3], first[4], first[5], second[0], second[1], second[2], second[3], second[4], second[5],
           static_cast<unsigned>(key.vlan_high << 4 | key.flags_and_vlan >> 4),
           static_cast<unsigned>((key.tag_high & 0x7f) << 8 | key.tag_low));
    char text[INET6_ADDRSTRLEN] = "";
    if (key.flags_and_vlan & flow_key_is_ipv6) {
        inet_ntop(AF_INET6, key.first_address, text, sizeof text);
        APPEND("  %-45s", text);
        inet_ntop(AF_INET6, key.second_address, text, sizeof text);
        APPEND("  %-45s", text);
    } else {
        for (int i = 0; i < 8; i += 4) {
            const uint8_t* part = key.first_address + i;
            snprintf(text, sizeof text, "%u.%u.%u.%u", part[0], part[1], part[2], part[3]);
            APPEND("  %-45s", text);
        }
    }
    const bool is_icmp = key.protocol == protocol_icmp || key.protocol == protocol_icmpv6;
    APPEND("  %-5u", key.protocol);
    APPEND("  %-7u", static_cast<unsigned>(key.vni_high << 16 | key.vni_low));
    APPEND("  %-12u", is_icmp ? key.first_port : ntohs(key.first_port));
    APPEND("  %-12u", is_icmp ? key.second_port : ntohs(key.second_port));
}

// False when the actions do not fit.
inline bool write_action(unsigned bit, const FlowEntry& flow, const FlowActionGroup& group, const FlowActionTail& tail,
                         char*& cursor, char* end)
{
    switch (static_cast<FlowAction>(bit)) {
    case FlowAction::input_child_port:
        APPEND("KCPInputChildPort: %u; ", group.input_child_port);
        break;
    case FlowAction::lro:
        APPEND("LRO; ");
        break;
    case FlowAction::ipfix_ingress:
        APPEND("IPFIX Ingress; ");
        break;
    case FlowAction::drop:
        APPEND("DROP; ");
        break;
    case FlowAction::firewall_source:
        if (flow.source_has_context)
            APPEND("DFW on srcPort, ctCtxId: %#lx; ", flow.source_context);
        else
            APPEND("DFW on srcPort; ");
        break;
    case FlowAction::firewall_destination:
        if (flow.destination_has_context)
            APPEND("DFW on dstPort, ctCtxId: %#lx; ", flow.destination_context);
        else
            APPEND("DFW on dstPort; ");
        break;
    case FlowAction::slow_path:
        APPEND("SP; ");
        break;
    case FlowAction::vlan_insert:
        APPEND("VI: %u; ", group.vlan);
        break;
    case FlowAction::vlan_remove:
        APPEND("VR; ");
        break;
    case FlowAction::port_insert:
        APPEND("PI: %u; ", group.port_index);
        break;
    case FlowAction::port_remove:
        APPEND("PR; ");
        break;
    case FlowAction::guest_vlan_insert:
        APPEND("GVLAN Insert; ");
        break;
    case FlowAction::mirror_ingress:
        APPEND("Mirror Ingress: %u; ", group.ingress_mirror);
        break;
    case FlowAction::destination_mac:
        APPEND("DMAC; ");
        break;
    case FlowAction::vni:
        APPEND("VNI: %u; ", group.vni);
        break;
    case FlowAction::geneve_decap:
        APPEND("GENEVE DECAP; ");
        break;
    case FlowAction::vxlan_decap:
        APPEND("VXLAN DECAP; ");
        break;
    case FlowAction::geneve_encap:
        APPEND("VNI: %u; ", group.vni);
        APPEND("GENEVE ENCAP VNI: %u; ",
               static_cast<unsigned>(tail.geneve_vni[0] << 16 | tail.geneve_vni[1] << 8 | tail.geneve_vni[2]));
        break;
    case FlowAction::vxlan_encap:
        APPEND("VNI: %u; ", group.vni);
        APPEND("VXLAN ENCAP VNI: %u; ",
               static_cast<unsigned>(tail.vxlan_vni[0] << 16 | tail.vxlan_vni[1] << 8 | tail.vxlan_vni[2]));
        break;
    case FlowAction::guest_vlan_remove:
        APPEND("GVLAN Remove; ");
        break;
    case FlowAction::ipfix_egress:
        APPEND("IPFIX Egress; ");
        break;
    case FlowAction::mirror_egress:
        APPEND("Mirror Egress: %u; ", group.egress_mirror);
        break;
    case FlowAction::output_vlan:
        APPEND("KCPOutputVLAN: %u; ", group.output_vlan);
        break;
    case FlowAction::inner_lookup:
        APPEND("InnerLookup; ");
        break;
    case FlowAction::l3_vlan_routed:
        APPEND("L3 Vlan Routed; ");
        break;
    case FlowAction::lta:
        APPEND("LTA; ");
        break;
    case FlowAction::meta_flow:
        APPEND("MetaFlow; ");
        break;
    case FlowAction::routing:
        APPEND("VDR inst: %u; ", tail.num_instances);
        for (unsigned i = 0; i < tail.num_instances; ++i) {
            if (cursor >= end)
                return false;
            uint32_t value = 0;
            if (i * routing_instance_bytes + sizeof value <= sizeof tail.instances)
                memcpy(&value, tail.instances + i * routing_instance_bytes, sizeof value);
            APPEND("INST %u: 0x%x; ", i + 1, value);
        }
        break;
    default:
        break;
    }
    return true;
}

// False when the actions do not fit. The entry lies in a page that has room for it.
inline bool write_actions(const uint8_t* entry, uint32_t group_offset, char* cursor)
{
    char* end = cursor + actions_bytes;
    FlowEntry flow;
    FlowActionGroup group;
    FlowActionTail tail;
    memcpy(&flow, entry, sizeof flow);
    const FlowActionArea& area = flow.area;
    memcpy(&group, entry + offsetof(FlowEntry, area) + group_offset, sizeof group);
    memcpy(&tail, entry + offsetof(FlowEntry, area) + area.length - sizeof tail, sizeof tail);

    if (area.offload_flags & offload_is_offloaded) {
        APPEND("OL; ");
        if (area.offload_flags & offload_has_indexes) {
            if (area.offload_flags & offload_software_index_is_pointer)
                APPEND("swFlowIdx: %p; hwFlowIdx: N/A; ", reinterpret_cast<void*>(area.software_index));
            else
                APPEND("swFlowIdx: %u; hwFlowIdx: %u; ", static_cast<unsigned>(area.software_index),
                       area.hardware_index);
        }
    }
    if (area.group_flags & action_group_is_multicast) {
        APPEND("MC: inval(s):%u cg:%lu len:%u; flag %#x n_ag:%u n_dp:%u", area.num_invalidations, area.generation,
               area.length, area.group_flags, area.num_groups, area.num_destination_ports);
        return true;
    }
    if (group.bitmap & action_bit(FlowAction::destination_port))
        APPEND("bmap:%#lx inval(s):%u cg:%lu dp:%#x len:%u; ", group.bitmap, area.num_invalidations, area.generation,
               group.destination_port, area.length);
    else
        APPEND("bmap:%#lx inval(s):%u cg:%lu dp:- len:%u; ", group.bitmap, area.num_invalidations, area.generation,
               area.length);
    for (uint64_t bits = group.bitmap; bits != 0; bits &= bits - 1) {
        const auto bit = static_cast<unsigned>(__builtin_ctzl(bits));
        if (cursor >= end || !write_action(bit, flow, group, tail, cursor, end))
            return false;
        if (bit == static_cast<unsigned>(FlowAction::drop))
            return true;
    }
    return true;
}

inline uint64_t software_hits(const uint8_t* entry)
{
    uint64_t hits = 0;
    memcpy(&hits, entry + offsetof(FlowEntry, area.software_hits), sizeof FlowActionArea::software_hits);
    return hits;
}

#undef APPEND

}  // namespace flow_text
