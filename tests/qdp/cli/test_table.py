"""Tables and records as text: aligned, fitted to a terminal, and never cut in the middle of a number."""

import random

import pytest

from qdp.cli._declare import Column
from qdp.cli._table import records, table

COLUMNS = [
    Column("port", "portID", "number", 9),
    Column("client", "clientType", "text", 2),
    Column("pkts", ["a", "b"], "count", 8),
    Column("up", "up", "flag", 2),
]
ROWS = [
    {"portID": 3, "clientType": "VNIC", "a": 1000000, "b": 234567, "up": 1},
    {"portID": 12, "clientType": None, "a": None, "b": 1, "up": 0},
]


def test_columns_are_aligned_and_absent_values_are_dashes():
    assert table(COLUMNS, ROWS) == [
        "port  client       pkts  up",
        "   3  VNIC    1,234,567  yes",
        "  12  -               -  no",
    ]


def test_without_headings_numbers_are_for_programs():
    assert table(COLUMNS, ROWS, headings=False) == [" 3  VNIC  1234567  yes", "12  -           -  no"]


def test_empty_table_has_its_headings():
    assert table(COLUMNS, []) == ["port  client  pkts  up"]
    assert table(COLUMNS, [], headings=False) == []


@pytest.mark.parametrize(
    "width, head",
    [
        (28, "port  client       pkts  up"),
        (27, "port  client       pkts"),  # of two with the same priority the last one is dropped first
        (23, "port  client       pkts"),
        (22, "port       pkts"),
        (15, "port       pkts"),
        (14, "port"),
        (1, "port"),
    ],
)
def test_columns_are_dropped_by_priority(width, head):
    assert table(COLUMNS, ROWS, width=width)[0] == head


def test_rates_have_a_suffix_on_counters_alone():
    assert table(COLUMNS, ROWS, suffix="/s")[0] == "port  client     pkts/s  up"


def test_whatever_the_width_cells_are_whole():
    dice = random.Random(7)
    for _ in range(300):
        columns = [Column("c%d" % i, kind="count", priority=dice.randrange(10)) for i in range(dice.randrange(1, 9))]
        rows = [{c.name: dice.randrange(10 ** dice.randrange(1, 12)) for c in columns} for _ in range(3)]
        width = dice.randrange(1, 90)
        lines = table(columns, rows, width=width)
        shown = lines[0].split()
        for line, row in zip(lines[1:], rows):
            assert line.split() == ["{:,}".format(row[name]) for name in shown]
        assert len(shown) == 1 or max(map(len, lines)) <= width


def test_what_would_steer_a_terminal_is_escaped():
    assert table([Column("name")], [{"name": "a\033[2Jb\n"}]) == ["name", "a\\x1b[2Jb\\n"]


def test_records():
    rows = [
        {"swID": 0, "portID": 3, "rxPkts": 1234, "list": [1, 2], "filters": [{"a": 1}, {"a": 2}], "none": None},
        {"swID": 0, "portID": 4, "rxPkts": 5, "text": "one\ntwo"},
    ]
    assert records(rows, ["swID", "portID"], {"rxPkts"}) == [
        "swID 0  portID 3",
        "  rxPkts      1,234",
        "  list        1 2",
        "  filters[0]  a=1",
        "  filters[1]  a=2",
        "  none        -",
        "",
        "swID 0  portID 4",
        "  rxPkts  5",
        "  text    one",
        "          two",
    ]
    plain = records(rows[1:], ["swID", "portID"], {"rxPkts"}, headings=False)
    assert plain == ["rxPkts  5", "text    one", "        two"]
