"""Writing: what is there before, the call, and what is there after it."""

import sys

from ..errors import QdpError
from . import _table
from ._context import Context
from ._declare import Column
from ._output import REFUSED, UsageError, is_bold, is_terminal, terminal_size, write_json, write_lines
from ._rows import ABSENT, for_json, text_of

COLUMNS = (
    Column("what", priority=9),
    Column("before", priority=8),
    Column("after", priority=9),
)


class Step:
    """One call that changes something: what it does in words, and a function that looks at what it changes."""

    def __init__(self, what, method, *arguments, **settings):
        self.what = what
        self.method = method
        self.arguments = arguments
        self.look = settings.get("look")

    def row(self, before, after, done):
        changed = None if self.look is None or not done else before != after
        return {
            "method": self.method,
            "arguments": list(self.arguments),
            "what": self.what,
            "before": before,
            "after": after,
            "done": done,
            "changed": changed,
        }


def run_write(verb, options):
    """Runs a verb that writes, and gives the exit code."""
    context = Context(verb, options)
    steps = list(verb.plan(context))
    if not agreed(options, verb.danger, [step.what for step in steps]):
        return REFUSED
    rows = []
    try:
        for step in steps:
            before = step.look() if step.look else None
            if options.dry_run:
                rows.append(step.row(before, None, False))
                continue
            context.call(step.method, *step.arguments)
            rows.append(step.row(before, step.look() if step.look else None, True))
    except QdpError as error:
        context.refuse(error)
    show_changes(rows, options)
    return context.code


def show_changes(rows, options):
    if options.json:
        write_json([for_json(row) for row in rows], options.pretty)
        return
    shown = []
    for row in rows:
        before, after = differing(row["before"], row["after"])
        if not row["done"]:
            after = "(dry run)"
        elif row["changed"] is None:
            before, after = ABSENT, "done"
        shown.append({"what": row["what"], "before": before, "after": after})
    show_table(COLUMNS, shown)


def show_table(columns, rows):
    width = terminal_size().columns if is_terminal(sys.stdout) else None
    write_lines(_table.table(columns, rows, width, True, "", is_bold()))


def differing(before, after):
    """The two in words; of two dicts the keys that differ, or all when none does."""
    before, after = for_json(before), for_json(after)
    if isinstance(before, dict) and isinstance(after, dict):
        keys = [key for key in after if before.get(key) != after[key]] or list(after)
        before, after = ({key: each.get(key) for key in keys} for each in (before, after))
    return ABSENT if before is None else text_of(before), ABSENT if after is None else text_of(after)


def agreed(options, danger, what):
    """Whether to go on: nothing is asked about what is harmless, a dry run, or with --yes."""
    if not danger or options.dry_run or options.yes or not what:
        return True
    if not (is_terminal(sys.stdin) and is_terminal(sys.stderr)):
        raise UsageError("{}; add --yes to do it, or --dry-run to see what would be done".format(danger))
    for each in what:
        sys.stderr.write("  {}\n".format(text_of(each)))
    sys.stderr.write("{}. Go on? [y/N] ".format(danger[:1].upper() + danger[1:]))
    sys.stderr.flush()
    if sys.stdin.readline().strip().lower() in ("y", "yes"):
        return True
    sys.stderr.write("qdp: nothing was changed\n")
    return False
