"""Tables and records as text, fitted to a terminal's width."""

from ._rows import WRITTEN, cells, counted, text_of

GAP = 2


def widths_of(columns, lines):
    return [max(map(len, texts)) for texts in zip([column.name for column in columns], *lines)]


def fitting(columns, widths, width):
    """The places of the columns that fit; those of the lowest priority are dropped first, of equals the last one."""
    kept = list(range(len(columns)))
    while len(kept) > 1 and sum(widths[i] + GAP for i in kept) - GAP > width:
        kept.remove(min(reversed(kept), key=lambda i: columns[i].priority))
    return kept


def table(columns, rows, width=None, headings=True, suffix="", bold=False):
    """The lines of a table. `width` is that of a terminal; `suffix` stands behind the headings of counters. Without
    headings, numbers have no separators, since a program reads them."""
    texts = [cells(rows, column) for column in columns]
    for i, column in enumerate(columns):
        if headings:
            texts[i].insert(0, column.name + (suffix if column.kind == "count" else ""))
        elif column.kind == "count":
            texts[i] = [text.replace(",", "") for text in texts[i]]
    if not (rows or headings):
        return []
    widths = [max(map(len, each)) for each in texts]
    kept = range(len(columns)) if width is None else fitting(columns, widths, width)
    padded = []
    for i in kept:
        pad = str.rjust if WRITTEN[columns[i].kind][1] else str.ljust
        padded.append([pad(text, widths[i]) for text in texts[i]])
    shown = [(" " * GAP).join(line).rstrip() for line in zip(*padded)]
    shown = wrapped(shown, width, GAP)
    if headings and bold:
        shown[0] = "\033[1m{}\033[0m".format(shown[0])
    return shown


def wrapped(lines, width, indent):
    """The lines, those that are too long for a terminal of that width broken between words."""
    if width is None or all(len(line) <= width for line in lines):
        return lines
    import textwrap

    breaker = textwrap.TextWrapper(
        width, subsequent_indent=" " * indent, break_long_words=False, break_on_hyphens=False
    )
    return [part for line in lines for part in (breaker.wrap(line) if len(line) > width else [line])]


def records(rows, identity, counters, suffix="", headings=True, bold=False, width=None):
    """The lines of rows that have no columns: what names a row, then a line for each key and value."""
    shown = []
    for row in rows:
        if headings:
            title = "  ".join("{} {}".format(key, text_of(row[key])) for key in identity if row.get(key) is not None)
            shown += [""] * bool(shown)
            if title:
                shown.append("\033[1m{}\033[0m".format(title) if bold else title)
        pairs = list(flat(row, identity, counters, headings, suffix))
        names = max([len(key) for key, _, _ in pairs] or [0])
        numbers = max([len(text) for _, text, is_number in pairs if is_number] or [0])
        indent = " " * GAP if headings else ""
        for key, text, is_number in pairs:
            text = text.rjust(numbers) if is_number else text
            line = "{}{}{}{}".format(indent, key.ljust(names), " " * GAP, text).rstrip()
            shown += wrapped([line], width, len(indent) + names + GAP if width and names * 2 < width else 2 * GAP)
    return shown


def flat(row, identity, counters, separators, suffix):
    """(key, text, whether a counter) of a row; dicts inside lists have a line each."""
    for key, value in row.items():
        if key in identity:
            continue
        if isinstance(value, list) and value and isinstance(value[0], dict):
            for i, each in enumerate(value):
                yield "{}[{}]".format(key, i), text_of(each), False
        elif isinstance(value, str) and "\n" in value:
            for i, line in enumerate(value.splitlines()):
                yield key if i == 0 else "", text_of(line), False
        elif value is None:
            yield key, "-", key in counters
        elif key in counters:
            yield key + suffix, counted(value) if separators else str(value), True
        else:
            yield key, hex(value) if is_mask(key, value) else text_of(value), False


def is_mask(key, value):
    from ._rows import HEX

    return key in HEX and isinstance(value, int) and not isinstance(value, bool)
