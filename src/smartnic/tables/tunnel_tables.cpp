// Tunnels: the hash tables of their ends and of their security associations, and the headers that they add.
#include "core/arguments.h"
#include "platform/p4_entries.h"
#include "smartnic/tables/keys.h"
#include "smartnic/tables/reader.h"

namespace qdp {

namespace {

using T = P4TunnelTerminationEntry;
constexpr auto tunnel_termination = table<P4Table::tunnel_termination>({
    {"vtepIdx", AT(T, vtep)},
    {"valid", AT(T, is_valid)},
});

using A = P4TunnelSaEntry;
constexpr auto tunnel_sa = table<P4Table::tunnel_sa>({
    {"outerFlowId", AT(A, outer_flow)},
    {"valid", AT(A, is_valid)},
});

using R = P4TunnelRewriteEntry;
constexpr Place is_ipv6 = bits(AT(R, flags), R::is_ipv6);
constexpr auto tunnel_rewrite = table<P4Table::tunnel_rewrite>({
    {"isIpv6", is_ipv6},
    {"geneve", bits(AT(R, flags), R::is_geneve)},
    {"vlanVld", bits(AT(R, flags), R::has_vlan)},
    {"tcCopy", bits(AT(R, flags), R::copies_traffic_class)},
    {"labelOptVld", bits(AT(R, flags), R::has_label)},
    {"labelID", bits(AT(R, flags), R::label)},
    {"l2Type", bits(AT(R, flags), R::l2_type)},
    {"vlanID", AT(R, vlan)},
    {"tc", AT(R, traffic_class)},
    {"ttl", AT(R, ttl)},
    {"smac", AT(R, source_mac), as_mac},
    {"dmac", AT(R, destination_mac), as_mac},
    {"ipsa", AT(R, source), as_address<is_ipv6>},
    {"ipda", AT(R, destination), as_address<is_ipv6>},
});

// A VLAN and its valid bit; without a VLAN both are 0.
constexpr uint16_t vlan_bits(uint32_t vlan)
{
    return vlan == no_vlan ? uint16_t{0} : static_cast<uint16_t>(vlan << tunnel_key_vlan_shift | tunnel_key_vlan_valid);
}

}  // namespace

PyObject* PyQDP_TableTunnelTerminateGet(PyObject*, PyObject* args)
{
    long long mac, address_low, address_high;
    uint32_t qualifier, is_first, is_ipv4, vlan_1, vlan_2;
    if (!PyArg_ParseTuple(args, "LIIIIILL", &mac, &qualifier, &is_first, &is_ipv4, &vlan_1, &vlan_2, &address_low,
                          &address_high) ||
        qualifier >= max_tunnel_qualifiers || vlan_1 > no_vlan || vlan_2 > no_vlan || !fits_48_bits(mac) ||
        (is_ipv4 && !fits_ipv4(address_low, address_high)))
        return print_none(invalid_parameter);

    P4TunnelTerminationKey key{};
    for (size_t i = 0; i < mac_bytes; ++i)
        key.mac[i] = low_8(static_cast<uint64_t>(mac) >> (8 * i));
    key.qualifier = low_16(qualifier);
    const uint16_t flags = (is_first ? tunnel_key_first : tunnel_key_second) | (is_ipv4 ? tunnel_key_ipv4 : 0);
    key.flags_and_vlan_1 = flags | vlan_bits(vlan_1);
    key.flags_and_vlan_2 = vlan_bits(vlan_2);
    key.address_low = static_cast<uint64_t>(address_low);
    key.address_high = static_cast<uint64_t>(address_high);
    return read_by_key(tunnel_termination, key);
}

PyObject* PyQDP_TableTunnelSAGet(PyObject*, PyObject* args)
{
    uint32_t qualifier, is_ipv4;
    long long address_low, address_high;
    if (!PyArg_ParseTuple(args, "IILL", &qualifier, &is_ipv4, &address_low, &address_high) || qualifier > UINT8_MAX ||
        (is_ipv4 && !fits_ipv4(address_low, address_high)))
        return print_none(invalid_parameter);

    P4TunnelSaKey key{};
    key.qualifier = low_8(qualifier);
    key.is_ipv4 = is_ipv4 != 0;
    key.address_low = static_cast<uint64_t>(address_low);
    key.address_high = static_cast<uint64_t>(address_high);
    return read_by_key(tunnel_sa, key);
}

PyObject* PyQDP_TableTunnelRewriteGet(PyObject*, PyObject* args)
{
    return read_by_index(args, tunnel_rewrite, max_tunnel_rewrites);
}

}  // namespace qdp
