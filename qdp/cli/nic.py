"""`qdp nic`: the SmartNIC: its pipeline, what it loses, and its LIFs, VLANs, output ports and physical functions."""

from ._context import NO_MORE, place
from ._declare import ANY_SWITCH, Column, Object, Option, Read, Write, number
from ._output import CommandError, UsageError
from ._write import Step

LIFS, PORTS, VLANS = 1024, 1024, 65535  # ends of the indexes at which a page may start
# What a counter's name says of losses. No patterns: they would cost the start of every command that loads this.
LOSSES = ("DropPkts", "Queue", "Desc", "CsumErr", "Malformed", "wrongReinject")


def lif_pages(context):
    return context.pages("LifPortList", "liflist", "nextIndex", LIFS)


def port_pages(context):
    return context.pages("PortList", "portlist", "nextIndex", PORTS)


def vlan_pages(context):
    return context.pages("VlanPortList", "vlanlist", "nextIndex", VLANS)


def show(context):
    level = context.ask("P4LogLevelGet")
    row = {"part": "application", "running": context.ask("P4AppGet"), "hostPFs": context.ask("HostPFGet")}
    row["logLevel"] = level and level["level"]
    yield row
    for part, method in (("ingress", "P4IStatsGet"), ("egress", "P4EStatsGet"), ("flow table", "FlowOpsStatsGet")):
        counters = context.ask(method)
        if counters is not None:
            yield dict(counters, part=part)


def places(context):
    """(place, counters) of every part of the SmartNIC that counts."""
    yield "ingress", context.ask("P4IStatsGet")
    yield "egress", context.ask("P4EStatsGet")
    for lif in lif_pages(context):
        yield "LIF {}".format(lif["lifID"]), context.ask("LifStatsGet", lif["lifID"])
    for port in port_pages(context):
        yield "port {}".format(port["dstPort"]), context.ask("PortStatsGet", port["dstPort"])


def drops(context):
    is_watched = context.options.watch is not None
    for where, counters in places(context):
        for counter, count in (counters or {}).items():
            if counter == "drop" or any(each in counter for each in LOSSES):
                if count or is_watched:
                    yield {"where": where, "counter": counter, "count": count}


def latency(context):
    answer = context.call("P4UKLatencyDump", context.options.selector)
    if not context.options.json and answer["totalSample"] == 0:
        text = "no sample was taken; `qdp setting set latency-histogram on` turns the collection on"
        context.refuse(CommandError(text))
    yield dict(answer, selector=context.options.selector)


def mux(context):
    for switch in context.switches(context.options.switch):
        mode = context.ask("GetSwitchMuxMode", switch["swID"])
        if mode is None:
            continue
        row = dict(place(switch), enabled=mode["enabled"])
        rows = {}
        if mode["enabled"]:
            for each in context.pages("ListSwitchMuxVLAN", "portlist", "nextFcPort", NO_MORE, switch["swID"]):
                rows[each["fcPortID"]] = dict(row, **each)
            for each in context.pages("ListSwitchShadowPorts", "portlist", "nextFcPort", NO_MORE, switch["swID"]):
                rows.setdefault(each["fcPortID"], dict(row)).update(each)
        for each in list(rows.values()) or [row]:
            yield each


def lif_show(context):
    for lif in lif_pages(context):
        if context.options.statistics:
            lif = dict(lif, **(context.ask("LifStatsGet", lif["lifID"]) or {}))
        yield lif


def port_show(context):
    for port in port_pages(context):
        if context.options.statistics:
            port = dict(port, **(context.ask("PortStatsGet", port["dstPort"]) or {}))
        yield port


def pf_show(context):
    for slot, lif in enumerate(context.call("HostPFGet")):
        yield {"slot": slot, "lifID": lif}


def present(pages, key, wanted):
    """A look at one entry of a list."""

    def look():
        return next((each for each in pages() if each[key] == wanted), None)

    return look


def lif_look(context):
    return present(lambda: lif_pages(context), "lifID", context.options.lif)


def lif_add(context):
    o = context.options
    values = o.source_port, o.rep_port, o.flow_key_type, o.lif_type, o.mux_pf, o.fwd_mode, o.status
    yield Step("create LIF {}".format(o.lif), "LifPortCreate", o.lif, *values, look=lif_look(context))


def kept(entry, what, **wanted):
    """The values of an entry with those that are wanted in their place; at least one is."""
    if entry is None:
        raise CommandError("there is no {}".format(what))
    if all(value is None for value in wanted.values()):
        names = ", ".join("--" + option.replace("_", "-") for option in OPTION_OF.values())
        raise UsageError("nothing is to be changed; give one of {}".format(names))
    return [entry[key] if value is None else value for key, value in wanted.items()]


OPTION_OF = {"flowKeyType": "flow_key_type", "isMuxPF": "mux_pf", "fwdMode": "fwd_mode"}


def lif_set(context):
    o, look = context.options, lif_look(context)
    wanted = {key: getattr(o, option) for key, option in OPTION_OF.items()}
    values = kept(look(), "LIF {}; `qdp nic lif` lists the LIFs".format(o.lif), **wanted)
    yield Step("change LIF {}".format(o.lif), "LifPortUpdate", o.lif, *values, look=look)


def vlan_look(context):
    return present(lambda: vlan_pages(context), "muxVLAN", context.options.vlan)


def vlan_add(context):
    o = context.options
    for lif in (o.pf_lif_0, o.pf_lif_1):
        if not 0 <= lif <= 255:
            raise UsageError("a PF LIF is 0 to 255 here, not {}: the SmartNIC gets its low 8 bits alone".format(lif))
    values = o.source_port, o.rep_port, o.flow_key_type, o.pf_lif_0, o.pf_lif_1, o.status
    yield Step("create mux VLAN {}".format(o.vlan), "VlanPortCreate", o.vlan, *values, look=vlan_look(context))


def vlan_set(context):
    o = context.options
    yield Step("change mux VLAN {}".format(o.vlan), "VlanPortUpdate", o.vlan, o.flow_key_type, look=vlan_look(context))


def port_look(context):
    return present(lambda: port_pages(context), "dstPort", context.options.port)


def port_set(context):
    o = context.options
    yield Step("change output port {}".format(o.port), "PortUpdate", o.port, o.default_vlan, look=port_look(context))


def port_del(context):
    port = context.options.port
    yield Step("delete output port {}".format(port), "PortDelete", port, look=port_look(context))


def pf_set(context):
    lifs = context.options.lif
    if len(lifs) > 4:
        raise UsageError("the host has four physical functions; {} LIFs were given".format(len(lifs)))
    values = (lifs + [0] * 4)[:4]
    text = "set the LIFs of the host's physical functions"
    yield Step(text, "HostPFSet", len(lifs), *values, look=lambda: context.call("HostPFGet"))


def value(name, default=None, **settings):
    """An option with a number; one without a default has to be given."""
    about = settings.pop("help", "the entry's {}".format(name.strip("-").replace("-", " ")))
    if default is None:
        settings.setdefault("required", True)
    else:
        about += " (default: {})".format(default)
    return Option(name, metavar="N", type=number, default=default, help=about, **settings)


LIF = Option("lif", metavar="LIF", type=number, help="a LIF, 0 to 1023")
VLAN = Option("vlan", metavar="VLAN", type=number, help="an internal VLAN, 0 to 4094")
PORT = Option("port", metavar="PORT", type=number, help="an output port, 0 to 1023")
CREATED = [value("--source-port"), value("--rep-port"), value("--flow-key-type", 0, help="0 L2, 1 L3, 2 L4")]
STATUS = value("--status", 0)
TRAFFIC = [
    Column("rx-pkts", ["rxUcastPkts", "rxMcastPkts", "rxBcastPkts"], "count", 6, "s"),
    Column("rx-drops", ["rxUcastDropPkts", "rxMcastDropPkts", "rxBcastDropPkts"], "count", 7, "s"),
    Column("tx-pkts", ["txUcastPkts", "txMcastPkts", "txBcastPkts"], "count", 6, "s"),
    Column("tx-drops", ["txUcastDropPkts", "txMcastDropPkts", "txBcastDropPkts"], "count", 7, "s"),
]

OBJECT = Object(
    "nic",
    "the SmartNIC",
    Read(
        "show",
        "the SmartNIC's application, and the counters of its pipeline and flow table",
        show,
        methods=["P4IStatsGet", "P4EStatsGet", "FlowOpsStatsGet"],
        identity=["part"],
        gauges=["logLevel", "entries"],
    ),
    Read(
        "drops",
        "what the SmartNIC has lost, and where",
        drops,
        methods=["LifStatsGet", "PortStatsGet"],
        identity=["where", "counter"],
        order="-count",
        columns=[
            Column("where", priority=9),
            Column("counter", priority=8),
            Column("count", "count", "count", 9),
        ],
    ),
    Read(
        "latency",
        "the latency histogram of table programming",
        latency,
        methods=["P4UKLatencyDump"],
        options=[value("--selector", 0, help="passed to the SmartNIC")],
        identity=["selector"],
        gauges=["minLatency", "maxLatency"],
    ),
    Read(
        "mux",
        "which ports of a mux switch stand behind which internal VLAN and physical function",
        mux,
        methods=["GetSwitchMuxMode", "ListSwitchMuxVLAN", "ListSwitchShadowPorts"],
        selectors=[ANY_SWITCH],
        identity=["swID", "fcPortID"],
        columns=[
            Column("switch", "swID", "number", 9),
            Column("name", "name", "text", 3),
            Column("mux", "enabled", "flag", 5),
            Column("port", "portID", "number", 8),
            Column("fc-port", "fcPortID", "number", 6),
            Column("vlan", "vlanID", "number", 7),
            Column("pf-port", "muxPFPortID", "number", 5),
            Column("pf-vlan", "muxVLANID", "number", 4),
        ],
    ),
    Read(
        "lif show",
        "the LIFs",
        lif_show,
        methods=["LifPortList"],
        identity=["lifID"],
        columns=[
            Column("lif", "lifID", "number", 9),
            Column("source-port", "srcPort", "number", 7),
            Column("rep-port", "repPort", "number", 6),
            Column("flow-key-type", "flowKeyType", "number", 4),
            Column("lif-type", "lifType", "number", 5),
            Column("mux-pf", "isMuxPF", "flag", 4),
            Column("fwd-mode", "fwdMode", "number", 4),
            Column("status", "status", "number", 3),
        ]
        + TRAFFIC,
    ),
    Write(
        "lif add",
        "create a LIF, or replace one",
        lif_add,
        methods=["LifPortCreate"],
        danger="a LIF of that number is replaced",
        selectors=[LIF],
        options=CREATED + [value("--lif-type"), value("--mux-pf", 0, help="0 or 1"), value("--fwd-mode", 0), STATUS],
    ),
    Write(
        "lif set",
        "change a LIF; what is not named stays as it is",
        lif_set,
        methods=["LifPortUpdate"],
        selectors=[LIF],
        options=[
            value("--flow-key-type", required=False, help="0 L2, 1 L3, 2 L4"),
            value("--mux-pf", required=False, help="0 or 1"),
            value("--fwd-mode", required=False),
        ],
    ),
    Read(
        "vlan show",
        "the ports behind internal VLANs",
        vlan_pages,
        methods=["VlanPortList"],
        identity=["muxVLAN"],
        columns=[
            Column("vlan", "muxVLAN", "number", 9),
            Column("source-port", "srcPort", "number", 7),
            Column("rep-port", "repPort", "number", 6),
            Column("pf-lif-0", "pfLif0", "number", 5),
            Column("pf-lif-1", "pfLif1", "number", 5),
            Column("flow-key-type", "flowKeyType", "number", 4),
            Column("status", "status", "number", 3),
        ],
    ),
    Write(
        "vlan add",
        "create the port of an internal VLAN, or replace one",
        vlan_add,
        methods=["VlanPortCreate"],
        danger="a port of that VLAN is replaced",
        selectors=[VLAN],
        options=CREATED + [value("--pf-lif-0", 0), value("--pf-lif-1", 0), STATUS],
    ),
    Write(
        "vlan set",
        "change the flow key type of an internal VLAN's port",
        vlan_set,
        methods=["VlanPortUpdate"],
        selectors=[VLAN],
        options=[value("--flow-key-type", help="0 L2, 1 L3, 2 L4")],
    ),
    Read(
        "port show",
        "the output ports",
        port_show,
        methods=["PortList"],
        identity=["dstPort"],
        columns=[
            Column("port", "dstPort", "number", 9),
            Column("lif", "lifID", "number", 8),
            Column("default-vlan", "defaultVLAN", "number", 6),
            Column("mux-vlan", "muxVLAN", "number", 5),
            Column("lif-type", "lifType", "number", 4),
            Column("status", "status", "number", 3),
            Column("tag", "tag", "number", 2),
        ]
        + TRAFFIC,
    ),
    Write(
        "port set",
        "change the default VLAN of an output port",
        port_set,
        methods=["PortUpdate"],
        selectors=[PORT],
        options=[value("--default-vlan", help="VLAN id, 0 to 4094")],
    ),
    Write(
        "port del",
        "delete an output port",
        port_del,
        methods=["PortDelete"],
        danger="traffic to the port is lost",
        selectors=[PORT],
    ),
    Read(
        "pf show",
        "the LIFs of the host's physical functions",
        pf_show,
        identity=["slot"],
        columns=[Column("slot", "slot", "number", 9), Column("lif", "lifID", "number", 9)],
    ),
    Write(
        "pf set",
        "set the LIFs of the host's physical functions",
        pf_set,
        danger="a physical function that is left out loses its traffic",
        selectors=[Option("lif", metavar="LIF", type=number, nargs="*", help="a LIF, 0 to 1023; at most four")],
    ),
)
