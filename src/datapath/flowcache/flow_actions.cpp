// The actions of flows as text.
#include "datapath/flowcache/flow_actions.h"

#include <bit>

#include "core/build.h"
#include "core/fail.h"
#include "datapath/flowcache/flowcache.h"
#include "datapath/flowcache/text_buffer.h"
#include "platform/flowcache.h"

namespace qdp {

namespace {

// Reads an integer's own bytes and no others: a caller's record may end with it. Out of line, since many lines use it.
template <class Integer>
[[gnu::noinline]] Integer integer_at(Bytes record, size_t offset)
{
    return record.load<Integer>(offset);
}

#define MEMBER(record, Record, member) integer_at<decltype(Record::member)>(record, offsetof(Record, member))

using A = FlowActionArea;
using E = FlowEntry;
using G = FlowActionGroup;
using T = FlowActionTail;

void write_offload(Bytes area, TextBuffer& text)
{
    const uint32_t flags = MEMBER(area, A, offload_flags);
    if (!(flags & offload_is_offloaded))
        return;
    text << "OL; ";
    if (!(flags & offload_has_indexes))
        return;
    const uint64_t software_index = MEMBER(area, A, software_index);
    if (flags & offload_software_index_is_pointer) {
        text << "swFlowIdx: ";
        if (software_index != 0)
            text << Hex{software_index};
        else
            text << "(nil)";
        text << "; hwFlowIdx: N/A; ";
    } else {
        text << "swFlowIdx: " << static_cast<uint32_t>(software_index);
        text << "; hwFlowIdx: " << MEMBER(area, A, hardware_index) << "; ";
    }
}

void write_multicast(Bytes area, TextBuffer& text)
{
    text << "MC: inval(s):" << MEMBER(area, A, num_invalidations);
    text << " cg:" << MEMBER(area, A, generation);
    text << " len:" << MEMBER(area, A, length);
    text << "; flag " << Hex{MEMBER(area, A, group_flags)};
    text << " n_ag:" << MEMBER(area, A, num_groups);
    text << " n_dp:" << MEMBER(area, A, num_destination_ports);
}

void write_header(Bytes area, Bytes group, TextBuffer& text)
{
    const uint64_t bitmap = MEMBER(group, G, bitmap);
    text << "bmap:" << Hex{bitmap};
    text << " inval(s):" << MEMBER(area, A, num_invalidations);
    text << " cg:" << MEMBER(area, A, generation);
    text << " dp:";
    if (bitmap & action_bit(FlowAction::destination_port))
        text << Hex{MEMBER(group, G, destination_port)};
    else
        text << "-";
    text << " len:" << MEMBER(area, A, length) << "; ";
}

// False when the output ended before the last instance.
bool write_routing(Bytes tail, TextBuffer& text)
{
    const uint32_t count = MEMBER(tail, T, num_instances);
    text << "VDR inst: " << count << "; ";
    for (uint32_t i = 0; i < count; ++i) {
        if (text.is_full())
            return false;
        const auto value = tail.load<uint32_t>(offsetof(T, instances) + i * routing_instance_bytes);
        text << "INST " << i + 1 << (value == 0 ? ": 0x" : ": ") << Hex{value} << "; ";
    }
    return true;
}

uint32_t vni_at(Bytes tail, size_t offset)
{
    const auto byte = [&](size_t i) { return uint32_t{tail.load<uint8_t>(offset + i)}; };
    return byte(0) << 16 | byte(1) << 8 | byte(2);
}

// False when the output ended inside a list of the action. A bit that is no action, and a destination port, which the
// header shows, have no text.
bool write_action(FlowAction action, const FlowActionData& flow, TextBuffer& text)
{
    const Bytes group = flow.group;
    switch (action) {
    case FlowAction::input_child_port:
        text << "KCPInputChildPort: " << MEMBER(group, G, input_child_port) << "; ";
        return true;
    case FlowAction::lro:
        text << "LRO; ";
        return true;
    case FlowAction::ipfix_ingress:
        text << "IPFIX Ingress; ";
        return true;
    case FlowAction::drop:
        text << "DROP; ";
        return true;
    case FlowAction::firewall_source:
        if (MEMBER(flow.entry, E, source_has_context) != 0)
            text << "DFW on srcPort, ctCtxId: " << Hex{MEMBER(flow.entry, E, source_context)} << "; ";
        else
            text << "DFW on srcPort; ";
        return true;
    case FlowAction::slow_path:
        text << "SP; ";
        return true;
    case FlowAction::vlan_insert:
        text << "VI: " << MEMBER(group, G, vlan) << "; ";
        return true;
    case FlowAction::vlan_remove:
        text << "VR; ";
        return true;
    case FlowAction::port_insert:
        text << "PI: " << MEMBER(group, G, port_index) << "; ";
        return true;
    case FlowAction::port_remove:
        text << "PR; ";
        return true;
    case FlowAction::guest_vlan_insert:
        text << "GVLAN Insert; ";
        return true;
    case FlowAction::mirror_ingress:
        text << "Mirror Ingress: " << MEMBER(group, G, ingress_mirror) << "; ";
        return true;
    case FlowAction::destination_mac:
        text << "DMAC; ";
        return true;
    case FlowAction::routing:
        return write_routing(flow.tail, text);
    case FlowAction::vni:
        text << "VNI: " << MEMBER(group, G, vni) << "; ";
        return true;
    case FlowAction::geneve_decap:
        text << "GENEVE DECAP; ";
        return true;
    case FlowAction::vxlan_decap:
        text << "VXLAN DECAP; ";
        return true;
    case FlowAction::geneve_encap:
        text << "VNI: " << MEMBER(group, G, vni) << "; ";
        text << "GENEVE ENCAP VNI: " << vni_at(flow.tail, offsetof(T, geneve_vni)) << "; ";
        return true;
    case FlowAction::vxlan_encap:
        text << "VNI: " << MEMBER(group, G, vni) << "; ";
        text << "VXLAN ENCAP VNI: " << vni_at(flow.tail, offsetof(T, vxlan_vni)) << "; ";
        return true;
    case FlowAction::guest_vlan_remove:
        text << "GVLAN Remove; ";
        return true;
    case FlowAction::ipfix_egress:
        text << "IPFIX Egress; ";
        return true;
    case FlowAction::firewall_destination:
        if (MEMBER(flow.entry, E, destination_has_context) != 0)
            text << "DFW on dstPort, ctCtxId: " << Hex{MEMBER(flow.entry, E, destination_context)} << "; ";
        else
            text << "DFW on dstPort; ";
        return true;
    case FlowAction::mirror_egress:
        text << "Mirror Egress: " << MEMBER(group, G, egress_mirror) << "; ";
        return true;
    case FlowAction::output_vlan:
        text << "KCPOutputVLAN: " << MEMBER(group, G, output_vlan) << "; ";
        return true;
    case FlowAction::inner_lookup:
        text << "InnerLookup; ";
        return true;
    case FlowAction::l3_vlan_routed:
        text << "L3 Vlan Routed; ";
        return true;
    case FlowAction::lta:
        text << "LTA; ";
        return true;
    case FlowAction::meta_flow:
        text << "MetaFlow; ";
        return true;
    case FlowAction::destination_port:
        return true;
    }
    return true;
}

// The actions from the lowest bit upward; a dropped packet meets no further ones. False when the output ended before
// them: also before a bit that has no text. A cut in the text of the last action alone is no failure.
bool write_group(const FlowActionData& flow, TextBuffer& text)
{
    for (uint64_t bits = MEMBER(flow.group, G, bitmap); bits != 0; bits &= bits - 1) {
        if (text.is_full())
            return false;
        const auto action = static_cast<FlowAction>(std::countr_zero(bits));
        if (!write_action(action, flow, text))
            return false;
        if (action == FlowAction::drop)
            return true;
    }
    return true;
}

// A view of a caller's record, whose length only the caller knows.
Bytes unbounded(const void* record)
{
    return {record, SIZE_MAX};
}

FlowActionData action_data_of(const void* area, const void* group, uint32_t tail_length, const void* entry)
{
    const char* end = static_cast<const char*>(area) + tail_length;
    return {unbounded(area), unbounded(group), unbounded(end - sizeof(T)), unbounded(entry)};
}

}  // namespace

bool write_actions(const FlowActionData& flow, char* out, size_t size)
{
    TextBuffer text{out, out + size};
    write_offload(flow.area, text);
    if (MEMBER(flow.area, A, group_flags) & action_group_is_multicast) {
        write_multicast(flow.area, text);
        return true;
    }
    write_header(flow.area, flow.group, text);
    if (write_group(flow, text))
        return true;
    print("Invalid action\n");
    return false;
}

}  // namespace qdp

int FCActionsToStr(const void* area, char* out, uint32_t size, uint32_t tail_length, const void* entry,
                   uint32_t group_offset)
{
    const void* group = static_cast<const char*>(area) + group_offset;
    return qdp::write_actions(qdp::action_data_of(area, group, tail_length, entry), out, size) ? 0 : 1;
}

int FCActionGroupToStr(const void* area, const void* group, char* out, char* end, uint32_t tail_length,
                       const void* entry)
{
    qdp::TextBuffer text{out, end};
    return qdp::write_group(qdp::action_data_of(area, group, tail_length, entry), text) ? 0 : 1;
}
