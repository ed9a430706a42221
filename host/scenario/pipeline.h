// What a scenario says of the SmartNIC's pipeline and its tables.
#pragma once

#include "host/scenario/ports.h"

namespace host::scenario {

inline constexpr size_t max_tunnels = 4096;
inline constexpr uint32_t max_table_entries = 1 << 28;
inline constexpr NamedValue mirror_types[] = {
    {"other", static_cast<uint64_t>(MirrorType::other)},
    {"greOnly", static_cast<uint64_t>(MirrorType::gre_only)},
    {"erspan2", static_cast<uint64_t>(MirrorType::erspan2)},
    {"erspan3", static_cast<uint64_t>(MirrorType::erspan3)},
};

inline Ip ip_of(const hardware::Address& address)
{
    Ip result{!address.is_ipv4, {}};
    const uint64_t words[] = {__builtin_bswap64(address.high), __builtin_bswap64(address.low)};
    const uint32_t word = __builtin_bswap32(static_cast<uint32_t>(address.low));
    std::memcpy(result.bytes.data(), address.is_ipv4 ? static_cast<const void*>(&word) : words,
                address.is_ipv4 ? sizeof word : sizeof words);
    return result;
}

inline hardware::Address address_of(const Ip& ip)
{
    uint64_t words[2];
    std::memcpy(words, ip.bytes.data(), sizeof words);
    const uint64_t first = __builtin_bswap64(words[0]);
    return ip.is_ipv6 ? hardware::Address{false, first, __builtin_bswap64(words[1])}
                      : hardware::Address{true, 0, first >> 32};
}

template <class V>
void describe_address(V& v, const char* key, hardware::Address& address, const char* help)
{
    Ip ip = ip_of(address);
    v.required(key, ip, IpFormat{}, help);
    v.derive([&] { address = address_of(ip); });
}

template <class V>
void describe_tunnel(V& v, hardware::Tunnel& tunnel)
{
    v.required("record", tunnel.record, number(0, max_tunnel_rewrites - 1), "The index of the headers that it adds.");
    v.optional("geneve", tunnel.is_geneve, Flag{}, "Else it is VXLAN.");
    v.optional("vtep", tunnel.vtep, number(), "");
    v.optional("uplink", tunnel.uplink, number(0, max_p4_ports - 1), "The SmartNIC's port.");
    v.optional("vlan", tunnel.vlan, number(0, max_vlan), "");
    v.optional("outerFlow", tunnel.outer_flow, number(), "");
    v.required("localMac", tunnel.local_mac, MacFormat{}, "");
    v.required("remoteMac", tunnel.remote_mac, MacFormat{}, "");
    describe_address(v, "local", tunnel.local, "");
    describe_address(v, "remote", tunnel.remote, "Of the same family.");
    v.check(tunnel.local.is_ipv4 == tunnel.remote.is_ipv4, "remote", same_family);
}

template <class V>
void describe_mirror_headers(V& v, hardware::MirrorHeaders& headers)
{
    v.required("session", headers.number, number(0, 2 * max_mirror_sessions - 1),
               "Those for what goes out begin at 8.");
    v.optional("vlan", headers.vlan, number(0, max_vlan), "");
    v.optional("cookie", headers.cookie, number(), "");
    v.required("sourceMac", headers.source_mac, MacFormat{}, "");
    v.required("destinationMac", headers.destination_mac, MacFormat{}, "");
    describe_address(v, "source", headers.source, "");
    describe_address(v, "destination", headers.destination, "Of the same family.");
    v.check(headers.source.is_ipv4 == headers.destination.is_ipv4, "destination", same_family);
}

template <class V>
void describe_mirror_session(V& v, MirrorSession& session)
{
    uint32_t is_offloaded = session.is_offloaded, index = session.index, is_egress = session.direction;
    uint32_t is_tunnel = session.is_tunnel;
    std::vector<uint16_t> uplinks(std::begin(session.uplink_logical_ports), std::end(session.uplink_logical_ports));
    v.required("index", index, number(0, max_mirror_sessions - 1), "");
    v.optional("egress", is_egress, Flag{}, "Whether it is of what goes out.");
    v.defaults([&] { is_offloaded = 1; });
    v.optional("offloaded", is_offloaded, Flag{}, "");
    v.optional("port", session.destination_port, number(0, max_p4_ports - 1), "Where its packets go.");
    v.optional("uplinks", uplinks, list(number(), std::size(session.uplink_logical_ports)), "");
    v.optional("tunnel", is_tunnel, Flag{}, "");
    v.defaults([&] { session.tunnel_index = -1; });
    v.optional("tunnelRecord", session.tunnel_index, number(-1), "-1: none.");
    v.optional("vni", session.vni, number(0, last_vni), "");
    v.derive([&] {
        session.is_offloaded = is_offloaded & 1;
        session.index = index & 7;
        session.direction = is_egress & 1;
        session.is_tunnel = is_tunnel & 1;
        std::ranges::copy(uplinks, session.uplink_logical_ports);
    });
}

inline Ip ip_of(const MirrorAddress& address, bool is_ipv6)
{
    return {is_ipv6, std::to_array(address.bytes)};
}

template <class V>
void describe_port_mirror(V& v, PortMirror& mirror)
{
    uint32_t is_offloaded = mirror.is_offloaded, index = mirror.index, fc_port = mirror.fc_port, type = mirror.type;
    uint32_t ns = mirror.ns, class_of_service = mirror.class_of_service;
    Ip source = ip_of(mirror.source, mirror.is_ipv6), destination = ip_of(mirror.destination, mirror.is_ipv6);
    v.required("fcPort", fc_port, number(0, 0xfff), "The switch's port.");
    v.required("index", index, number(0, 7), "");
    v.defaults([&] { is_offloaded = 1; });
    v.optional("offloaded", is_offloaded, Flag{}, "");
    v.optional("type", type, OneOf{mirror_types}, "");
    v.optional("greKey", mirror.gre_key, number(), "");
    v.optional("ns", ns, Flag{}, "");
    v.optional("hardwareId", mirror.hardware_id, number(), "");
    v.optional("classOfService", class_of_service, number(0, 7), "");
    v.optional("snapLength", mirror.snap_length, number(), "");
    v.required("source", source, IpFormat{}, "");
    v.required("destination", destination, IpFormat{}, "Of the same family.");
    v.check(source.is_ipv6 == destination.is_ipv6, "destination", same_family);
    v.optional("erspanId", mirror.erspan_id, number(), "");
    v.derive([&] {
        mirror.is_offloaded = is_offloaded & 1;
        mirror.index = index & 7;
        mirror.fc_port = fc_port & 0xfff;
        mirror.type = type & 3;
        mirror.is_ipv6 = source.is_ipv6;
        mirror.ns = ns & 1;
        mirror.class_of_service = class_of_service & 7;
        std::ranges::copy(source.bytes, mirror.source.bytes);
        std::ranges::copy(destination.bytes, mirror.destination.bytes);
    });
}

// --- Table memory ---

struct DescribedEntry {
    uint32_t index;
    Value bytes;
};

template <class V>
void describe_memory_table(V& v, MemoryTable& table, uint64_t free_address)
{
    v.required("table", table.number, number(), "Its number.");
    v.required("entryBytes", table.entry_bytes, number(1, table_dump_bytes - TableDump::header_bytes), "");
    v.required("entries", table.num_entries, number(1, max_table_entries), "How many it has.");
    v.derive([&] { table.address = free_address; });
    v.derived("address", table.address, number(), "Absent: behind the table before it.");
    std::vector<DescribedEntry> contents;
    for (const auto& [index, bytes] : table.contents)
        contents.push_back({index, bytes});
    v.derived("contents", contents,
              list(object_format([&](auto& w, DescribedEntry& entry) {
                       w.required("index", entry.index, number(0, max_table_entries - 1), "");
                       w.check(entry.index < table.num_entries, "index", "an entry that the table has");
                       w.required("bytes", entry.bytes, Hex{}, "");
                       w.check(entry.bytes.size() == table.entry_bytes, "bytes", "as many bytes as an entry has");
                   }),
                   1 << 16, "index", [](const DescribedEntry& entry) { return entry.index; }),
              "Entries that hold what is said here. Absent: they are made up.");
    v.derive([&] {
        for (DescribedEntry& entry : contents)
            table.contents[entry.index] = std::move(entry.bytes);
    });
}

template <class V>
void describe_settings(V& v, Pipeline& pipeline)
{
    v.optional("flowStats", pipeline.flow_stats, object_format([](auto& w, FpoFlowStatsConfig& config) {
                   w.optional("scanQuota", config.scan_quota, number(), "Flows an update.");
                   w.optional("interval", config.interval, number(), "Between updates.");
               }),
               "How the statistics of offloaded flows are refreshed.");
    v.optional("offloadsIcmpEcho", pipeline.offloads_icmp_echo, Flag{}, "");
    uint32_t selector = pipeline.dscp.selector;  // the record is packed
    v.optional("dscp", pipeline.dscp, object_format([&](auto& w, DscpConfig& dscp) {
                   w.optional("selector", selector, number(), "");
                   w.optional("dscp", dscp.dscp, number(), "");
                   w.optional("mask", dscp.mask, number(), "");
                   w.derive([&] { dscp.selector = selector; });
               }),
               "");
    v.optional("app", pipeline.app_is_enabled, Flag{}, "Whether the P4 application runs.");
}

struct OffloadedPortset {
    std::string portset;
    uint32_t is_enabled;
};

// What is switched on counts from the start on.
template <class V>
void describe_switched_on(V& v, Pipeline& pipeline, const Host& host)
{
    std::vector<OffloadedPortset> offloaded;
    for (const auto& [portset, is_enabled] : pipeline.offloaded)
        offloaded.push_back({portset, is_enabled});
    v.optional("offloadFlows", offloaded,
               list(object_format([](auto& w, OffloadedPortset& each) {
                        w.required("portset", each.portset, text(127), "");
                        w.required("enabled", each.is_enabled, Flag{}, "");
                    }),
                    max_switches, "portset", [](const OffloadedPortset& each) { return each.portset; }),
               "Whether switches offload their flows.");
    bool has_latency = pipeline.latency.is_on();
    v.optional("latency", has_latency, Flag{}, "Whether latencies are measured.");
    std::vector<uint32_t> advanced;
    for (const auto& [switch_number, stats] : pipeline.advanced_stats)
        if (stats.is_on())
            advanced.push_back(switch_number);
    v.optional("advancedStats", advanced, list(number(0, max_switches - 1), max_switches),
               "The switches that keep them.");
    v.check(std::ranges::all_of(advanced, [&](uint32_t each) { return has_datapath_switch(host, each); }),
            "advancedStats", "numbers of switches of the datapath");
    v.derive([&] {
        for (const OffloadedPortset& each : offloaded)
            pipeline.offloaded[each.portset] = each.is_enabled;
        if (has_latency)
            pipeline.latency.turn(true, host.clock);
        for (const uint32_t switch_number : advanced)
            pipeline.advanced_stats[switch_number].turn(true, host.clock);
    });
}

template <class V>
void describe_pipeline(V& v, Pipeline& pipeline, const Host& host)
{
    v.derived("packets", pipeline.packet_rate, number(),
              "From the host, a second. Absent: 100000, or 0 on a host without a SmartNIC.");
    v.derived(
        "operations", pipeline.operations, object_format([](auto& w, FlowOperationRates& rates) {
            w.optional(
                "inserts", rates.inserts, number(),
                "As many flows are removed. Absent: 20, or 0 on a host without a SmartNIC, as with the next two.");
            w.optional("updates", rates.updates, number(), "Absent: 5.");
            w.optional("gets", rates.gets, number(), "Absent: 100.");
        }),
        "What is done with its flows, a second.");
    describe_settings(v, pipeline);
    describe_switched_on(v, pipeline, host);
    v.optional("tables", pipeline.tables,
               list(object_format([&](auto& w, MemoryTable& table) {
                        describe_memory_table(w, table, free_table_memory(pipeline.tables));
                    }),
                    TableList::max_entries, "table", [](const MemoryTable& table) { return table.number; }),
               "Its table memory: 4 is of the flows' counters, 6 of their connections.");
    v.optional("mirrorSessions", pipeline.mirror_sessions,
               list(object_format([](auto& w, MirrorSession& session) { describe_mirror_session(w, session); }),
                    MirrorSessionDump::max_entries, "index and direction", hardware::mirror_number),
               "");
    v.optional("portMirrors", pipeline.port_mirrors,
               list(object_format([](auto& w, PortMirror& mirror) { describe_port_mirror(w, mirror); }), 1 << 12), "");
}

template <class V>
void describe_hardware_tables(V& v, HardwareTables& tables)
{
    v.optional("tunnels", tables.tunnels,
               list(object_format([](auto& w, hardware::Tunnel& tunnel) { describe_tunnel(w, tunnel); }), max_tunnels,
                    "record", [](const hardware::Tunnel& tunnel) { return tunnel.record; }),
               "");
    v.optional(
        "mirrorHeaders", tables.mirrors,
        list(object_format([](auto& w, hardware::MirrorHeaders& headers) { describe_mirror_headers(w, headers); }),
             2 * max_mirror_sessions, "session", [](const hardware::MirrorHeaders& headers) { return headers.number; }),
        "The headers that mirror sessions add.");
}

}  // namespace host::scenario
