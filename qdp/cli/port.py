"""`qdp port`: the ports of switches, their counters, configuration and queues."""

from ._context import place
from ._declare import ANY_PORT, ANY_SWITCH, PORT, SWITCH, Column, Object, Option, Read, Write, number
from ._names import remember
from ._write import Step

# Fast and slow path together, as a script wants them; -d tells the slow path's own.
COUNTERS = [
    ("tx-pkts", ["txPkts", "spTxPkts"], 8, "s"),
    ("tx-bytes", ["txBytes", "spTxBytes"], 6, "s"),
    ("tx-drops", ["txDrops", "spTxDrops"], 7, "s"),
    ("tx-errors", ["txErrors", "spTxErrors"], 4, "s"),
    ("rx-pkts", ["rxPkts", "spRxPkts"], 8, "s"),
    ("rx-bytes", ["rxBytes", "spRxBytes"], 6, "s"),
    ("rx-drops", ["rxDrops", "spRxDrops"], 7, "s"),
    ("rx-errors", ["rxErrors", "spRxErrors"], 4, "s"),
]
SELDOM = [
    ("tx-mcast", ["txMcastPkts", "spTxMcastPkts"], 3),
    ("tx-mcast-bytes", ["txMcastBytes", "spTxMcastBytes"], 1),
    ("tx-bcast", ["txBcastPkts", "spTxBcastPkts"], 3),
    ("tx-bcast-bytes", ["txBcastBytes", "spTxBcastBytes"], 1),
    ("rx-mcast", ["rxMcastPkts", "spRxMcastPkts"], 3),
    ("rx-mcast-bytes", ["rxMcastBytes", "spRxMcastBytes"], 1),
    ("rx-bcast", ["rxBcastPkts", "spRxBcastPkts"], 3),
    ("rx-bcast-bytes", ["rxBcastBytes", "spRxBcastBytes"], 1),
    ("sp-tx-pkts", ["spTxPkts"], 2),
    ("sp-rx-pkts", ["spRxPkts"], 2),
]
WHERE = [
    Column("switch", "swID", "number", 9),
    Column("name", "name", "text", 2, "d", help="the switch's name"),
    Column("port", "portID", "number", 9),
    Column("client", "clientType", "text", 5),
]


def counter_columns(group):
    return [Column(name, keys, "count", priority, group) for name, keys, priority, _ in COUNTERS]


def show(context):
    places = list(context.places())
    if context.options.port is None:
        remember("port", map(str, sorted({port["portID"] for _, port in places})))
    for switch, port in places:
        row = dict(place(switch), **port)
        if context.options.statistics:
            row.update(context.ask("GetPortStats", switch["swID"], port["portID"]) or {})
        yield row


def stats(context):
    for switch, port in context.places():
        counters = context.ask("GetPortStats", switch["swID"], port["portID"])
        if counters is not None:
            yield dict(place(switch, port), clientType=port["clientType"], **counters)


def conf(context):
    for switch, port in context.places():
        answer = context.ask("GetPortConf", switch["swID"], port["portID"])
        if answer is not None:
            yield dict(place(switch, port), **answer)


def queues(context):
    for switch, port in context.places():
        where = switch["swID"], port["portID"]
        row = place(switch, port)
        row.update({key: port[key] for key in ("clientType", "txQLM", "rxQLM")})
        row.update(context.ask("GetPortTxUplink", *where) or {})
        row.update(context.ask("GetPortNetQInfo", *where) or {})
        row["rssEngines"] = context.ask("ListRSSEngine", *where)
        yield row


def lcores_of(context, switch, port):
    """A look at the lcores that serve a port's queues."""

    def look():
        found = context.port(switch, port["portID"])
        return {"txQLM": found["txQLM"], "rxQLM": found["rxQLM"]}

    return look


def named(context):
    switch = context.switch(context.options.switch)
    return switch, context.port(switch, context.options.port)


def step(context, what, method, *values):
    switch, port = named(context)
    text = "{} port {} of switch {} ({})".format(what, port["portID"], switch["swID"], switch["name"])
    arguments = (switch["swID"], port["portID"]) + values
    return Step(text, method, *arguments, look=lcores_of(context, switch, port))


def migrate(context):
    options = context.options
    if options.filter is not None:
        switch, port = named(context)
        where = switch["swID"], port["portID"]
        text = "move the receive filter of port {} of switch {} ({})".format(where[1], where[0], switch["name"])
        arguments = where + (options.filter,)
        yield Step(text, "MigrateNetQFilter", *arguments, look=lambda: context.call("GetPortNetQInfo", *where))
    else:
        missing = [name for name in ("from_lcore", "to_lcore") if getattr(options, name) is None]
        if missing:
            from ._output import UsageError

            raise UsageError("give FROM and TO, the lcores, or --filter; see `qdp port migrate --help`")
        yield step(context, "move", "MigratePort", options.from_lcore, options.to_lcore, QUEUES[options.queues])


def unpin(context):
    yield step(context, "unpin", "UnpinPort", QUEUES[context.options.queues])


def reset(context):
    yield step(context, "reset", "ResetPort", context.options.value)


QUEUES = {"tx": 1, "rx": 2, "both": 3}
WHICH = Option("--queues", choices=sorted(QUEUES), default="both", help="which queues (default: both)")

OBJECT = Object(
    "port",
    "the ports of switches",
    Read(
        "show",
        "the ports of all switches, of one, or one port",
        show,
        methods=["ListPorts"],
        selectors=[ANY_SWITCH, ANY_PORT],
        identity=["swID", "portID"],
        columns=WHERE
        + [
            Column("mac", "hwAddr", "text", 7),
            Column("macs", "numMACs", "number", 3, help="addresses that the port has learned"),
            Column("tx-lcores", "txQLM", "text", 4, help="the lcore of each transmit queue"),
            Column("rx-lcores", "rxQLM", "text", 4, help="the lcore of each receive queue"),
            Column("tx-queues", "numTxQ", "number", 2, "d"),
            Column("rx-queues", "numRxQ", "number", 2, "d"),
            Column("qdp-port", "qdpPortID", "number", 1, "d", help="the datapath's own id of the port"),
        ]
        + counter_columns("s"),
    ),
    Read(
        "stats",
        "the counters of ports, of fast and slow path together",
        stats,
        methods=["GetPortStats"],
        selectors=[ANY_SWITCH, ANY_PORT],
        identity=["swID", "portID"],
        columns=WHERE
        + counter_columns("")
        + [Column(name, keys, "count", priority, "d") for name, keys, priority in SELDOM],
    ),
    Read(
        "conf",
        "the configuration of ports: filters, VLANs and features",
        conf,
        methods=["GetPortConf"],
        selectors=[ANY_SWITCH, ANY_PORT],
        identity=["swID", "name", "portID"],
        counts=False,
    ),
    Read(
        "queues",
        "the queues of ports: lcores, uplinks, receive filters and RSS engines",
        queues,
        methods=["GetPortTxUplink", "GetPortNetQInfo", "ListRSSEngine"],
        selectors=[ANY_SWITCH, ANY_PORT],
        identity=["swID", "name", "portID"],
        counts=False,
    ),
    Write(
        "migrate",
        "move a port's queues to another lcore, or its receive filter to another queue",
        migrate,
        methods=["MigratePort", "MigrateNetQFilter"],
        selectors=[SWITCH, PORT],
        options=[
            Option("from_lcore", metavar="FROM", nargs="?", type=number, help="the lcore that the queues leave"),
            Option("to_lcore", metavar="TO", nargs="?", type=number, help="the lcore that they move to"),
            WHICH,
            Option("--filter", metavar="QUEUE", type=number, help="move the receive filter to this queue instead"),
        ],
    ),
    Write(
        "unpin",
        "let the balancer place a port's queues again",
        unpin,
        methods=["UnpinPort"],
        selectors=[SWITCH, PORT],
        options=[WHICH],
    ),
    Write(
        "reset",
        "reset a port",
        reset,
        danger="a reset interrupts the port's traffic",
        methods=["ResetPort"],
        selectors=[SWITCH, PORT],
        options=[Option("--value", metavar="N", type=number, default=1, help="passed to the datapath (default: 1)")],
    ),
)
