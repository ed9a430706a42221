"""The metrics of the exporter: one row a family, from which the reading, the documentation and the dashboard are made.

A row's values come from one method: `keys` names the keys of its answer, each with the label values that it adds to
those of the thing that was asked. A row without keys has a value that is no key of an answer.
"""

from collections import namedtuple

WORD = 1 << 64  # what wraps a counter of the platform
COUNTER, GAUGE, HISTOGRAM = "counter", "gauge", "histogram"

# name: without `_total`; type: one of the above; unit: of OpenMetrics, and the end of the name, or ""; labels: in
# order; method: the module's method that gives the values; keys: {key: label values}; bits: of the counter as the
# module shows it; scale: what a value is multiplied by; help: one sentence.
Metric = namedtuple("Metric", "name type unit labels method keys bits scale help")


def _metric(name, type_, labels, method, keys, help_, unit="", bits=64, scale=1):
    return Metric(name, type_, unit, tuple(labels), method, keys, bits, scale, help_)


def _one(key):
    return {key: ()}


SWITCH = ("switch",)
PORT = ("switch", "port")
LCORE = ("switch", "lcore")
TRAFFIC = PORT + ("direction", "path")

# The four counters of a key name by direction and path: txPkts, rxPkts, spTxPkts, spRxPkts.
def _by_direction_and_path(ending):
    return {
        "tx" + ending: ("tx", "fast"),
        "rx" + ending: ("rx", "fast"),
        "spTx" + ending: ("tx", "slow"),
        "spRx" + ending: ("rx", "slow"),
    }


def _by_direction(ending):
    return {"tx" + ending: ("tx",), "rx" + ending: ("rx",)}


# The kinds of errors that an uplink's device counts.
ERROR_KINDS = {
    "collisions": "collision",
    "rxLengthErrors": "rx_length",
    "rxOverflowErrors": "rx_overflow",
    "rxCRCErrors": "rx_crc",
    "rxFrameAlignErrors": "rx_frame_align",
    "rxFifoErrors": "rx_fifo",
    "rxMissErrors": "rx_miss",
    "txAbortedErrors": "tx_aborted",
    "txCarrierErrors": "tx_carrier",
    "txFifoErrors": "tx_fifo",
    "txHeartbeatErrors": "tx_heartbeat",
    "txWindowErrors": "tx_window",
}

# The calls by which the datapath offloads flows to an uplink's NIC, as their counters name them.
OFFLOAD_CALLS = (
    "Validate",
    "Create",
    "Destroy",
    "Query",
    "Flush",
    "BulkResAlloc",
    "BulkResFree",
    "BulkResQuery",
    "BulkResSet",
    "BulkResReset",
    "CreateCtx",
    "DestroyCtx",
    "ModifyCtx",
    "QueryCtx",
)

# The highest value that a bucket of the histogram of table programming counts, in microseconds, and its key.
LATENCY_BUCKETS = tuple(
    (bound, "%dus" % bound)
    for bound in (100, 200, 300, 400, 500, 700, 900, 1100, 1300, 1500, 2000, 2500, 3000, 3500, 4000, 5000, 6000, 7000)
    + (8000, 9000)
)
MICROSECONDS_A_SECOND = 1000000


def _snake(name):
    """ "BulkResAlloc" -> "bulk_res_alloc"."""
    return "".join("_" + letter.lower() if letter.isupper() else letter for letter in name).lstrip("_")


def _calls():
    keys = {}
    for call in OFFLOAD_CALLS:
        keys["numSucceeded%sCalls" % call] = (_snake(call), "succeeded")
        keys["numFailed%sCalls" % call] = (_snake(call), "failed")
    return keys


METRICS = (
    # The exporter itself.
    _metric("qdp_up", GAUGE, (), "", {}, "Whether the datapath answered at this scrape."),
    _metric("qdp_build_info", GAUGE, ("version",), "", {}, "The version of the exporter; always 1."),
    _metric("qdp_collector_success", GAUGE, ("collector",), "", {}, "Whether all calls of a collector were answered."),
    _metric(
        "qdp_collector_duration_seconds", GAUGE, ("collector",), "", {}, "How long a collector read.", unit="seconds"
    ),
    _metric("qdp_call_failures", COUNTER, ("method",), "", {}, "Calls of a method that failed."),
    _metric("qdp_reader_restarts", COUNTER, (), "", {}, "How often the reading process was replaced."),
    _metric("qdp_exporter_omitted_series", GAUGE, (), "", {}, "Series of ports that --max-series left out."),
    # Switches.
    _metric("qdp_switch_info", GAUGE, ("switch", "name"), "", {}, "A switch; always 1."),
    _metric("qdp_switch_ports", GAUGE, SWITCH, "ListSwitches", _one("numPorts"), "Ports that a switch has."),
    _metric(
        "qdp_switch_active_ports", GAUGE, SWITCH, "ListSwitches", _one("numActivePorts"), "Ports of a switch in use."
    ),
    _metric(
        "qdp_switch_max_ports", GAUGE, SWITCH, "ListSwitches", _one("maxPorts"), "Most ports that a switch can have."
    ),
    _metric(
        "qdp_switch_mtu_bytes",
        GAUGE,
        SWITCH,
        "ListSwitches",
        _one("mtu"),
        "Largest packet that a switch forwards.",
        unit="bytes",
    ),
    _metric("qdp_switch_lcores", GAUGE, SWITCH, "ListSwitches", _one("numLcores"), "Lcores that serve a switch."),
    # Lcores.
    _metric("qdp_lcore_flows", GAUGE, LCORE, "GetFlowStats", _one("numFlows"), "Flows in the cache of an lcore."),
    _metric(
        "qdp_lcore_flows_created",
        COUNTER,
        LCORE,
        "GetFlowStats",
        _one("numFlowsCreated"),
        "Flows that an lcore has created.",
        bits=32,
    ),
    _metric(
        "qdp_lcore_lookup_hits",
        COUNTER,
        LCORE + ("source",),
        "GetFlowStats",
        {"hits": ("cache",), "fpoHits": ("offload",)},
        "Packets that met a flow, in the lcore's cache or in the NIC.",
        bits=32,
    ),
    _metric(
        "qdp_lcore_lookup_misses", COUNTER, LCORE, "GetFlowStats", _one("miss"), "Packets that met no flow.", bits=32
    ),
    _metric(
        "qdp_lcore_slowpath_packets",
        COUNTER,
        LCORE,
        "GetFlowStats",
        _one("slowpath"),
        "Packets that an lcore gave to the slow path.",
        bits=32,
    ),
    _metric(
        "qdp_lcore_failures",
        COUNTER,
        LCORE + ("kind",),
        "GetFlowStats",
        {
            "actionAllocFails": ("action_alloc",),
            "actionGroupAllocFails": ("action_group_alloc",),
            "keyInsertFailCount": ("key_insert",),
        },
        "Flows that an lcore could not put into its cache.",
        bits=32,
    ),
    # The balancer's contexts: a context is an lcore of a switch.
    _metric(
        "qdp_balancer_context_cpu_ratio",
        GAUGE,
        ("switch", "context"),
        "DumpLBStats",
        _one("raw CPU"),
        "CPU load of a context, 1 for a whole core.",
        unit="ratio",
        scale=0.01,
    ),
    _metric(
        "qdp_balancer_context_packets",
        COUNTER,
        ("switch", "context"),
        "DumpLBStats",
        _one("pkts"),
        "Packets that a context has forwarded.",
    ),
    _metric(
        "qdp_balancer_context_bytes",
        COUNTER,
        ("switch", "context"),
        "DumpLBStats",
        _one("bytes"),
        "Bytes that a context has forwarded.",
        unit="bytes",
    ),
    # Uplinks' devices.
    _metric(
        "qdp_uplink_packets",
        COUNTER,
        PORT + ("direction",),
        "GetUplinkStats",
        _by_direction("Pkts"),
        "Packets that an uplink's device has counted.",
    ),
    _metric(
        "qdp_uplink_bytes",
        COUNTER,
        PORT + ("direction",),
        "GetUplinkStats",
        _by_direction("Bytes"),
        "Bytes that an uplink's device has counted.",
        unit="bytes",
    ),
    _metric(
        "qdp_uplink_drops",
        COUNTER,
        PORT + ("direction",),
        "GetUplinkStats",
        _by_direction("Drops"),
        "Packets that an uplink's device has dropped.",
    ),
    _metric(
        "qdp_uplink_errors",
        COUNTER,
        PORT + ("direction",),
        "GetUplinkStats",
        _by_direction("Errors"),
        "Errors of an uplink's device.",
    ),
    _metric(
        "qdp_uplink_errors_by_kind",
        COUNTER,
        PORT + ("kind",),
        "GetUplinkStats",
        {key: (kind,) for key, kind in ERROR_KINDS.items()},
        "Errors of an uplink's device by their kind.",
    ),
    # Offload to the uplinks' NICs.
    _metric(
        "qdp_offload_flows",
        GAUGE,
        PORT,
        "GetFPOUplinkStatus",
        _one("numFlowsOffloaded"),
        "Flows that are offloaded to an uplink's NIC.",
    ),
    _metric(
        "qdp_offload_flows_limit",
        GAUGE,
        PORT,
        "GetFPOUplinkStatus",
        _one("maxFlowsSupported"),
        "Most flows that an uplink's NIC takes.",
    ),
    _metric(
        "qdp_offload_counters_limit",
        GAUGE,
        PORT,
        "GetFPOUplinkStatus",
        _one("maxCountersSupported"),
        "Most flow counters that an uplink's NIC has.",
    ),
    _metric(
        "qdp_offload_calls",
        COUNTER,
        PORT + ("call", "result"),
        "GetFPOUplinkStats",
        _calls(),
        "Calls to an uplink's NIC for flows and their resources.",
    ),
    _metric(
        "qdp_offload_rejects",
        COUNTER,
        PORT + ("reason",),
        "GetFPOUplinkStats",
        {
            "ringFull": ("ring_full",),
            "creationFull": ("creation_full",),
            "destroyFull": ("destroy_full",),
            "updateFull": ("update_full",),
            "genMismatched": ("generation_mismatched",),
            "limitExceeded": ("limit_exceeded",),
        },
        "Requests for offload that were not made.",
    ),
    _metric(
        "qdp_offload_pending_calls",
        GAUGE,
        PORT,
        "GetFPOUplinkStats",
        _one("numPendingFpoCallList"),
        "Calls to an uplink's NIC that wait for their turn.",
    ),
    # Why packets took the slow path: only where the advanced statistics are on already.
    _metric(
        "qdp_slowpath_reasons",
        COUNTER,
        SWITCH + ("reason",),
        "AdvStatsGetCounters",
        {
            "spReasonSpFlags": ("sp_flags",),
            "spReasonL3Incompat": ("l3_incompatible",),
            "spReasonL4Incompat": ("l4_incompatible",),
            "spReasonEncapIncompat": ("encap_incompatible",),
            "spReasonInnerL2Incompt": ("inner_l2_incompatible",),
            "spReaonVlanTF": ("vlan_tf",),
            "spReasonVniZero": ("vni_zero",),
            "spReasonNonUnicast": ("non_unicast",),
            "spReasonInnerNoneUnicast": ("inner_non_unicast",),
            "spReasonNonIP": ("non_ip",),
            "spReasonInnerNonIP": ("inner_non_ip",),
            "spReasonGeneveOption": ("geneve_option",),
            "spReasonGeneveLabelType": ("geneve_label_type",),
            "spReasonIpv6Ext": ("ipv6_extension",),
            "spReasonL4NotSupported": ("l4_not_supported",),
            "spReasonLat": ("lat",),
        },
        "Packets that took the slow path, by reason.",
    ),
    # The SmartNIC.
    _metric("qdp_nic_app_enabled", GAUGE, (), "", {}, "Whether the SmartNIC's application is on."),
    _metric(
        "qdp_nic_ingress_packets",
        COUNTER,
        ("source",),
        "P4IStatsGet",
        {"rxFromHost": ("host",), "rxFromSwitch": ("switch",), "rxFromCpu": ("cpu",)},
        "Packets that the SmartNIC's ingress pipeline has received.",
    ),
    _metric(
        "qdp_nic_ingress_errors",
        COUNTER,
        ("kind",),
        "P4IStatsGet",
        {
            "rxUserCsumErr": ("user_checksum",),
            "rxSubstrateCsumErr": ("substrate_checksum",),
            "rxMalformed": ("malformed",),
        },
        "Packets that the SmartNIC's ingress pipeline found wrong.",
    ),
    _metric(
        "qdp_nic_egress_packets",
        COUNTER,
        ("destination",),
        "P4EStatsGet",
        {"txToHost": ("host",), "txToSwitch": ("switch",), "txToCpu": ("cpu",)},
        "Packets that the SmartNIC's egress pipeline has sent.",
    ),
    _metric(
        "qdp_nic_flow_misses",
        COUNTER,
        (),
        "P4EStatsGet",
        _one("flowMiss"),
        "Packets that met no flow in the SmartNIC.",
    ),
    _metric(
        "qdp_nic_redirects",
        COUNTER,
        ("reason",),
        "P4EStatsGet",
        {"connTrackRedir": ("connection_tracking",), "wrongReinject": ("wrong_reinject",)},
        "Packets that the SmartNIC has sent another way.",
    ),
    _metric(
        "qdp_nic_drops", COUNTER, (), "P4EStatsGet", _one("drop"), "Packets that the SmartNIC's egress has dropped."
    ),
    _metric(
        "qdp_nic_programming_latency_seconds",
        HISTOGRAM,
        (),
        "P4UKLatencyDump",
        dict(
            [(key, (str(bound / MICROSECONDS_A_SECOND),)) for bound, key in LATENCY_BUCKETS]
            + [("outOfBucket", ("+Inf",))]
        ),
        "How long the programming of a table of the SmartNIC took, where that is collected.",
        unit="seconds",
        scale=1 / MICROSECONDS_A_SECOND,
    ),
    # Ports, last: --max-series cuts here.
    _metric("qdp_port_info", GAUGE, PORT + ("client_type",), "", {}, "A port; always 1."),
    _metric(
        "qdp_port_packets",
        COUNTER,
        TRAFFIC,
        "GetPortStats",
        _by_direction_and_path("Pkts"),
        "Packets that a port has sent (tx) or received (rx), on the fast and on the slow path.",
    ),
    _metric(
        "qdp_port_bytes",
        COUNTER,
        TRAFFIC,
        "GetPortStats",
        _by_direction_and_path("Bytes"),
        "Bytes that a port has sent (tx) or received (rx), on the fast and on the slow path.",
        unit="bytes",
    ),
    _metric(
        "qdp_port_drops",
        COUNTER,
        TRAFFIC,
        "GetPortStats",
        _by_direction_and_path("Drops"),
        "Packets that were dropped at a port.",
    ),
    _metric(
        "qdp_port_errors",
        COUNTER,
        TRAFFIC,
        "GetPortStats",
        _by_direction_and_path("Errors"),
        "Packets of a port with errors.",
    ),
)

_BY_METHOD = {}
for _row in METRICS:
    _BY_METHOD.setdefault(_row.method, []).append(_row)
BY_NAME = {metric.name: metric for metric in METRICS}


def of_method(method):
    """The rows whose values a method gives, in order."""
    return _BY_METHOD[method]


def sample_name(metric):
    """The name of a family's samples."""
    return metric.name + "_total" if metric.type == COUNTER else metric.name
