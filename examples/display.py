"""How the examples show what they read: lines that fit the terminal, aligned tables, and bars."""

import shutil
import sys
from typing import Container, List, Optional, Sequence, Tuple


CUT = ">"  # ends a line that goes on beyond the terminal's edge


def say(line: str = "") -> None:
    """Prints a line. A terminal shows as much as fits into one line of it; a file or a pipe gets all."""
    width = shutil.get_terminal_size().columns if sys.stdout.isatty() else len(line)
    print(line if len(line) <= width else line[: width - 1] + CUT)


def is_number(text: str) -> bool:
    return text.translate(str.maketrans("", "", ",.")).lstrip("-").isdigit()


def table(
    headings: Sequence[str],
    rows: Sequence[Sequence[object]],
    indent: str = "  ",
    to_the_right: Optional[Container[str]] = None,
) -> None:
    """Prints aligned lines. The headings to the right are given, or are those above nothing but numbers."""
    texts = [[str(cell) for cell in row] for row in rows]
    columns = list(zip(headings, *texts))
    widths = [max(map(len, column)) for column in columns]
    if to_the_right is None:
        to_the_right = [heading for heading, *cells in columns if all(map(is_number, cells))]
    for row in [list(headings)] + texts:
        placed = [
            cell.rjust(width) if heading in to_the_right else cell.ljust(width)
            for heading, cell, width in zip(headings, row, widths)
        ]
        say((indent + "  ".join(placed)).rstrip())


def bars(counts: List[Tuple[str, int]], indent: str = "  ") -> None:
    """Prints a bar for each (label, count). The longest ends at the terminal's edge; only a count of 0 has no bar."""
    width = shutil.get_terminal_size().columns
    most = max((count for _, count in counts), default=0)
    labels = max((len(label) for label, _ in counts), default=0)
    digits = len(f"{most:,}")
    room = max(width - len(indent) - labels - digits - 4, 10)
    for label, count in counts:
        length = -(-count * room // most) if count > 0 else 0  # rounded up
        say(f"{indent}{label:<{labels}}  {count:>{digits},}  {'#' * length}".rstrip())
