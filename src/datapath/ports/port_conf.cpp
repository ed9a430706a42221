// A port's configuration: what it receives, its VLANs, its features and its metadata flow slots.
#include <algorithm>
#include <cstdio>

#include "core/arguments.h"
#include "core/build.h"
#include "core/render.h"
#include "datapath/ports/ports.h"
#include "platform/port_conf.h"
#include "platform/qdp_control.h"

namespace qdp {

namespace {

using R = PortConf;

constexpr size_t text_bytes = 120;  // of every text that is formatted here

PyObject* receive_flags(Bytes conf, const Field& field)
{
    char text[text_bytes];
    FlagsToStr(static_cast<uint32_t>(conf.unsigned_at(field.where)), text, sizeof text);
    return text_object(text);
}

PyObject* multicast_addresses(Bytes conf, const Field& field)
{
    return list_of(conf.unsigned_at(AT(R, num_multicast_addresses)),
                   [&](size_t i) { return mac_object(conf, field.where.offset + i * mac_bytes); });
}

PyObject* vlan_ranges(Bytes conf, const Field& field)
{
    return list_of(conf.unsigned_at(AT(R, num_vlan_ranges)), [&](size_t i) {
        const auto range = conf.load<VlanRange>(field.where.offset + i * sizeof(VlanRange));
        char text[text_bytes];
        std::snprintf(text, sizeof text, "%u-%u", range.first, range.last);
        return text_object(text);
    });
}

PyObject* meta_flow(size_t slot, uint8_t state)
{
    char text[text_bytes];
    std::snprintf(text, sizeof text, "%d:%d ", static_cast<int>(slot), state & meta_flow_second_value ? 1 : 0);
    return text_object(text);
}

// The enabled slots, in a list as long as the record's own count of them: a slot that finds no place there fails, and a
// place that finds no slot stays None.
PyObject* meta_flows(Bytes conf, const Field& field)
{
    PyRef list{list_of(conf.unsigned_at(AT(R, num_meta_flows)), [](size_t) { return none(); })};
    if (!list)
        return nullptr;
    size_t position = 0;
    for (size_t slot = 0; slot < meta_flow_slots; ++slot) {
        const auto state = conf.load<uint8_t>(field.where.offset + slot);
        if (state & meta_flow_enabled && !set_list_item(list.get(), position++, meta_flow(slot, state)))
            return nullptr;
    }
    return list.release();
}

constexpr Place feature(size_t byte, unsigned bit)
{
    return bits(offsetof(R, features) + byte, bit, 1);
}

constexpr auto conf_fields = fields<sizeof(R)>({
    {"portID", AT(R, port)},
    {"flags", AT(R, receive_flags), receive_flags},
    {"hwAddr", AT(R, mac), as_mac},
    {"untaggedVlanID", AT(R, untagged_vlan)},
    {"forgedMACAllowed", AT(R, forged_mac_allowed)},
    {"numMcastAddrs", AT(R, num_multicast_addresses)},
    {"vni", AT(R, vni)},
    {"mcastAddrList", AT(R, multicast_addresses), multicast_addresses},
    {"numTaggedVlanRanges", AT(R, num_vlan_ranges)},
    {"vlanRanges", AT(R, vlan_ranges), vlan_ranges},

    {"KCP", feature(0, 0)},
    {"MirrorIn", feature(0, 1)},
    {"LRO", feature(0, 2)},
    {"L2ForOverlay", feature(0, 3)},

    {"LAT", feature(1, 0)},
    {"Spoofguard", feature(1, 4)},
    {"VDL2", feature(1, 5)},
    {"TxL3", feature(1, 6)},

    {"minFlowL3", feature(2, 0)},
    {"SWL3", feature(2, 1)},
    {"MirrorFilterIn", feature(2, 4)},
    {"LTR", feature(2, 5)},
    {"TxL4", feature(2, 6)},
    {"IPFIX", feature(2, 7)},

    {"SI", feature(3, 0)},
    {"SWL4", feature(3, 1)},
    {"DFW", feature(3, 2)},
    {"DLB", feature(3, 3)},
    {"HKZFW", feature(3, 4)},
    {"minFlowL4", feature(3, 5)},
    {"MirrorFilterOut", feature(3, 6)},

    {"metaFlow", AT(R, meta_flows), meta_flows},
});

struct FlagName {
    uint32_t flag;
    const char* name;
};
constexpr FlagName receive_flag_names[] = {
    {receive_unicast, "UNICAST "},     {receive_multicast, "MULTICAST "}, {receive_all_multicast, "ALLMULTI "},
    {receive_broadcast, "BROADCAST "}, {receive_promiscuous, "PROMISC "}, {receive_ladrf, "USE_LADRF "},
};

}  // namespace

PyObject* PyQDP_Get_Port_Conf(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    const auto record = allocate<PortConf>();
    if (!record)
        return print_none(no_memory);

    uint32_t size = sizeof(PortConf);
    if (Qdp_Get_Port_Conf(switch_number, port, record.get(), &size) != 0)
        return print_none("Failed to retrieve port conf.\n");

    return dict_or_none(conf_fields, bytes_of(*record), no_memory);
}

}  // namespace qdp

void FlagsToStr(uint32_t flags, char* out, uint32_t size)
{
    std::snprintf(out, size, "%s", "");
    size_t end = 0;  // of the text; from the first name that is cut on, of the output
    for (const auto& [flag, name] : qdp::receive_flag_names)
        if (flags & flag) {
            const int needed = std::snprintf(out + end, size - end, "%s", name);
            end = std::min<size_t>(end + static_cast<size_t>(needed), size);
        }
}
