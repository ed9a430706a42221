"""`qdp table`: the SmartNIC's hardware tables: entries by index and key, their memory, and the pipeline's cache."""

from ._declare import Column, Object, Option, Read, Write, address, mac, number
from ._output import CommandError, UsageError
from ._write import Step

ANSWER_BYTES = 2032  # of entries in one answer of P4HWTableDump

# Name -> (method, its arguments). A key is NAME, NAME!KIND, or NAME=DEFAULT; ?NAME is whether that address is IPv4, and
# an address is two arguments, its low and its high half.
TABLES = {
    "lif-stats": ("TableLifStatsGet", "lif"),
    "port-stats": ("TablePortStatsGet", "port"),
    "ingress-stats": ("TableP4IStatsGet", ""),
    "egress-stats": ("TableP4EStatsGet", ""),
    "input": ("TableInputGet", "lif"),
    "output": ("TableOutputGet", "port"),
    "mux-vlan": ("TableMuxVlanGet", "vlan selector=0"),
    "vlan-map": ("TableVlanMapGet", "vlan value=0"),
    "l2-segment": ("TableL2SegGet", "segment"),
    "mac": ("TableRegMACGet", "segment mac!mac"),
    "ipfix": ("TableIPFixGet", "index selector=0"),
    "ct-stats": ("TableCTStatsGet", "index selector=0"),
    "ct-state": ("TableCTStateGet", "index selector=0"),
    "mirror": ("TableMirrorGet", "session selector=0"),
    "mirror-l3": ("TableMirrorL3Get", "first second=0"),
    "tunnel-end": (
        "TableTunnelTerminateGet",
        "mac!mac value is_first=1 ?address vlan_1=4095 vlan_2=4095 address!address",
    ),
    "tunnel-sa": ("TableTunnelSAGet", "value ?address address!address"),
    "flow-key": (
        "TableFlowKeyGet",
        "vlan=0 smac!mac dmac!mac port=0 index=0 vni=0 protocol ?src src!address dst!address sport=0 dport=0",
    ),
    "flow-info": ("TableFlowInfoGet", "index"),
    "flow-rewrite": ("TableFlowRewriteGet", "index"),
    "tunnel": ("TableTunnelRewriteGet", "index"),
    "dscp": ("TableDSCPConfGet", ""),
    "uplinks": ("TableUplinkMapGet", ""),
    # The same and more by other ways than the channel of table entries.
    "ct-counters": ("CTStatsGet", "index"),
    "flow-counters": ("P4StatsFlowGet", "index"),
    "ct-context": ("P4CTContextQuery", "index"),
    "offload-context": ("FPOQueryContextMgr", "id_1 id_2=0 id_3=0"),
}
COUNTERS = frozenset(
    "lif-stats port-stats ingress-stats egress-stats ipfix ct-stats ct-counters flow-counters".split()
)


def keys_of(name):
    """(key, kind, default) of a table's keys."""
    found = []
    for token in TABLES[name][1].split():
        if not token.startswith("?"):
            key, _, default = token.partition("=")
            key, _, kind = key.partition("!")
            found.append((key, kind, int(default) if default else None))
    return found


def described(name):
    """The keys of a table, as one gives them."""
    return " ".join("[{}=N]".format(key) if default is not None else key + "=" + (kind or "N").upper()
                    for key, kind, default in keys_of(name)) or "no keys"  # fmt: skip


def numbers(text):
    """A number, or all of a range A-B."""
    first, dash, last = text.partition("-")
    if not (first and dash):
        return [number(text)]
    found = range(number(first), number(last) + 1)
    if not found:
        raise ValueError(text)
    return found


def parsed(name, texts):
    """The values of a table's keys, a range for each."""
    known = {key: (kind, default) for key, kind, default in keys_of(name)}
    values = {key: [default] for key, (_, default) in known.items() if default is not None}
    for text in texts:
        key, sign, written = text.partition("=")
        if not sign and len(known) and len(texts) == 1:
            key, written = next(iter(known)), text
        if key not in known:
            raise UsageError("table {} has no key {!r}; it takes {}".format(name, key, described(name)))
        kind = known[key][0]
        try:
            if kind == "mac":
                values[key] = [int(mac(written).replace(":", ""), 16)]
            else:
                values[key] = [address(written)] if kind == "address" else numbers(written)
        except ValueError:
            raise UsageError("{} is no {} for the key {}".format(repr(written), kind or "number", key))
    missing = [key for key in known if key not in values]
    if missing:
        raise UsageError("table {} takes {}; {} is missing".format(name, described(name), ", ".join(missing)))
    return values


def arguments_of(name, values):
    """The method's arguments for one value of each key."""
    for token in TABLES[name][1].split():
        key = token.lstrip("?").partition("=")[0]
        key, _, kind = key.partition("!")
        if token.startswith("?"):
            yield int(values[key].version == 4)
        elif kind == "address":
            for half in (int(values[key]) & (1 << 64) - 1, int(values[key]) >> 64):
                yield half - (1 << 64) if half >> 63 else half
        else:
            yield values[key]


def get(context):
    import itertools

    name = context.options.table.replace("_", "-")
    if name not in TABLES:
        raise UsageError("there is no table {!r}; there are {}".format(name, ", ".join(TABLES)))
    ranges = parsed(name, context.options.key)
    for combination in itertools.product(*ranges.values()):
        values = dict(zip(ranges, combination))
        context.progress("{} {}".format(name, " ".join(map(str, combination))))
        answer = context.ask(TABLES[name][0], *arguments_of(name, values))
        shown = {key: values[key] for key in values if len(ranges[key]) > 1 or isinstance(values[key], int)}
        entries = answer if isinstance(answer, list) else [answer]
        for entry in entries:
            if entry is not None:
                row = {"table": name, "key": {key: str(each) for key, each in shown.items()} or None}
                row.update(entry)
                yield row


def list_tables(context):
    return context.call("P4HWTableList")


def table_of(context, wanted):
    for table in list_tables(context):
        if table["tableId"] == wanted:
            return table
    raise CommandError("there is no table {}; `qdp table list` lists the tables".format(wanted))


def dump(context):
    options = context.options
    table = table_of(context, options.table)
    count = table["numEntries"] - options.first if options.entries is None else options.entries
    if options.first < 0 or count < 0 or options.first + count > table["numEntries"]:
        text = "table {} has the entries 0 to {}"
        raise CommandError(text.format(options.table, table["numEntries"] - 1))
    at_once = max(ANSWER_BYTES // max(table["entrySize"], 1), 1)
    for first in range(options.first, options.first + count, at_once):
        context.progress("table {}: entry {:,} of {:,}".format(options.table, first, table["numEntries"]))
        some = min(at_once, options.first + count - first)
        lines = context.ask("P4HWTableDump", options.table, first, some)
        if lines is None:
            return
        for line in lines:
            address, _, content = line.partition(": ")
            yield {"tableId": options.table, "pa": address, "bytes": content.strip()}


def invalidate(context):
    options = context.options
    table_of(context, options.table)
    where = options.table, options.first, options.entries
    text = "drop {2} entries of table {0} from entry {1} on out of the cache".format(*where)
    yield Step(text, "P4CacheInvalidate", *where)


TABLE = Option("table", metavar="TABLE", type=number, help="number of a table, as `qdp table list` shows it")

OBJECT = Object(
    "table",
    "the SmartNIC's hardware tables",
    Read(
        "list",
        "the tables in the SmartNIC's memory",
        list_tables,
        methods=["P4HWTableList"],
        identity=["tableId"],
        columns=[
            Column("table", "tableId", "number", 9),
            Column("address", "pa", "mask", 7, help="physical address"),
            Column("entries", "numEntries", "number", 8),
            Column("entry-size", "entrySize", "number", 6, unit="bytes"),
        ],
    ),
    Read(
        "dump",
        "the memory of a table, 16 bytes a line",
        dump,
        methods=["P4HWTableDump"],
        selectors=[TABLE],
        options=[
            Option("--first", metavar="N", type=number, default=0, help="the first entry (default: 0)"),
            Option("--entries", metavar="N", type=number, help="so many entries (default: all from the first on)"),
        ],
        identity=["tableId", "pa"],
        columns=[Column("address", "pa", "text", 9), Column("bytes", "bytes", "text", 8)],
    ),
    Read(
        "get",
        "entries of a table by index or key; A-B reads all of a range",
        get,
        methods=[method for method, _ in TABLES.values()],
        selectors=[
            Option(
                "table",
                metavar="NAME",
                completes=sorted(TABLES),
                help="; ".join("{}: {}".format(name, described(name)) for name in TABLES),
            ),
            Option("key", metavar="KEY=VALUE", nargs="*", help="the entry's index or key"),
        ],
        identity=["table", "key"],
        counts=lambda row: row["table"] in COUNTERS,
        gauges=["tcpFlags", "tcp_flags"],
    ),
    Write(
        "invalidate",
        "drop entries of a table out of the pipeline's cache",
        invalidate,
        danger="the pipeline reads the entries from memory again, which slows it down",
        methods=["P4CacheInvalidate"],
        selectors=[
            TABLE,
            Option("first", metavar="FIRST", type=number, help="the first entry"),
            Option("entries", metavar="ENTRIES", type=number, help="so many entries"),
        ],
    ),
)
