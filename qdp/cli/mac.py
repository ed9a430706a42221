"""`qdp mac`: MAC addresses that ports have learned or were given, and who owns one."""

from ._context import place
from ._declare import ANY_PORT, ANY_SWITCH, PORT, SWITCH, Column, Object, Option, Read, Write, mac, number
from ._output import UsageError
from ._write import Step


def learned(context, switch, port=None):
    """The entries of a switch's table, or of a port's; an empty table where it is refused."""
    if port is None:
        answer = context.ask("ListSwitchMACTable", switch["swID"])
    else:
        answer = context.ask("ListPortMACTable", switch["swID"], port["portID"])
    return answer or {"MacLimit": None, "MacTableList": []}


def show(context):
    options = context.options
    for switch in context.switches(options.switch):
        ports = {port["qdpPortID"]: port for port in context.ports(switch)}
        chosen = None if options.port is None else context.port(switch, options.port)
        table = learned(context, switch, chosen)
        for entry in table["MacTableList"]:
            port = ports.get(entry["qdpPortID"])  # may have gone since
            row = dict(place(switch), portID=port["portID"] if port else None, **entry)
            row["MacLimit"] = table["MacLimit"]
            yield row


def find(context):
    """A row for each owner, in the order of the addresses that are asked for."""
    known = list(owners(context))
    for wanted in context.options.mac:
        found = [row for row in known if row["macAddr"] == wanted]
        if not found:
            from ._output import CommandError

            context.refuse(CommandError("no port owns {}; `qdp mac show` lists what was learned".format(wanted)))
        for row in found:
            yield row


def owners(context):
    """Every address of the host's switches, with who owns it."""
    for switch in context.switches():
        ports = context.ports(switch)
        by_id = {port["qdpPortID"]: port for port in ports}
        entries = [(port["hwAddr"], "port", None, port["qdpPortID"]) for port in ports]
        entries += [
            (each["macAddr"], "MAC table", each["vlanID"], each["qdpPortID"])
            for each in learned(context, switch)["MacTableList"]
        ]
        for address, source, vlan, qdp_port in entries:
            port = by_id.get(qdp_port)
            row = dict(place(switch), macAddr=address, knownFrom=source, vlanID=vlan, qdpPortID=qdp_port)
            row.update(portID=port and port["portID"], clientType=port and port["clientType"])
            yield row


def packed(text, vlan, switch):
    """The arguments of an entry: the address with its first byte lowest, and the switch in the VLAN's upper half."""
    address = int.from_bytes(bytes.fromhex(text.replace(":", "")), "little")
    return address, switch["swID"] << 16 | vlan


def change(verb, method):
    def plan(context):
        options = context.options
        if not 0 <= options.vlan <= 4095:
            raise UsageError("a VLAN is 0 to 4095, not {}".format(options.vlan))
        switch = context.switch(options.switch)
        port = context.port(switch, options.port)
        text = "{} {} in VLAN {} at port {} of switch {} ({})"
        text = text.format(verb, options.mac, options.vlan, port["portID"], switch["swID"], switch["name"])

        def look():
            entries = learned(context, switch, port)["MacTableList"]
            here = [each for each in entries if (each["macAddr"], each["vlanID"]) == (options.mac, options.vlan)]
            return "present" if here else "absent"

        yield Step(text, method, switch["swID"], port["portID"], *packed(options.mac, options.vlan, switch), look=look)

    return plan


def clear(context):
    options = context.options
    switch = context.switch(options.switch)
    port = None if options.port is None else context.port(switch, options.port)

    def look():
        return "{:,} entries".format(len(learned(context, switch, port)["MacTableList"]))

    where = "switch {} ({})".format(switch["swID"], switch["name"])
    if port is None:
        yield Step("clear the MAC table of " + where, "ClearSwitchMACTable", switch["swID"], look=look)
    else:
        text = "clear the MAC table of port {} of {}".format(port["portID"], where)
        yield Step(text, "ClearPortMACTable", switch["swID"], port["portID"], look=look)


MAC = Option("mac", metavar="MAC", type=mac, help="a MAC address, in any usual form")
VLAN = Option("--vlan", metavar="N", type=number, default=0, help="the entry's VLAN (default: 0)")

OBJECT = Object(
    "mac",
    "the MAC addresses behind ports",
    Read(
        "show",
        "the MAC table of switches, or of one port",
        show,
        methods=["ListSwitchMACTable", "ListPortMACTable"],
        selectors=[ANY_SWITCH, ANY_PORT],
        identity=["swID", "macAddr", "vlanID"],
        columns=[
            Column("switch", "swID", "number", 7),
            Column("name", "name", "text", 2, "d", help="the switch's name"),
            Column("mac", "macAddr", "text", 9),
            Column("vlan", "vlanID", "number", 6),
            Column("port", "portID", "number", 8),
            Column("qdp-port", "qdpPortID", "number", 2, "d", help="the datapath's own id of the port"),
            Column("generation", "macGenDiff", "number", 3, help="generations since the entry was seen"),
            Column("limit", "MacLimit", "number", 1, "d", help="most entries that the table takes"),
        ],
    ),
    Read(
        "find",
        "which port owns a MAC address; what an uplink owns is outside of this host",
        find,
        selectors=[Option("mac", metavar="MAC", type=mac, nargs="+", help="a MAC address, in any usual form")],
        identity=["swID", "macAddr", "vlanID"],
        columns=[
            Column("mac", "macAddr", "text", 9),
            Column("known-from", "knownFrom", "text", 4),
            Column("vlan", "vlanID", "number", 5),
            Column("switch", "swID", "number", 7),
            Column("name", "name", "text", 3),
            Column("port", "portID", "number", 8),
            Column("client", "clientType", "text", 6),
        ],
    ),
    Write(
        "add",
        "add a static MAC entry",
        change("add", "AddMACEntry"),
        methods=["AddMACEntry"],
        selectors=[SWITCH, PORT, MAC],
        options=[VLAN],
    ),
    Write(
        "del",
        "delete a static MAC entry",
        change("delete", "DelMACEntry"),
        danger="traffic to the address is flooded until it is learned again",
        methods=["DelMACEntry"],
        selectors=[SWITCH, PORT, MAC],
        options=[VLAN],
    ),
    Write(
        "clear",
        "forget the MAC entries of a switch, or of one port",
        clear,
        danger="traffic to forgotten addresses is flooded until they are learned again",
        methods=["ClearSwitchMACTable", "ClearPortMACTable"],
        selectors=[SWITCH, ANY_PORT],
    ),
)
