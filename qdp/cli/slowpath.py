"""`qdp slowpath`: why packets take the slow path or are dropped: the advanced statistics of switches."""

from ._context import place
from ._declare import ANY_SWITCH, SWITCH, Object, Option, Read, Write
from ._output import CommandError
from ._write import Step

OFF, ON, CLEAR = range(3)


def show(context):
    """A row for each switch that collects them. Reading turns no collection on."""
    switches = context.switches(context.options.switch)
    states = [context.ask("AdvStatsGetEnabled", switch["swID"]) for switch in switches]
    for switch, enabled in zip(switches, states):
        counters = context.ask("AdvStatsGetCounters", switch["swID"], 0, "") if enabled else None
        if counters is not None:
            wanted = counters if context.options.all else {key: n for key, n in counters.items() if n}
            yield dict(place(switch), **wanted)
    if states == [False] and context.options.switch is not None:
        text = "switch {0} ({1}) collects no advanced statistics; `qdp slowpath on {0}` turns them on"
        context.refuse(CommandError(text.format(switches[0]["swID"], switches[0]["name"])))
    elif not any(states) and None not in states:
        context.note("no switch collects advanced statistics; `qdp slowpath on SWITCH` turns them on")


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
