"""How the examples show what they read: aligned tables, and bars."""

import signal


def end_with_the_reader():
    """From here on, a pager that is closed before the end ends the script without a word."""
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)


def is_number(text):
    return text.replace(",", "").lstrip("-").isdigit()


def table(headings, rows, indent="  ", to_the_right=None):
    """Prints aligned lines. The headings to the right are given, or are those above nothing but numbers."""
    rows = [[str(cell) for cell in row] for row in rows]
    columns = list(zip(headings, *rows))
    widths = [max(map(len, column)) for column in columns]
    if to_the_right is None:
        to_the_right = [heading for heading, *cells in columns if all(map(is_number, cells))]
    for row in [headings] + rows:
        placed = [
            cell.rjust(width) if heading in to_the_right else cell.ljust(width)
            for heading, cell, width in zip(headings, row, widths)
        ]
        print((indent + "  ".join(placed)).rstrip())


def bars(counts, width, indent="  "):
    """Prints a bar for each (label, count), of which the longest ends at the width. Only a count of 0 has no bar."""
    most = max(count for _, count in counts)
    labels = max(len(label) for label, _ in counts)
    digits = max(len(f"{count:,}") for _, count in counts)
    room = max(width - len(indent) - labels - digits - 4, 10)
    for label, count in counts:
        length = -(-count * room // most) if count > 0 else 0  # rounded up
        print(f"{indent}{label:<{labels}}  {count:>{digits},}  {'#' * length}".rstrip())
