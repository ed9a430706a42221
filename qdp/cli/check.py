"""`qdp check`: the conditions of the alert rules, on this host."""

import time

from ._declare import Column, Object, Option, Read, seconds
from ._output import FOUND, complain


def readings(context):
    """Two readings of the host, or those of a snapshot."""
    from ..exporter import values

    snapshot = context.options.snapshot
    if snapshot is None:
        before = values.read()
        for left in range(int(context.options.interval), 0, -1):
            context.progress("comparing two readings: {} s".format(left))
            time.sleep(1)
        time.sleep(context.options.interval % 1)
        return before, values.read()
    if snapshot.readings < 2:
        complain("qdp: the snapshot holds one reading: what is told by rates is not checked; `qdp bundle` writes two")
    found = []
    for reading in (1, snapshot.readings):
        snapshot.answer(reading)
        samples = values.read()
        samples.time = snapshot.clocks[reading]
        found.append(samples)
    return found


def check(context):
    from ..exporter.conditions import CONDITIONS, holding

    before, after = readings(context)
    for condition in CONDITIONS:
        for labels in holding(condition, before, after):
            context.code = FOUND
            summary = condition.summary
            for label, value in labels.items():
                summary = summary.replace("{{%s}}" % label, value)
            yield {
                "condition": condition.alert,
                "severity": condition.severity,
                "labels": labels,
                "summary": summary,
                "meaning": condition.meaning,
                "action": condition.action,
            }


OBJECT = Object(
    "check",
    "whether this host needs somebody",
    Read(
        "show",
        "the conditions of the alert rules that hold on this host, and what to do",
        check,
        options=[
            Option("--interval", metavar="TIME", type=seconds, default=5.0, help="between two readings (default: 5s)")
        ],
        columns=[
            Column("severity", priority=7),
            Column("condition", priority=6),
            Column("summary", priority=9),
            Column("meaning", priority=1, group="d"),
            Column("action", priority=2, group="d"),
        ],
        identity=["condition", "labels"],
        counts=False,
    ),
)
