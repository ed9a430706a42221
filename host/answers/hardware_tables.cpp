// Answers table reads: finds the table and its entry, by index or by key. Both tables of a pair show the same: what
// comes in here goes out there.
#include "host/answers/hardware_entries.h"
#include "host/answers/p4_answer.h"

namespace host::hardware {

namespace {

using Read = uint32_t (*)(const Host& host, ByteSpan key, Output entry);

template <class Key>
Key key_from(ByteSpan bytes)
{
    Key key;
    std::memcpy(&key, bytes.data(), sizeof key);
    return key;
}

// Of a table with so many entries.
template <auto entry_at, uint32_t entries>
uint32_t indexed(const Host& host, ByteSpan key, Output output)
{
    const auto index = key_from<uint32_t>(key);
    return index < entries ? output.put(entry_at(host, index)) : status_refused;
}

// Of a table with a single entry.
template <auto entry>
uint32_t single(const Host& host, ByteSpan key, Output output)
{
    return key_from<uint32_t>(key) == 0 ? output.put(entry(host)) : status_refused;
}

template <class Key, class Entry, std::optional<Entry> (*find_entry)(const Host&, const Key&)>
uint32_t keyed(const Host& host, ByteSpan key, Output output)
{
    const auto entry = find_entry(host, key_from<Key>(key));
    return entry ? output.put(*entry) : status_not_found;
}

constexpr uint32_t max_segments = 1 << 16;
constexpr uint32_t max_mirrors = 2 * max_mirror_sessions;
constexpr uint32_t max_mirror_l3 = max_mirror_l3_rows * mirror_l3_row;

struct Table {
    P4Table table;
    Read read;
};

constexpr Table tables[] = {
    {P4Table::lif_counters, indexed<lif_counters, max_lifs>},
    {P4Table::port_counters, indexed<p4_port_counters, max_p4_ports>},
    {P4Table::egress_counters, single<egress_counters>},
    {P4Table::ingress_counters, single<ingress_counters>},
    {P4Table::ct_counters, indexed<ct_counters, max_ct_counters>},
    {P4Table::ct_counters_second, indexed<ct_counters, max_ct_counters>},
    {P4Table::ipfix, indexed<ipfix, max_flows>},
    {P4Table::ipfix_second, indexed<ipfix, max_flows>},
    {P4Table::input, indexed<input, max_lifs>},
    {P4Table::mux_vlan, indexed<mux_vlan, max_vlan + 1>},
    {P4Table::mux_vlan_second, indexed<mux_vlan, max_vlan + 1>},
    {P4Table::output, indexed<output, max_p4_ports>},
    {P4Table::vlan_map, keyed<P4VlanMapKey, P4VlanMapEntry, vlan_map>},
    {P4Table::l2_segment, indexed<l2_segment, max_segments>},
    {P4Table::registered_mac, keyed<P4RegisteredMacKey, P4RegisteredMacEntry, registered_mac>},
    {P4Table::mirror, indexed<mirror, max_mirrors>},
    {P4Table::mirror_l3, indexed<mirror_l3, max_mirror_l3>},
    {P4Table::tunnel_termination, keyed<P4TunnelTerminationKey, P4TunnelTerminationEntry, tunnel_termination>},
    {P4Table::tunnel_sa, keyed<P4TunnelSaKey, P4TunnelSaEntry, tunnel_sa>},
    {P4Table::tunnel_rewrite, indexed<tunnel_rewrite, max_tunnel_rewrites>},
    {P4Table::ct_state, indexed<ct_state, max_flows>},
    {P4Table::ct_state_second, indexed<ct_state, max_flows>},
    {P4Table::dscp, single<dscp>},
    {P4Table::uplink_map, single<uplink_map>},
    {P4Table::flow_key, keyed<P4FlowKey, P4FlowKeyEntry, flow_key>},
    {P4Table::flow_rewrite, indexed<flow_rewrite, max_flows>},
    {P4Table::flow_info, indexed<flow_info, max_flows>},
    {P4Table::flow_operations, single<flow_operations>},
};
static_assert(std::size(tables) == std::size(p4_table_shapes));

uint32_t table_read(Host& host, const ByteSpan& payload, Output response)
{
    P4TableReadHeader header;
    if (payload.size() < sizeof header)
        return status_refused;
    std::memcpy(&header, payload.data(), sizeof header);
    const ByteSpan key = payload.subspan(sizeof header);
    if (header.key_length != key.size())
        return status_refused;
    for (const Table& table : tables)
        if (static_cast<uint16_t>(table.table) == header.table)
            return key.size() == p4_table_shape(table.table).key_bytes ? table.read(host, key, response)
                                                                       : status_refused;
    return status_refused;
}

const P4Answer hardware_table_commands[] = {{P4Opcode::table_read, table_read}};

}  // namespace

}  // namespace host::hardware
