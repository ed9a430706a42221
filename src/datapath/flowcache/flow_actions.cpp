// The actions of flows as text.
#include "datapath/flowcache/flow_actions.h"

#include <algorithm>
#include <bit>

#include "datapath/flowcache/cut_text.h"
#include "datapath/flowcache/flowcache.h"
#include "module/fail.h"
#include "module/fields.h"
#include "platform/flow_cache.h"

namespace qdp {

namespace {

// An unsigned member of a record. Reads its own bytes and no others: a caller's record may end with it.
uint64_t word(Bytes record, const Place& where)
{
    uint64_t value = 0;
    record.copy(where.offset, &value, where.size);
    return value;
}

uint32_t number(Bytes record, const Place& where)
{
    return static_cast<uint32_t>(word(record, where));
}

using A = FlowActionArea;
using E = FlowEntry;
using G = FlowActionGroup;
using T = FlowActionTail;

void write_offload(Bytes area, CutText& text)
{
    const uint32_t flags = number(area, AT(A, offload_flags));
    if (!(flags & offload_is_offloaded))
        return;
    text.print("OL; ");
    if (!(flags & offload_has_indexes))
        return;
    if (flags & offload_software_index_is_pointer) {
        const uint64_t pointer = word(area, AT(A, software_index));
        text.print("swFlowIdx: %p; hwFlowIdx: N/A; ", reinterpret_cast<void*>(static_cast<uintptr_t>(pointer)));
    } else {
        text.print("swFlowIdx: %u; hwFlowIdx: %u; ", number(area, AT(A, software_index)),
                   number(area, AT(A, hardware_index)));
    }
}

void write_multicast(Bytes area, CutText& text)
{
    text.print("MC: inval(s):%u cg:%lu len:%u; flag %#x n_ag:%u n_dp:%u", number(area, AT(A, num_invalidations)),
               word(area, AT(A, generation)), number(area, AT(A, length)), number(area, AT(A, group_flags)),
               number(area, AT(A, num_groups)), number(area, AT(A, num_destination_ports)));
}

void write_header(Bytes area, Bytes group, CutText& text)
{
    const uint64_t bitmap = word(group, AT(G, bitmap));
    const uint32_t invalidations = number(area, AT(A, num_invalidations));
    const uint64_t generation = word(area, AT(A, generation));
    const uint32_t length = number(area, AT(A, length));
    if (bitmap & action_bit(FlowAction::destination_port))
        text.print("bmap:%#lx inval(s):%u cg:%lu dp:%#x len:%u; ", bitmap, invalidations, generation,
                   number(group, AT(G, destination_port)), length);
    else
        text.print("bmap:%#lx inval(s):%u cg:%lu dp:- len:%u; ", bitmap, invalidations, generation, length);
}

// The actions whose text is a name, or a name and a number of the group. Those that are in neither this table nor
// write_action have no text.
struct NamedAction {
    FlowAction action;
    const char* name;
    Place number = {};
};

constexpr NamedAction named_actions[] = {
    {FlowAction::input_child_port, "KCPInputChildPort", AT(G, input_child_port)},
    {FlowAction::lro, "LRO"},
    {FlowAction::ipfix_ingress, "IPFIX Ingress"},
    {FlowAction::drop, "DROP"},
    {FlowAction::slow_path, "SP"},
    {FlowAction::vlan_insert, "VI", AT(G, vlan)},
    {FlowAction::vlan_remove, "VR"},
    {FlowAction::port_insert, "PI", AT(G, port_index)},
    {FlowAction::port_remove, "PR"},
    {FlowAction::guest_vlan_insert, "GVLAN Insert"},
    {FlowAction::mirror_ingress, "Mirror Ingress", AT(G, ingress_mirror)},
    {FlowAction::destination_mac, "DMAC"},
    {FlowAction::vni, "VNI", AT(G, vni)},
    {FlowAction::geneve_decap, "GENEVE DECAP"},
    {FlowAction::vxlan_decap, "VXLAN DECAP"},
    {FlowAction::guest_vlan_remove, "GVLAN Remove"},
    {FlowAction::ipfix_egress, "IPFIX Egress"},
    {FlowAction::mirror_egress, "Mirror Egress", AT(G, egress_mirror)},
    {FlowAction::output_vlan, "KCPOutputVLAN", AT(G, output_vlan)},
    {FlowAction::inner_lookup, "InnerLookup"},
    {FlowAction::l3_vlan_routed, "L3 Vlan Routed"},
    {FlowAction::lta, "LTA"},
    {FlowAction::meta_flow, "MetaFlow"},
};

void write_named(FlowAction action, Bytes group, CutText& text)
{
    const auto* named = std::ranges::find(named_actions, action, &NamedAction::action);
    if (named == std::end(named_actions))
        return;
    if (named->number.size != 0)
        text.print("%s: %u; ", named->name, number(group, named->number));
    else
        text.print("%s; ", named->name);
}

void write_firewall(const char* side, Bytes entry, const Place& has_context, const Place& context, CutText& text)
{
    if (number(entry, has_context) != 0)
        text.print("DFW on %sPort, ctCtxId: %#lx; ", side, word(entry, context));
    else
        text.print("DFW on %sPort; ", side);
}

// False when the output ended before the last instance.
bool write_routing(Bytes tail, CutText& text)
{
    const uint32_t count = number(tail, AT(T, num_instances));
    text.print("VDR inst: %u; ", count);
    for (uint32_t i = 0; i < count; ++i) {
        if (text.is_full())
            return false;
        const auto value = tail.load<uint32_t>(offsetof(T, instances) + i * routing_instance_bytes);
        text.print("INST %u: 0x%x; ", i + 1, value);
    }
    return true;
}

void write_encapsulation(const char* name, Bytes group, Bytes vni, CutText& text)
{
    text.print("VNI: %u; ", number(group, AT(G, vni)));
    text.print("%s ENCAP VNI: %u; ", name,
               uint32_t{vni.load<uint8_t>(0)} << 16 | uint32_t{vni.load<uint8_t>(1)} << 8 | vni.load<uint8_t>(2));
}

// False when the output ended inside a list of the action.
bool write_action(FlowAction action, const FlowActions& flow, CutText& text)
{
    switch (action) {
    case FlowAction::firewall_source:
        write_firewall("src", flow.entry, AT(E, source_has_context), AT(E, source_context), text);
        return true;
    case FlowAction::firewall_destination:
        write_firewall("dst", flow.entry, AT(E, destination_has_context), AT(E, destination_context), text);
        return true;
    case FlowAction::routing:
        return write_routing(flow.tail, text);
    case FlowAction::geneve_encap:
        write_encapsulation("GENEVE", flow.group, flow.tail.from(offsetof(T, geneve_vni)), text);
        return true;
    case FlowAction::vxlan_encap:
        write_encapsulation("VXLAN", flow.group, flow.tail.from(offsetof(T, vxlan_vni)), text);
        return true;
    default:
        write_named(action, flow.group, text);
        return true;
    }
}

// The actions from the lowest bit upward; a dropped packet meets no further ones. False when the output ended before
// them: also before a bit that has no text. A cut in the text of the last action alone is no failure.
bool write_group(const FlowActions& flow, CutText& text)
{
    for (uint64_t bits = word(flow.group, AT(G, bitmap)); bits != 0; bits &= bits - 1) {
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

FlowActions callers_flow(const void* area, const void* group, uint32_t tail_length, const void* entry)
{
    const char* end = static_cast<const char*>(area) + tail_length;
    return {unbounded(area), unbounded(group), unbounded(end - sizeof(T)), unbounded(entry)};
}

}  // namespace

bool write_actions(const FlowActions& flow, char* out, size_t size)
{
    CutText text{out, out + size};
    write_offload(flow.area, text);
    if (number(flow.area, AT(A, group_flags)) & action_group_is_multicast) {
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
    return qdp::write_actions(qdp::callers_flow(area, group, tail_length, entry), out, size) ? 0 : 1;
}

int FCActionGroupToStr(const void* area, const void* group, char* out, char* end, uint32_t tail_length,
                       const void* entry)
{
    qdp::CutText text{out, end};
    return qdp::write_group(qdp::callers_flow(area, group, tail_length, entry), text) ? 0 : 1;
}
