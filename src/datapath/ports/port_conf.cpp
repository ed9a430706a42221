// A port's configuration: what it receives, its VLANs, its features and its metadata flow slots.
#include <algorithm>
#include <bit>
#include <cstdio>

#include "core/arguments.h"
#include "core/build.h"
#include "core/render.h"
#include "datapath/ports/ports.h"
#include "platform/port_conf.h"

namespace qdp {

namespace {

using R = PortConf;

constexpr size_t text_bytes = 120;  // of every text that is formatted here

PyObject* receive_flags_text(Bytes conf, const Field& field)
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

constexpr Place feature(uint64_t mask)
{
    const auto bit = static_cast<unsigned>(std::countr_zero(mask));
    return bits(offsetof(R, features) + bit / 8, bit % 8, 1);
}

constexpr auto conf_fields = fields<sizeof(R)>({
    {"portID", AT(R, port)},
    {"flags", AT(R, receive_flags), receive_flags_text},
    {"hwAddr", AT(R, mac), as_mac},
    {"untaggedVlanID", AT(R, untagged_vlan)},
    {"forgedMACAllowed", AT(R, forged_mac_allowed)},
    {"numMcastAddrs", AT(R, num_multicast_addresses)},
    {"vni", AT(R, vni)},
    {"mcastAddrList", AT(R, multicast_addresses), multicast_addresses},
    {"numTaggedVlanRanges", AT(R, num_vlan_ranges)},
    {"vlanRanges", AT(R, vlan_ranges), vlan_ranges},
});
constexpr auto feature_fields = fields<sizeof(R)>(port_features, feature);
constexpr auto meta_flow_fields = fields<sizeof(R)>({
    {"metaFlow", AT(R, meta_flows), meta_flows},
});
constexpr auto port_conf_fields = joined<sizeof(R)>(joined<sizeof(R)>(conf_fields, feature_fields), meta_flow_fields);

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

    return dict_or_none(port_conf_fields, bytes_of(*record), no_memory);
}

}  // namespace qdp

void FlagsToStr(uint32_t flags, char* out, uint32_t size)
{
    std::snprintf(out, size, "%s", "");
    size_t end = 0;  // of the text; from the first name that is cut on, of the output
    for (const auto& [name, flag] : receive_flags)
        if (flags & flag) {
            const int needed = std::snprintf(out + end, size - end, "%s ", name);
            end = std::min<size_t>(end + static_cast<size_t>(needed), size);
        }
}
