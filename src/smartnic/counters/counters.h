// The counter blocks of the SmartNIC's pipeline as dicts: the same keys whether the library or a hardware table gives
// the block, so that the two can be compared key by key. All counters are shown signed.
#pragma once

#include "core/build.h"
#include "platform/p4_counters.h"

namespace qdp {

namespace counters {

using P = P4PortCounters;
using L = P4LifCounters;
using I = P4IngressCounters;
using E = P4EgressCounters;

}  // namespace counters

inline constexpr auto p4_port_counter_fields = fields<sizeof(P4PortCounters)>({
    {"rxUcastBytes", AT(counters::P, rx.unicast_bytes), as_signed},
    {"rxUcastPkts", AT(counters::P, rx.unicast_packets), as_signed},
    {"rxMcastBytes", AT(counters::P, rx.multicast_bytes), as_signed},
    {"rxMcastPkts", AT(counters::P, rx.multicast_packets), as_signed},
    {"rxBcastBytes", AT(counters::P, rx.broadcast_bytes), as_signed},
    {"rxBcastPkts", AT(counters::P, rx.broadcast_packets), as_signed},
    {"rxUcastDropBytes", AT(counters::P, rx_drops.unicast_bytes), as_signed},
    {"rxUcastDropPkts", AT(counters::P, rx_drops.unicast_packets), as_signed},
    {"rxMcastDropBytes", AT(counters::P, rx_drops.multicast_bytes), as_signed},
    {"rxMcastDropPkts", AT(counters::P, rx_drops.multicast_packets), as_signed},
    {"rxBcastDropBytes", AT(counters::P, rx_drops.broadcast_bytes), as_signed},
    {"rxBcastDropPkts", AT(counters::P, rx_drops.broadcast_packets), as_signed},
    {"txUcastBytes", AT(counters::P, tx.unicast_bytes), as_signed},
    {"txUcastPkts", AT(counters::P, tx.unicast_packets), as_signed},
    {"txMcastBytes", AT(counters::P, tx.multicast_bytes), as_signed},
    {"txMcastPkts", AT(counters::P, tx.multicast_packets), as_signed},
    {"txBcastBytes", AT(counters::P, tx.broadcast_bytes), as_signed},
    {"txBcastPkts", AT(counters::P, tx.broadcast_packets), as_signed},
    {"txUcastDropBytes", AT(counters::P, tx_drops.unicast_bytes), as_signed},
    {"txUcastDropPkts", AT(counters::P, tx_drops.unicast_packets), as_signed},
    {"txMcastDropBytes", AT(counters::P, tx_drops.multicast_bytes), as_signed},
    {"txMcastDropPkts", AT(counters::P, tx_drops.multicast_packets), as_signed},
    {"txBcastDropBytes", AT(counters::P, tx_drops.broadcast_bytes), as_signed},
    {"txBcastDropPkts", AT(counters::P, tx_drops.broadcast_packets), as_signed},
});

// A LIF's block begins with a port's.
inline constexpr auto p4_lif_queue_fields = fields<sizeof(P4LifCounters)>({
    {"rxQueueDisabled", AT(counters::L, rx_queue.disabled), as_signed},
    {"rxQueueEmpty", AT(counters::L, rx_queue.empty), as_signed},
    {"rxQueueError", AT(counters::L, rx_queue.error), as_signed},
    {"rxDescFetchError", AT(counters::L, rx_queue.descriptor_fetch_error), as_signed},
    {"rxDescDataError", AT(counters::L, rx_queue.descriptor_data_error), as_signed},
    {"txQueueDisabled", AT(counters::L, tx_queue.disabled), as_signed},
    {"txQueueError", AT(counters::L, tx_queue.error), as_signed},
    {"txDescFetchError", AT(counters::L, tx_queue.descriptor_fetch_error), as_signed},
    {"txDescDataError", AT(counters::L, tx_queue.descriptor_data_error), as_signed},
});
inline constexpr auto p4_lif_counter_fields =
    joined<sizeof(P4LifCounters)>(p4_port_counter_fields, p4_lif_queue_fields);

inline constexpr auto p4_ingress_counter_fields = fields<sizeof(P4IngressCounters)>({
    {"rxFromHost", AT(counters::I, from_host), as_signed},
    {"rxFromSwitch", AT(counters::I, from_switch), as_signed},
    {"rxFromCpu", AT(counters::I, from_cpu), as_signed},
    {"rxUserCsumErr", AT(counters::I, user_checksum_errors), as_signed},
    {"rxSubstrateCsumErr", AT(counters::I, substrate_checksum_errors), as_signed},
    {"rxMalformed", AT(counters::I, malformed), as_signed},
});

inline constexpr auto p4_egress_counter_fields = fields<sizeof(P4EgressCounters)>({
    {"txToHost", AT(counters::E, to_host), as_signed},
    {"txToSwitch", AT(counters::E, to_switch), as_signed},
    {"txToCpu", AT(counters::E, to_cpu), as_signed},
    {"flowMiss", AT(counters::E, flow_miss), as_signed},
    {"connTrackRedir", AT(counters::E, conntrack_redirects), as_signed},
    {"wrongReinject", AT(counters::E, wrong_reinjects), as_signed},
    {"drop", AT(counters::E, drops), as_signed},
});

}  // namespace qdp
