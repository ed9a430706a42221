// A port's NetQ receive filters with the queues that serve them, and their migration.
#include <cstdio>

#include "core/arguments.h"
#include "core/build.h"
#include "core/render.h"
#include "datapath/uplink/uplink.h"
#include "platform/lb.h"
#include "platform/uplink.h"

namespace qdp {

namespace {

constexpr size_t filter_text_bytes = 250;
constexpr size_t mac_filter_text_bytes = 120;

NetQFilter head_of(Bytes filter)
{
    return filter.load<NetQFilter>(0);
}

// Where the key begins that the type needs, however long the filter says that its key is: a key that is too short goes
// on in the queues behind it.
template <class Key>
Key key_of(Bytes filter)
{
    return filter.load<Key>(sizeof(NetQFilter));
}

size_t queues_offset(const NetQFilter& head)
{
    return sizeof head + head.key_length;
}

PyObject* tunnel_filter_text(const char* name, const NetQTunnelKey& key)
{
    char text[filter_text_bytes], outer_mac[mac_text_bytes], inner_mac[mac_text_bytes];
    std::snprintf(text, sizeof text, "%s:outer:%s:inner:%s:vni:%u", name, MACToStr(key.outer_mac, outer_mac),
                  MACToStr(key.inner_mac, inner_mac), key.vni);
    return text_object(text);
}

PyObject* filter_text(Bytes filter, const Field& field)
{
    char text[mac_filter_text_bytes], mac[mac_text_bytes];
    const auto key = key_of<NetQMacKey>(filter);
    switch (static_cast<NetQFilterType>(filter.unsigned_at(field.where))) {
    case NetQFilterType::mac:
        std::snprintf(text, sizeof text, "macOnly:%s", MACToStr(key.mac, mac));
        return text_object(text);
    case NetQFilterType::vlan_and_mac:
        std::snprintf(text, sizeof text, "vlanMac:%s:vlanID:%u", MACToStr(key.mac, mac), key.vlan);
        return text_object(text);
    case NetQFilterType::geneve:
        return tunnel_filter_text("geneve", key_of<NetQTunnelKey>(filter));
    case NetQFilterType::vxlan:
        return tunnel_filter_text("vxlan", key_of<NetQTunnelKey>(filter));
    }
    return text_object("UnknownFilter");
}

using Q = NetQQueue;
constexpr auto queue_fields = fields<sizeof(Q)>({
    {"qdpPortID", AT(Q, qdp_port)},
    {"qid", AT(Q, queue)},
    {"fid", AT(Q, filter_id)},
});

PyObject* queue_list(Bytes filter, const Field& field)
{
    const Bytes queues = filter.from(queues_offset(head_of(filter)));
    const uint64_t length = filter.unsigned_at(field.where);
    SharedKeys keys{length};
    return list_of(length, [&](size_t i) { return keys.dict_of(queue_fields, queues.from(i * sizeof(Q))); });
}

using F = NetQFilter;
constexpr auto filter_fields = fields<sizeof(F)>({
    {"rxf", AT(F, type), filter_text},
    {"qInfo", AT(F, num_queues), queue_list},
});

size_t filter_bytes(Bytes filter)
{
    const NetQFilter head = head_of(filter);
    return queues_offset(head) + head.num_queues * sizeof(NetQQueue);
}

// Once a filter leads out of the record, the filters behind it are zero bytes and have no queues: however wrong the
// lengths are, the walk makes no more than a dict a filter and a queue.
PyObject* filter_list(Bytes info, const Field& field)
{
    Bytes filter = info.from(offsetof(NetQInfo, entries));
    const uint64_t length = info.unsigned_at(field.where);
    SharedKeys keys{length};
    return list_of(length, [&](size_t) {
        PyObject* dict = keys.dict_of(filter_fields, filter);
        filter = filter.from(filter_bytes(filter));
        return dict;
    });
}

using R = NetQInfo;
constexpr auto info_fields = fields<sizeof(R)>({
    {"isUplink", AT(R, is_uplink)},
    {"isFlowFilter", AT(R, is_flow_filter)},
    {"swID", AT(R, switch_number)},
    {"qdpPortID", AT(R, qdp_port)},
    {"filters", AT(R, num_filters), filter_list},
});

}  // namespace

PyObject* PyQDP_Get_Port_NetQ_Info(PyObject*, PyObject* args)
{
    uint32_t switch_number, port;
    if (!PyArg_ParseTuple(args, "II", &switch_number, &port) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    auto info = allocate<NetQInfo>();
    if (!info)
        return print_none(no_memory);

    uint32_t size = sizeof(NetQInfo);
    if (Qdp_Get_Port_NetQ_Info(switch_number, port, info.get(), &size) != 0)
        return print_none("Failed to get uplink stats.\n");  // deliberately so
    return PyQDP_PortNetQInfo(info.release(), sizeof(NetQInfo));
}

PyObject* PyQDP_Migrate_NetQ_Filter(PyObject*, PyObject* args)
{
    uint32_t switch_number, port, value;
    if (!PyArg_ParseTuple(args, "III", &switch_number, &port, &value) || !is_port(switch_number, port))
        return print_none(invalid_parameter);

    const uint32_t status = Qdp_Migrate_NetQ_Filter(switch_number, port, value);
    if (status == status_lb_is_automatic)
        print("Please disable automatic thread load balancing.\n\n");  // deliberately a blank line
    if (status != 0)
        return print_none_format("Failed to migrate filter of port %d.\n", static_cast<int>(port));
    return none();
}

}  // namespace qdp

using namespace qdp;

PyObject* PyQDP_PortNetQInfo(void* info, uint32_t size)
{
    const Owned<void> owned{info};
    return dict_or_none(info_fields, Bytes{info, size}, "Failed to allocate NetQ Info resp.\n");
}
