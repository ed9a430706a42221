"""Reading: rows are read, selected, sorted and shown, once or again and again."""

import sys

from . import _table
from ._context import Context
from ._output import clear_progress, is_bold, is_terminal, terminal_size, write_json, write_lines
from ._rows import HEX, SIGNED, condition, find_column, for_json, order_of
from ._declare import Column


def run_read(verb, options):
    """Runs a verb that reads, and gives the exit code."""
    context = Context(verb, options)
    if options.watch is not None:
        from ._watch import watch

        return watch(context)
    rows = read_rows(context)
    view = View(context, rows)
    rows = view.select(rows)
    if options.json:
        write_json([view.for_json(row) for row in rows], options.pretty)
    else:
        write_lines(view.lines(rows))
    return context.code


def read_rows(context):
    """The rows; where the reading fails on the way, those that could be read."""
    from ..errors import QdpError

    rows = []
    try:
        for row in context.verb.read(context):
            rows.append(row)
    except QdpError as error:
        if not rows:
            raise
        context.refuse(error)
    finally:
        clear_progress()
    return rows


def counters_of(verb, row):
    """The keys of a row that count."""
    if verb.columns:
        return {key for column in verb.columns if column.kind == "count" for key in column.keys if key in row}
    if not verb.counts(row):
        return set()
    others = set(verb.identity) | verb.gauges | SIGNED | set(HEX)
    return {key for key, value in row.items() if type(value) in (int, float) and key not in others}


class View:
    """How rows are shown: which columns, in which order."""

    def __init__(self, context, rows):
        self.verb = context.verb
        self.options = options = context.options
        self.known = self.verb.columns or generic_columns(self.verb, rows)
        self.named = None
        if options.columns is not None:
            self.named = [find_column(self.known, name.strip()) for name in options.columns.split(",")]
        self.conditions = [condition(text, self.known) for text in options.where]
        order = options.sort or self.verb.order
        self.order = order_of(order, self.known) if order else None

    def select(self, rows):
        """The rows that the conditions hold for, in order."""
        rows = [row for row in rows if all(holds(row) for holds in self.conditions)]
        if self.order:
            key, is_descending = self.order
            rows.sort(key=key, reverse=is_descending)
        limit = getattr(self.options, "top", None)
        return rows if limit is None else rows[:limit]

    def for_json(self, row):
        if self.named is not None:
            row = {key: row.get(key) for column in self.named for key in column.keys}
        return for_json(row)

    def lines(self, rows, suffix="", height=None):
        """The lines of a table, or of records."""
        options = self.options
        width = terminal_size().columns if is_terminal(sys.stdout) and self.named is None else None
        if not self.verb.columns and self.named is None:
            counters = set(key for row in rows for key in counters_of(self.verb, row))
            lines = _table.records(rows, self.verb.identity, counters, suffix, options.header, is_bold(), width)
        else:
            columns = self.named
            if columns is None:
                groups = ("", "d" if options.details else "", "s" if options.statistics else "")
                columns = [column for column in self.known if column.group in groups]
            lines = _table.table(columns, rows, width, options.header, suffix, is_bold())
        if height is not None and len(lines) > height:
            lines[height - 1 :] = ["... and {:,} more lines".format(len(lines) - height + 1)]
        return lines


def generic_columns(verb, rows):
    """The columns of rows that declare none: each key is one."""
    keys = {}
    for row in rows:
        for key in counters_of(verb, row):
            keys[key] = "count"
        for key, value in row.items():
            keys.setdefault(key, "mask" if key in HEX and isinstance(value, int) else "text")
    first = rows[0] if rows else {}
    order = list(first) + [key for key in keys if key not in first]
    return [Column(key, kind=keys[key]) for key in order if key in keys]
