"""`qdp switch`: the datapath's switches."""

from ..errors import QdpError
from ._declare import ANY_SWITCH, Column, Object, Read
from ._names import remember


def show(context):
    switches = [dict(switch) for switch in context.switches(context.options.switch)]
    add_aliases(context, switches)
    if context.options.switch is None:
        names = [switch[key] for key in ("swID", "alias", "name") for switch in switches]
        remember("switch", [str(name) for name in names if name is not None])
    for switch in switches:
        if context.options.statistics:
            switch.update(totals(context, switch))
        yield switch


def add_aliases(context, switches):
    """Switches have no alias where it cannot be told, and where the switch configuration cannot be read."""
    for switch in switches:
        switch["alias"] = None
    try:
        for switch in switches:
            switch["alias"] = context.source.aliases.alias_of(switch["name"])
    except QdpError as error:
        context.refuse(error)


def totals(context, switch):
    """The counters of a switch's ports, added up; what a port refuses is not counted."""
    sums = {}
    for port in context.ports(switch):
        counters = context.ask("GetPortStats", switch["swID"], port["portID"]) or {}
        for key, count in counters.items():
            sums[key] = (sums.get(key, 0) + count) % (1 << 64)
    return sums


OBJECT = Object(
    "switch",
    "the switches of the host",
    Read(
        "show",
        "the switches, with their capacity and lcores",
        show,
        methods=["ListSwitches"],
        selectors=[ANY_SWITCH],
        identity=["swID"],
        columns=[
            Column("switch", "swID", "number", 9),
            Column("name", "name", "text", 7, help="the name in the datapath"),
            Column("alias", "alias", "text", 8, help="the name that users give the switch"),
            Column("mtu", "mtu", "number", 4, unit="bytes"),
            Column("ports", "numPorts", "number", 7),
            Column("active", "numActivePorts", "number", 6, help="ports that are active"),
            Column("max-ports", "maxPorts", "number", 2, "d"),
            Column("lcores", "lcores", "lcores", 5, help="the lcores that forward for the switch"),
            Column("num-lcores", "numLcores", "number", 2, "d"),
            Column("tx-pkts", ["txPkts", "spTxPkts"], "count", 6, "s", help="packets that the ports sent"),
            Column("tx-bytes", ["txBytes", "spTxBytes"], "count", 3, "s"),
            Column("rx-pkts", ["rxPkts", "spRxPkts"], "count", 6, "s", help="packets that the ports received"),
            Column("rx-bytes", ["rxBytes", "spRxBytes"], "count", 3, "s"),
            Column("drops", ["txDrops", "spTxDrops", "rxDrops", "spRxDrops"], "count", 7, "s"),
        ],
    ),
)
