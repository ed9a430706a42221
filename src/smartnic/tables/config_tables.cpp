// Tables of one entry: the DSCP configuration, and the map of uplinks to ports.
#include "platform/p4_entries.h"
#include "smartnic/tables/reader.h"

namespace qdp {

namespace {

using D = P4DscpEntry;
constexpr auto dscp = table<P4Table::dscp>({
    {"ipv4DscpMask", AT(D, ipv4_mask)},
    {"ipv4DscpValue", AT(D, ipv4_value)},
    {"ipv6DscpMask", AT(D, ipv6_mask)},
    {"ipv6DscpValue", AT(D, ipv6_value)},
});

using U = P4UplinkMapEntry;
constexpr auto uplink_map = table<P4Table::uplink_map>({
    {"lport0", AT(U, ports[0])},
    {"lport0_tag", AT(U, tags[0])},
    {"lport1", AT(U, ports[1])},
    {"lport1_tag", AT(U, tags[1])},
    {"lport2", AT(U, ports[2])},
    {"lport2_tag", AT(U, tags[2])},
    {"lport3", AT(U, ports[3])},
    {"lport3_tag", AT(U, tags[3])},
});

}  // namespace

PyObject* PyQDP_TableDSCPConfGet(PyObject*, PyObject*)
{
    return read_entry(dscp, 0);
}

PyObject* PyQDP_TableUplinkMapGet(PyObject*, PyObject*)
{
    return read_entry(uplink_map, 0);
}

}  // namespace qdp
