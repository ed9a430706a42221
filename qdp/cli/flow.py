"""`qdp flow`: the flow caches of lcores, the flows that carry most, and the way of one through the SmartNIC."""

from ._context import NO_MORE, lcores, place
from ._declare import ANY_SWITCH, SWITCH, Column, Object, Option, Read, Write, address, mac, natural, number
from ._output import CommandError, UsageError
from ._write import Step

# The fields of a flow's key text, in its fixed order.
KEY = "layer smac dmac vlan tag src dst proto vni sport dport".split()
NUMBERS = frozenset(("vlan", "tag", "proto", "vni", "sport", "dport"))


def filters(options):
    """The filter arguments of DumpFlowTable."""
    macs = [(1, each) if each else (0, "") for each in (options.smac, options.dmac)]
    addresses = [(each.version, str(each)) if each else (0, "") for each in (options.src, options.dst)]
    return tuple(value for pair in macs + addresses for value in pair) + (0, 0, 0, 0, 0)


def flows(context):
    """All flows of the lcores that are asked for, with the fields of their keys."""
    options = context.options
    tail = (0,) + filters(options)
    wanted = set(options.lcore or ())
    for switch in context.switches(options.switch):
        for lcore in lcores(switch):
            if options.lcore and lcore not in options.lcore:
                continue
            wanted.discard(lcore)
            title = "lcore {}".format(lcore)
            where = switch["swID"], lcore
            for flow in context.pages("DumpFlowTable", "list", "startIndex", NO_MORE, *where, tail=tail, title=title):
                row = dict(place(switch), lcoreID=lcore, **flow)
                row.update(fields(flow["key"]))
                yield row
    for lcore in sorted(wanted):
        context.refuse(CommandError("no switch forwards on lcore {}; `qdp lcore show` lists them".format(lcore)))


def fields(key):
    """The parts of a key's text; none where it has other parts than are known."""
    parts = key.split()
    if len(parts) != len(KEY):
        return {}
    return {name: int(text) if name in NUMBERS and text.isdigit() else text for name, text in zip(KEY, parts)}


def carried(row):
    return row["swBytes"] + row["hwBytes"]


def top(context):
    import heapq

    return heapq.nlargest(context.options.top, flows(context), key=carried)


PATH = (
    ("flow-info", "TableFlowInfoGet"),
    ("rewrite", "TableFlowRewriteGet"),
)


def trace(context):
    """A row for each entry of a hardware table on the flow's way, in the order of the way."""
    index = context.options.index
    if not 0 <= index < 1 << 22:
        raise UsageError("a flow's index is 0 to 4194303, not {}".format(index))
    info = context.call("TableFlowInfoGet", index)
    if not any(info.values()):
        text = "the SmartNIC has no flow {}; `qdp flow top` shows hwFlowIdx among the actions"
        raise CommandError(text.format(index))

    def entry(step, method, *arguments):
        answer = context.ask(method, *arguments)
        if answer is not None:
            yield {"step": step, "method": method, "arguments": list(arguments), "entry": answer}

    def edge(step, end, way, table):
        """What is alike on the way in and on the way out."""
        if info["is{}Uplink".format(end.capitalize())]:
            for row in entry(step, "TableUplinkMapGet"):
                yield row
        if info["ct{}Vld".format(way)]:
            for row in entry(step, "TableCTStateGet", info["ct{}Idx".format(way)], table):
                yield row
        if info["ipfix{}Vld".format(way)]:
            for row in entry(step, "TableIPFixGet", info["ipfix{}Idx".format(way)], table):
                yield row
        for session in range(8):  # a bit each
            if info[way.lower() + "Mirror"] >> session & 1:
                for row in entry(step, "TableMirrorGet", session, table):
                    yield row

    yield {"step": "in", "method": "TableFlowInfoGet", "arguments": [index], "entry": info}
    for row in edge("in", "src", "Ingress", 0):
        yield row
    for row in entry("rewrite", "TableFlowRewriteGet", index):
        yield row
    if info["encap"]:
        for row in entry("tunnel", "TableTunnelRewriteGet", info["encapIdx"]):
            yield row
    if not info["drop"]:
        for row in entry("out", "TableOutputGet", info["dstPort"]):
            yield row
        for row in edge("out", "dst", "Egress", 1):
            yield row


def clear(context):
    switch = context.switch(context.options.switch)

    def look():
        stats = context.call("GetFlowStats", switch["swID"], tuple(lcores(switch)), 0)
        return "{:,} flows".format(sum(each["numFlows"] for each in stats))

    text = "empty the flow cache of switch {} ({})".format(switch["swID"], switch["name"])
    yield Step(text, "ClearSwitchFlowTable", switch["swID"], look=look)


FILTERS = [
    Option("--lcore", metavar="N", type=number, action="append", help="this lcore only; may be given again"),
    Option("--src", metavar="ADDRESS", type=address, help="flows from this address only"),
    Option("--dst", metavar="ADDRESS", type=address, help="flows to this address only"),
    Option("--smac", metavar="MAC", type=mac, help="flows from this MAC address only"),
    Option("--dmac", metavar="MAC", type=mac, help="flows to this MAC address only"),
]
COLUMNS = [
    Column("switch", "swID", "number", 3, "d"),
    Column("lcore", "lcoreID", "number", 5),
    Column("bytes", ["swBytes", "hwBytes"], "count", 8, help="in software and in hardware"),
    Column("hits", ["swHits", "hwHits"], "count", 7, help="in software and in hardware"),
    Column("src", priority=9),
    Column("sport", "sport", "number", 8),
    Column("dst", priority=9),
    Column("dport", "dport", "number", 8),
    Column("proto", "proto", "number", 6),
    Column("vlan", "vlan", "number", 4),
    Column("vni", "vni", "number", 4),
    Column("smac", priority=3),
    Column("dmac", priority=3),
    Column("layer", priority=2),
    Column("tag", "tag", "number", 1, "d"),
    Column("hw-bytes", "hwBytes", "count", 2, "d"),
    Column("hw-hits", "hwHits", "count", 2, "d"),
    Column("actions", priority=1),
]
IDENTITY = ["swID", "lcoreID", "key"]

OBJECT = Object(
    "flow",
    "the flows that switches forward",
    Read(
        "show",
        "the flow caches of lcores",
        flows,
        methods=["DumpFlowTable"],
        selectors=[ANY_SWITCH],
        options=FILTERS,
        columns=COLUMNS,
        identity=IDENTITY,
    ),
    Read(
        "top",
        "the flows that have carried the most bytes",
        top,
        selectors=[ANY_SWITCH],
        options=[Option("--top", metavar="N", type=natural, default=10, help="so many flows (default: 10)")] + FILTERS,
        columns=COLUMNS,
        identity=IDENTITY,
        order="-bytes",
    ),
    Read(
        "trace",
        "the way of one flow through the SmartNIC's hardware tables",
        trace,
        selectors=[Option("index", metavar="INDEX", type=number, help="the flow's hwFlowIdx")],
        columns=[
            Column("step", priority=9),
            Column("method", priority=8),
            Column("arguments", priority=5),
            Column("entry", priority=6),
        ],
        identity=["step", "method", "arguments"],
    ),
    Write(
        "clear",
        "empty the flow cache of a switch",
        clear,
        danger="all packets take the slow path until their flows are cached again",
        methods=["ClearSwitchFlowTable"],
        selectors=[SWITCH],
    ),
)
