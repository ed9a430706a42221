"""`qdp diff`: what differs between two snapshots, or between this host and one."""

import os

from ._declare import Column, Object, Option, Read
from ._output import FOUND, UsageError

NOW = "now"


def opened(name):
    """A snapshot; one that is written for the purpose where this host as it is now is wanted."""
    from ..snapshot import write
    from ..snapshot.read import Snapshot

    if name != NOW:
        return Snapshot(name)
    import tempfile

    with tempfile.TemporaryDirectory(prefix="qdp-diff-") as folder:
        path = os.path.join(folder, NOW)
        write.write(path)
        return Snapshot(path)  # which keeps it open


def read(context):
    from ..snapshot.compare import KINDS, differences

    options = context.options
    if options.b is None:
        b = opened(options.a)
        a, readings = b, (1, b.readings)
        if b.readings < 2:
            raise UsageError("{} holds one reading; name another snapshot, or 'now'".format(options.a))
    else:
        a, b, readings = opened(options.a), opened(options.b), (1, 1)
    words = dict(zip(("settings", "inventory", "counters"), KINDS))
    wanted = (options.only or ",".join(words)).split(",")
    if set(wanted) - set(words):
        raise UsageError("--only takes {}, with commas between".format(", ".join(words)))
    kinds = [words[word] for word in wanted]
    for each in differences(a, b, kinds, readings):
        context.code = FOUND
        yield each._asdict()


OBJECT = Object(
    "diff",
    "what differs between two snapshots",
    Read(
        "show",
        "settings and inventory that differ, and counters that have moved",
        read,
        selectors=[
            Option("a", metavar="A", help="the earlier snapshot, or 'now' for this host"),
            Option("b", metavar="B", nargs="?", help="the later one; without it, the two readings of the bundle A"),
        ],
        options=[Option("--only", metavar="KIND", help="settings, inventory or counters; several with commas between")],
        columns=[
            Column("kind", priority=6),
            Column("path", priority=9),
            Column("before", priority=8),
            Column("after", priority=8),
            Column("growth", "growth", "number", 7, help="of a counter; none where it was set to zero"),
            Column("rate", "rate", "rate", 7, unit="a second"),
        ],
        identity=["kind", "path"],
        counts=False,
    ),
)
