// Mirror sessions, and the headers that their copies travel in.
#include "platform/p4_entries.h"
#include "smartnic/tables/reader.h"

namespace qdp {

namespace {

using M = P4MirrorEntry;
constexpr auto mirror = table<P4Table::mirror>({
    {"dstPort", AT(M, port)},
    {"reason", bits(AT(M, reason_and_vni), M::reason)},
    {"tunnelVNI", bits(AT(M, reason_and_vni), M::vni)},
    {"geneveOptionVld", bits(AT(M, flags), M::has_geneve_option)},
    {"tunnelRewriteVld", bits(AT(M, flags), M::has_tunnel_rewrite)},
    {"pktCapture", bits(AT(M, flags), M::packet_capture)},
    {"mirrorSW", bits(AT(M, flags), M::to_software)},
    {"mirrorL3", bits(AT(M, flags), M::has_l3)},
    {"vlanPush", bits(AT(M, flags), M::vlan_push)},
    {"TunnelIdx", bits(AT(M, flags), M::tunnel)},  // its capital T: deliberate
    {"vlanID", bits(AT(M, flags), M::vlan)},
    {"flowCookie", AT(M, flow_cookie)},
    {"uplinkLport0", AT(M, uplink_ports[0])},
    {"uplinkLport1", AT(M, uplink_ports[1])},
    {"geneveOptionDMAC", AT(M, geneve_option_mac), as_mac},
});

using L = P4MirrorL3Entry;
constexpr Place l3_is_ipv6 = bits(AT(L, flags), L::is_ipv6);
constexpr auto mirror_l3 = table<P4Table::mirror_l3>({
    {"l3Idx", AT(L, number)},
    {"mirrorType", bits(AT(L, flags), L::type)},
    {"isIpv6", l3_is_ipv6},
    {"vlanVld", bits(AT(L, flags), L::has_vlan)},
    {"trunVld", bits(AT(L, flags), L::has_truncation)},
    {"cos", bits(AT(L, flags), L::class_of_service)},
    {"l2Type", bits(AT(L, flags), L::l2_type)},
    {"erspanTSNs", bits(AT(L, flags), L::timestamp_in_nanoseconds)},
    {"vlanID", AT(L, vlan)},
    {"trunLen", AT(L, truncated_bytes)},
    {"tc", AT(L, traffic_class)},
    {"ttl", AT(L, ttl)},
    {"erspanHwId", bits(AT(L, erspan), L::erspan_hardware)},
    {"erspanSessionId", bits(AT(L, erspan), L::erspan_session)},
    {"greKeySeq", AT(L, gre_key)},
    {"smac", AT(L, source_mac), as_mac},
    {"dmac", AT(L, destination_mac), as_mac},
    {"ipsa", AT(L, source), as_address<l3_is_ipv6>},
    {"ipda", AT(L, destination), as_address<l3_is_ipv6>},
});

}  // namespace

// The selector chooses a half of the table.
PyObject* PyQDP_TableMirrorGet(PyObject*, PyObject* args)
{
    uint32_t session, selector;
    if (!PyArg_ParseTuple(args, "II", &session, &selector) || session >= max_mirror_sessions)
        return print_none(invalid_parameter);
    return read_entry(mirror, selector != 0 ? session + max_mirror_sessions : session);
}

PyObject* PyQDP_TableMirrorL3Get(PyObject*, PyObject* args)
{
    uint32_t column, row;
    if (!PyArg_ParseTuple(args, "II", &column, &row) || column >= max_mirror_l3_columns || row >= max_mirror_l3_rows)
        return print_none(invalid_parameter);
    return read_entry(mirror_l3, column + row * mirror_l3_row);
}

}  // namespace qdp
