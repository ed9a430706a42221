// What the compiled ways share: the methods and the keys of their results, for which each defines what a row does, the
// records that only they lay out as structs, and the texts of MAC addresses and of ports' clients.
#pragma once

#include <cstdint>

#include "platform/limits.h"
#include "platform/ports.h"

// ROW(key, member of PortDirectionCounters's tx or rx)
#define PORT_COUNTER_ROWS(ROW, PREFIX_TX, PREFIX_RX) \
    ROW(PREFIX_TX "Pkts", tx.packets)                \
    ROW(PREFIX_TX "Bytes", tx.bytes)                 \
    ROW(PREFIX_TX "McastPkts", tx.multicast_packets) \
    ROW(PREFIX_TX "McastBytes", tx.multicast_bytes)  \
    ROW(PREFIX_TX "BcastPkts", tx.broadcast_packets) \
    ROW(PREFIX_TX "BcastBytes", tx.broadcast_bytes)  \
    ROW(PREFIX_TX "Drops", tx.drops)                 \
    ROW(PREFIX_TX "Errors", tx.errors)               \
    ROW(PREFIX_RX "Pkts", rx.packets)                \
    ROW(PREFIX_RX "Bytes", rx.bytes)                 \
    ROW(PREFIX_RX "McastPkts", rx.multicast_packets) \
    ROW(PREFIX_RX "McastBytes", rx.multicast_bytes)  \
    ROW(PREFIX_RX "BcastPkts", rx.broadcast_packets) \
    ROW(PREFIX_RX "BcastBytes", rx.broadcast_bytes)  \
    ROW(PREFIX_RX "Drops", rx.drops)                 \
    ROW(PREFIX_RX "Errors", rx.errors)

// The entry of the flow info table, as a compiler lays it out.
struct FlowInfo {
    uint32_t index;
    uint16_t destination_port;
    uint16_t reserved;
    int64_t count;
    uint32_t time_stamp;
    uint16_t source_tag;
    uint16_t destination_tag;
    uint32_t ttl_check : 1, vdr : 1, nat : 1, encap : 1, decap : 1, ct_ingress : 1, ct_ingress_direction : 1,
        ct_egress : 1, ct_egress_direction : 1, ipfix_ingress : 1, ipfix_egress : 1, drop : 1, to_uplink : 1,
        from_uplink : 1, destination_uplink : 2, source_uplink : 2, unused : 6, hops : 8;
    uint8_t ingress_mirror;
    uint8_t egress_mirror;
    uint16_t encap_index;
    uint16_t ct_ingress_stats;
    uint16_t ct_egress_stats;
    uint32_t nat_index;
    uint32_t ct_ingress_index;
    uint32_t ct_egress_index;
    uint32_t ipfix_ingress_index;
    uint32_t ipfix_egress_index;
};
static_assert(sizeof(FlowInfo) == 56);

// ROW(key, member), SIGNED_ROW(key, member)
#define FLOW_INFO_ROWS(ROW, SIGNED_ROW)         \
    ROW("flowIdx", index)                       \
    ROW("dstPort", destination_port)            \
    SIGNED_ROW("count", count)                  \
    ROW("timeStamp", time_stamp)                \
    ROW("srcTag", source_tag)                   \
    ROW("dstTag", destination_tag)              \
    ROW("vdrTtlCheck", ttl_check)               \
    ROW("vdrVld", vdr)                          \
    ROW("natVld", nat)                          \
    ROW("encap", encap)                         \
    ROW("decap", decap)                         \
    ROW("ctIngressVld", ct_ingress)             \
    ROW("ctIngressDir", ct_ingress_direction)   \
    ROW("ctEgressVld", ct_egress)               \
    ROW("ctEgressDir", ct_egress_direction)     \
    ROW("ipfixIngressVld", ipfix_ingress)       \
    ROW("ipfixEgressVld", ipfix_egress)         \
    ROW("drop", drop)                           \
    ROW("isDstUplink", to_uplink)               \
    ROW("isSrcUplink", from_uplink)             \
    ROW("dstUplinkIdx", destination_uplink)     \
    ROW("srcUplinkIdx", source_uplink)          \
    ROW("vdrHops", hops)                        \
    ROW("ingressMirror", ingress_mirror)        \
    ROW("egressMirror", egress_mirror)          \
    ROW("encapIdx", encap_index)                \
    ROW("ctIngressStatsIdx", ct_ingress_stats)  \
    ROW("ctEgressStatsIdx", ct_egress_stats)    \
    ROW("natIdx", nat_index)                    \
    ROW("ctIngressIdx", ct_ingress_index)       \
    ROW("ctEgressIdx", ct_egress_index)         \
    ROW("ipfixIngressIdx", ipfix_ingress_index) \
    ROW("ipfixEgressIdx", ipfix_egress_index)

// ROW(key, member) of the items in the balancer's entries
#define LB_FEATURE_ROWS(ROW)      \
    ROW("count load", count_load) \
    ROW("feat ID", feature)       \
    ROW("ctx ID", context)        \
    ROW("pkts", packets)          \
    ROW("bytes", bytes)
#define LB_QUEUE_ROWS(ROW)        \
    ROW("count load", count_load) \
    ROW("ctx ID", context)        \
    ROW("pkts", packets)          \
    ROW("bytes", bytes)

// ROW(name, function) of the measured methods
#define MEASURED_METHODS(ROW)                        \
    ROW("GetPortStats", get_port_stats)              \
    ROW("TableFlowInfoGet", table_flow_info_get)     \
    ROW("ListPorts", list_ports)                     \
    ROW("DumpFlowTable", dump_flow_table)            \
    ROW("GetSwitchBurstSize", get_switch_burst_size) \
    ROW("DumpLBStats", dump_lb_stats)

// Goes on with a range of ports or contexts behind a chunk of the balancer's statistics. The count stays; it is 0 when
// the range is done.
inline void advance(uint32_t next, uint32_t& first, uint32_t& count)
{
    if (next < first + count)
        first = next;
    else
        count = 0;
}

// The request that reads one entry of a hardware table.
struct TableReadRequest {
    uint16_t length, opcode, table, key_length;
    uint32_t index;
};

inline constexpr size_t mac_text_bytes = sizeof "00:00:00:00:00:00";

inline void write_mac(const uint8_t* mac, char* text)
{
    static const char digits[] = "0123456789abcdef";
    for (size_t i = 0; i < mac_bytes; ++i) {
        text[3 * i] = digits[mac[i] >> 4];
        text[3 * i + 1] = digits[mac[i] & 15];
        text[3 * i + 2] = ':';
    }
    text[mac_text_bytes - 1] = '\0';
}

inline constexpr const char* representors[] = {
    "REP.INV",   "REP.M2VF",    "REP.M2PHY",  "REP.M2UPT", "REP.M3VF",  "REP.M3PHY", "REP.M3PF", "REP.M3UPT",
    "REP.M3EMU", "REP.M3MUXPF", "REP.P4SHRD", "REP.P4PHY", "REP.P4EMU", "REP.P4VF",  "REP.P4PF", "REP.P4NIC"};
inline constexpr const char* pass_through_representors[] = {"REP.INV",      "REP.M2VF",    "REP.M2PHY",  "REP.M2UPT.PT",
                                                            "REP.M3VF",     "REP.M3PHY",   "REP.M3PF",   "REP.M3UPT.PT",
                                                            "REP.M3EMU.PT", "REP.M3MUXPF", "REP.P4SHRD", "REP.P4PHY",
                                                            "REP.P4EMU.PT", "REP.P4VF",    "REP.P4PF",   "REP.P4NIC"};

inline const char* client_name(const PortListEntry& entry)
{
    const bool is_pass_through = entry.flags & port_flag_pass_through;
    switch (entry.client_type) {
    case 1:
        return is_pass_through ? "VNIC.PT" : "VNIC";
    case 2:
        return "UPLINK";
    case 3:
        return "GENERIC";
    case 4:
        if (entry.representor_type >= 16)
            return "REP.UNKN";
        return (is_pass_through ? pass_through_representors : representors)[entry.representor_type];
    default:
        return "UNKNOWN";
    }
}
