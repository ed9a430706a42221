// Tables of one entry: the DSCP configuration, and the map of uplinks to ports.
#include "smartnic/tables/reader.h"
#include "smartnic/tables/tables.h"

namespace qdp {

namespace {

constexpr auto dscp = table<P4Table::dscp>({
    {"ipv4DscpMask", bytes(0, 1)},
    {"ipv4DscpValue", bytes(1, 1)},
    {"ipv6DscpMask", bytes(2, 1)},
    {"ipv6DscpValue", bytes(3, 1)},
});

// The entry holds all ports first, then all tags.
constexpr auto uplink_map = table<P4Table::uplink_map>({
    {"lport0", bytes(0, 2)},
    {"lport0_tag", bytes(8, 2)},
    {"lport1", bytes(2, 2)},
    {"lport1_tag", bytes(10, 2)},
    {"lport2", bytes(4, 2)},
    {"lport2_tag", bytes(12, 2)},
    {"lport3", bytes(6, 2)},
    {"lport3_tag", bytes(14, 2)},
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
