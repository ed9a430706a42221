"""`qdp balancer`: how the thread load balancer has spread the load, and what it notes."""

from ._context import place
from ._declare import ANY_SWITCH, SWITCH, Column, Object, Option, Read, Run, Write, number
from ._output import write, write_json
from ._write import Step

EVERYTHING = (0, 16384, 0, 64)  # ports and contexts: the first one and their count


def show(context):
    """A row for each lcore of each switch. The balancer calls it a context and numbers it for each switch."""
    for switch in context.switches(context.options.switch):
        context.progress("switch {}".format(switch["swID"]))
        stats = context.ask("DumpLBStats", switch["swID"], *EVERYTHING)
        if stats is None:
            continue
        ports, uplinks, contexts = stats
        queues = [queue for port in ports for queue in port["vnicRxQ"] + port["vnicTxQ"]]
        queues += [queue for uplink in uplinks for queue in uplink["uplinkRx"]]
        for each in contexts:
            mine = [queue for queue in queues if queue["ctx ID"] == each["ctx ID"]]
            row = dict(place(switch), **each)
            row["queues"] = len(mine)
            row["count load"] = sum(queue["count load"] for queue in mine)
            yield row


def debug(context):
    """The text of the debug buffer, as it is."""
    switch = context.switch(context.options.switch)
    text = context.call("DumpLBDebugBuf", switch["swID"], context.options.flag)
    if context.options.json:
        write_json([dict(place(switch), text=text)], context.options.pretty)
    else:
        for line in text.splitlines():
            write("".join(each if each.isprintable() or each == "\t" else "?" for each in line) + "\n")
    return context.code


def flush(context):
    switch = context.switch(context.options.switch)

    def look():
        return "{:,} characters".format(len(context.call("DumpLBDebugBuf", switch["swID"], 0)))

    text = "empty the debug buffer of the balancer of switch {} ({})".format(switch["swID"], switch["name"])
    yield Step(text, "FlushLBDebugBuf", switch["swID"], look=look)


OBJECT = Object(
    "balancer",
    "the thread load balancer",
    Read(
        "show",
        "the load of each lcore of a switch",
        show,
        methods=["DumpLBStats"],
        selectors=[ANY_SWITCH],
        identity=["swID", "ctx ID"],
        columns=[
            Column("switch", "swID", "number", 8),
            Column("name", "name", "text", 2, "d", help="the switch's name"),
            Column("context", "ctx ID", "number", 9, help="the lcore, counted from the switch's first"),
            Column("queues", "queues", "number", 6),
            Column("load", "count load", "number", 7, help="count loads of the queues"),
            Column("cpu", "raw CPU", "number", 8, unit="percent"),
            Column("biased-cpu", "biased CPU", "number", 4, unit="percent"),
            Column("pkts", "pkts", "count", 6),
            Column("bytes", "bytes", "count", 5),
            Column("max-load", "max pb load", "number", 3),
            Column("world", "world ID", "number", 1, "d"),
        ],
    ),
    Run(
        "debug",
        "the text of the balancer's debug buffer",
        debug,
        reads_snapshots=True,
        methods=["DumpLBDebugBuf"],
        selectors=[SWITCH],
        options=[Option("--flag", metavar="N", type=number, default=0, help="passed to the datapath (default: 0)")],
    ),
    Write(
        "flush",
        "empty the balancer's debug buffer",
        flush,
        danger="what the balancer has noted is lost",
        methods=["FlushLBDebugBuf"],
        selectors=[SWITCH],
    ),
)
