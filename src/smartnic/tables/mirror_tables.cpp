// Mirror sessions, and the headers that their copies travel in.
#include "smartnic/tables/reader.h"
#include "smartnic/tables/tables.h"

namespace qdp {

namespace {

constexpr auto mirror = table<P4Table::mirror>({
    {"dstPort", bytes(0, 2)},
    {"reason", bits(8, 0, 8)},
    {"tunnelVNI", bits(8, 8, 24)},
    {"geneveOptionVld", bits(12, 0, 1)},
    {"tunnelRewriteVld", bits(12, 1, 1)},
    {"pktCapture", bits(12, 2, 1)},
    {"mirrorSW", bits(12, 3, 1)},
    {"mirrorL3", bits(12, 4, 1)},
    {"vlanPush", bits(12, 5, 1)},
    {"TunnelIdx", bits(12, 7, 13)},  // its capital T: deliberate
    {"vlanID", bits(12, 20, 12)},
    {"flowCookie", bytes(16, 4)},
    {"uplinkLport0", bytes(20, 2)},
    {"uplinkLport1", bytes(22, 2)},
    {"geneveOptionDMAC", bytes(2, 6), as_mac},
});

constexpr Place l3_is_ipv6 = bits(2, 2, 1);
constexpr auto mirror_l3 = table<P4Table::mirror_l3>({
    {"l3Idx", bytes(0, 2)},
    {"mirrorType", bits(2, 0, 2)},
    {"isIpv6", l3_is_ipv6},
    {"vlanVld", bits(2, 3, 1)},
    {"trunVld", bits(2, 4, 1)},
    {"cos", bits(2, 5, 3)},
    {"l2Type", bits(3, 0, 2)},
    {"erspanTSNs", bits(3, 2, 1)},
    {"vlanID", bytes(16, 2)},
    {"trunLen", bytes(18, 2)},
    {"tc", bytes(20, 1)},
    {"ttl", bytes(21, 1)},
    {"erspanHwId", bits(22, 0, 6)},
    {"erspanSessionId", bits(22, 6, 10)},
    {"greKeySeq", bytes(24, 4)},
    {"smac", bytes(4, 6), as_mac},
    {"dmac", bytes(10, 6), as_mac},
    {"ipsa", bytes(32, 16), as_address<l3_is_ipv6>},
    {"ipda", bytes(48, 16), as_address<l3_is_ipv6>},
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
