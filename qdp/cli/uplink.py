"""`qdp uplink`: the ports that lead out of the host, their device's counters and what it offloads."""

from ._context import place
from ._declare import ANY_PORT, ANY_SWITCH, Column, Object, Option, Read, number

WHERE = [
    Column("switch", "swID", "number", 9),
    Column("name", "name", "text", 2, "d", help="the switch's name"),
    Column("port", "portID", "number", 9),
]
DEVICE = [
    ("rx-pkts", "rxPkts", 8),
    ("rx-bytes", "rxBytes", 6),
    ("rx-drops", "rxDrops", 7),
    ("rx-errors", "rxErrors", 5),
    ("tx-pkts", "txPkts", 8),
    ("tx-bytes", "txBytes", 6),
    ("tx-drops", "txDrops", 7),
    ("tx-errors", "txErrors", 5),
]
SELDOM = (
    "rxMulticastPkts rxBroadcastPkts txMulticastPkts txBroadcastPkts collisions rxLengthErrors rxOverflowErrors "
    "rxCRCErrors rxFrameAlignErrors rxFifoErrors rxMissErrors txAbortedErrors txCarrierErrors txFifoErrors "
    "txHeartbeatErrors txWindowErrors"
).split()
COUNTERS = [Column(name, key, "count", priority) for name, key, priority in DEVICE]
COUNTERS += [Column(key, key, "count", 1, "d") for key in SELDOM]


def uplinks(context):
    return context.places(is_uplink=True)


def show(context):
    for switch, port in uplinks(context):
        status = context.ask("GetFPOUplinkStatus", switch["swID"], port["portID"]) or {}
        row = dict(place(switch), **port)
        row.update(status)
        if context.options.statistics:
            row.update(counters_in(context.ask("GetUplinkStats", switch["swID"], port["portID"])))
        yield row


def counters_in(answer):
    """The device's counters, which come as a list of (name, counter)."""
    return dict((answer or {}).get("uplinkStats") or ())


def stats(context):
    for switch, port in uplinks(context):
        answer = context.ask("GetUplinkStats", switch["swID"], port["portID"])
        if answer is not None:
            yield dict(place(switch, port), privStats=answer["privStats"], **counters_in(answer))


DIRECTIONS = {"rx": 0, "tx": 1}


def queue(context):
    options = context.options
    for switch, port in uplinks(context):
        numbers = {"rx": port["numRxQ"], "tx": port["numTxQ"]}
        for direction in [options.direction] if options.direction else sorted(DIRECTIONS):
            known = range(numbers[direction])
            for each in known if options.queue is None else [options.queue]:
                where = switch["swID"], port["portID"], DIRECTIONS[direction], each
                context.progress("uplink {}, {} queue {}".format(port["portID"], direction, each))
                counters = context.ask("GetUplinkQueueStats", *where)
                if counters is not None:
                    yield dict(place(switch, port), direction=direction, queue=each, **dict(counters))


def offload(context):
    for switch, port in uplinks(context):
        where = switch["swID"], port["portID"]
        status, calls = context.ask("GetFPOUplinkStatus", *where), context.ask("GetFPOUplinkStats", *where)
        if status is not None or calls is not None:
            row = dict(place(switch, port), **(status or {}))
            row.update(calls or {})
            yield row


SELECTORS = [ANY_SWITCH, ANY_PORT]
OBJECT = Object(
    "uplink",
    "the ports that lead out of the host",
    Read(
        "show",
        "the uplinks, and how full the flow table of each one's device is",
        show,
        selectors=SELECTORS,
        identity=["swID", "portID"],
        columns=WHERE
        + [
            Column("mac", "hwAddr", "text", 6),
            Column("tx-queues", "numTxQ", "number", 4),
            Column("rx-queues", "numRxQ", "number", 4),
            Column("flows", "numFlowsOffloaded", "number", 8, help="flows that the device carries now"),
            Column("max-flows", "maxFlowsSupported", "number", 7),
            Column("models", "models", "text", 3, help="what the device can offload"),
        ]
        + [Column(name, key, "count", priority, "s") for name, key, priority in DEVICE],
    ),
    Read(
        "stats",
        "the counters of the uplinks' devices",
        stats,
        methods=["GetUplinkStats"],
        selectors=SELECTORS,
        identity=["swID", "portID"],
        columns=WHERE + COUNTERS + [Column("private", "privStats", "text", 0, "d", help="the device's own counters")],
    ),
    Read(
        "queue",
        "the counters of an uplink's queues",
        queue,
        methods=["GetUplinkQueueStats"],
        selectors=SELECTORS,
        options=[
            Option("--queue", metavar="N", type=number, help="this queue only"),
            Option("--direction", choices=sorted(DIRECTIONS), help="receive or transmit queues only"),
        ],
        identity=["swID", "portID", "direction", "queue"],
        columns=WHERE + [Column("direction", priority=9), Column("queue", "queue", "number", 9)] + COUNTERS,
    ),
    Read(
        "offload",
        "what the uplinks' devices offload, and the calls into it",
        offload,
        methods=["GetFPOUplinkStatus", "GetFPOUplinkStats"],
        selectors=SELECTORS,
        identity=["swID", "name", "portID"],
        gauges=[
            "numGroupSupported",
            "numPrioritySupported",
            "maxMarkActionBits",
            "maxFlowsSupported",
            "maxCountersSupported",
            "maxFlowKeyLengthInBits",
            "maxDecTTLActions",
            "numFlowsOffloaded",
            "numPendingFpoCallList",
        ],
    ),
)
