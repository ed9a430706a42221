"""`qdp slowpath`: why packets take the slow path or are dropped: the advanced statistics of switches."""

from ._context import place
from ._declare import ANY_SWITCH, SWITCH, Object, Option, Read, Write
from ._output import CommandError
from ._write import Step

OFF, ON, CLEAR = range(3)


def show(context):
    """A row for each switch that collects them. Reading turns no collection on."""
    for switch in context.switches(context.options.switch):
        enabled = context.ask("AdvStatsGetEnabled", switch["swID"])
        if enabled is None:
            continue
        if not enabled:
            if context.options.switch is not None:
                text = "switch {0} ({1}) collects no advanced statistics; `qdp slowpath on {0}` turns them on"
                context.refuse(CommandError(text.format(switch["swID"], switch["name"])))
            continue
        counters = context.ask("AdvStatsGetCounters", switch["swID"], 0, "")
        if counters is not None:
            wanted = counters if context.options.all else {key: n for key, n in counters.items() if n}
            yield dict(place(switch), **wanted)


def turn(what, mode):
    def plan(context):
        switch = context.switch(context.options.switch)

        def look():
            if mode == CLEAR:
                counters = context.call("AdvStatsGetCounters", switch["swID"], 0, "")
                return "{:,} packets counted".format(sum(counters.values()))
            return "on" if context.call("AdvStatsGetEnabled", switch["swID"]) else "off"

        text = "{} the advanced statistics of switch {} ({})".format(what, switch["swID"], switch["name"])
        yield Step(text, "AdvStatsSetEnabled", switch["swID"], mode, look=look)

    return plan


OBJECT = Object(
    "slowpath",
    "why packets leave the fast path",
    Read(
        "show",
        "the reasons that packets took the slow path or were dropped for, of switches that collect them",
        show,
        methods=["AdvStatsGetCounters"],
        selectors=[ANY_SWITCH],
        options=[Option("--all", action="store_true", help="counters of 0, too")],
        identity=["swID", "name"],
    ),
    Write("on", "collect the reasons", turn("turn on", ON), selectors=[SWITCH]),
    Write("off", "collect them no longer", turn("turn off", OFF), selectors=[SWITCH]),
    Write(
        "reset",
        "set the counters to zero",
        turn("clear", CLEAR),
        danger="the counters start at zero again",
        selectors=[SWITCH],
    ),
)
