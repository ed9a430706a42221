"""`qdp lcore`: the lcores that forward, and their flow caches."""

from ._context import lcores, place
from ._declare import ANY_SWITCH, Column, Object, Option, Read, number
from ._output import CommandError

AT_ONCE = 32  # as many lcores as an answer holds


def show(context):
    options = context.options
    known = set(context.ask("ListLCoreIDs", 0) or ())
    for switch in context.switches(options.switch):
        wanted = [each for each in lcores(switch) if options.lcore in (None, each)]
        known.difference_update(lcores(switch))
        offload = stats(context, "GetFPOStats", switch, wanted)
        for lcore, row in stats(context, "GetFlowStats", switch, wanted, 0).items():
            row = dict(place(switch), **row)
            for key, value in offload.get(lcore, {}).items():
                row.setdefault(key, value)
            yield row
    if options.switch is None:
        for lcore in sorted(known):  # forwards for no switch
            if options.lcore in (None, lcore):
                yield {"swID": None, "name": None, "lcoreID": lcore}
    if options.lcore is not None and not 0 <= options.lcore < 64:
        raise CommandError("there is no lcore {}; lcores are 0 to 63".format(options.lcore))


def stats(context, method, switch, wanted, *tail):
    """The counters of a switch's lcores, by lcore."""
    found = {}
    for i in range(0, len(wanted), AT_ONCE):
        for each in context.ask(method, switch["swID"], tuple(wanted[i : i + AT_ONCE]), *tail) or ():
            found[each["lcoreID"]] = each
    return found


def counter(name, key, priority, group=""):
    return Column(name, key, "count", priority, group)


OBJECT = Object(
    "lcore",
    "the lcores that forward packets",
    Read(
        "show",
        "the lcores of switches, and the counters of their flow caches",
        show,
        methods=["ListLCoreIDs", "GetFlowStats", "GetFPOStats"],
        selectors=[ANY_SWITCH],
        options=[Option("--lcore", metavar="N", type=number, help="this lcore only")],
        identity=["swID", "lcoreID"],
        narrow=True,
        columns=[
            Column("switch", "swID", "number", 8),
            Column("name", "name", "text", 2, "d", help="the switch's name"),
            Column("lcore", "lcoreID", "number", 9),
            Column("flows", "numFlows", "number", 8, help="flows held now"),
            counter("created", "numFlowsCreated", 5),
            counter("hits", "hits", 8),
            counter("misses", "miss", 7),
            counter("slowpath", "slowpath", 7),
            counter("offload-hits", "fpoHits", 6),
            counter("local-hits", "localHits", 3, "d"),
            counter("first-hits", "firstLookupHits", 3, "d"),
            counter("action-fails", "actionAllocFails", 4, "s"),
            counter("group-fails", "actionGroupAllocFails", 4, "s"),
            counter("key-fails", "keyInsertFailCount", 4, "s"),
            counter("ct-queued", "fpoCTHwPktQueued", 2, "s"),
            counter("ct-dropped", "fpoCTHwPktDrop", 3, "s"),
            counter("ct-to-hw", "fpoCTPktsInjectedToHW", 2, "s"),
            counter("ct-in-sw", "fpoCTPktsContinuedInSW", 2, "s"),
            counter("ct-failed", "fpoCTHwContextFailed", 3, "s"),
            counter("mark-mismatch", "fpoMarkMismatched", 2, "s"),
            counter("nic-mismatch", "fpoPnicMismatched", 2, "s"),
        ],
    ),
)
