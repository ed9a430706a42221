"""A host in a few lines: what it has, and how many of each."""

from typing import Any, Dict, Iterator, List, Sequence

COLUMNS = ["number", "alias", "MTU", "lcores", "ports", "uplinks", "MACs", "flows"]


def lines(summary: Dict[str, Any]) -> Iterator[str]:
    """The lines that show the numbers of EmbeddedHost.summary()."""
    switches = summary["switches"]
    yield "Switches" if switches else "No switches"
    if switches:
        # A switch that only the switch state library knows has nothing but its alias.
        yield from table(COLUMNS, [[switch.get(column, "-") for column in COLUMNS] for switch in switches])
    smartnic = summary.get("smartnic")
    yield "SmartNIC" if smartnic else "No SmartNIC"
    if smartnic:
        if "switch" in smartnic:
            yield "  behind the uplinks of switch {}".format(smartnic["switch"])
        yield counts(smartnic["ports"])
        yield counts(smartnic["tables"])
    yield "Elsewhere"
    yield counts(summary["elsewhere"])


def counts(named: Dict[str, int]) -> str:
    return "  " + ", ".join("{} {}".format(count, name) for name, count in named.items())


def table(headings: List[str], rows: Sequence[List[Any]]) -> Iterator[str]:
    """Lines with the texts to the left and the numbers to the right."""
    cells = [[str(cell) for cell in row] for row in [headings] + list(rows)]
    widths = [max(map(len, column)) for column in zip(*cells)]
    for row in cells:
        aligned = [
            cell.ljust(width) if heading == "alias" else cell.rjust(width)
            for heading, cell, width in zip(headings, row, widths)
        ]
        yield "  " + "  ".join(aligned).rstrip()
