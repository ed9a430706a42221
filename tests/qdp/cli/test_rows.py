"""Rows: which values are made plain, how they are written, selected and sorted."""

import pytest

from qdp.cli._declare import Column
from qdp.cli._rows import UnknownColumn, condition, for_json, order_of, plain, ranges

COLUMNS = [
    Column("port", "portID", "number"),
    Column("client", "clientType"),
    Column("drops", ["rxDrops", "txDrops"], "count"),
    Column("lcores", "lcores", "lcores"),
]
ROWS = [
    {"portID": 0, "clientType": "UPLINK", "rxDrops": 5, "txDrops": 1, "lcores": 0b1011},
    {"portID": 10, "clientType": "VNIC", "rxDrops": 0, "txDrops": 0, "lcores": 0},
    {"portID": 9, "clientType": "VNIC.PT", "rxDrops": None, "txDrops": 3, "lcores": 1 << 63},
]


def test_counters_are_unsigned_and_signed_keys_are_not():
    answer = {"rxPkts": -1, "fid": -1, "isValid": -1, "list": [{"bytes": -(2**63)}], "name": "x", "pair": ("a", -2)}
    assert plain(answer) == {
        "rxPkts": 18446744073709551615,
        "fid": -1,
        "isValid": -1,
        "list": [{"bytes": 9223372036854775808}],
        "name": "x",
        "pair": ["a", 18446744073709551614],
    }


def test_masks_addresses_and_cookies_are_hexadecimal_in_json():
    row = {"lcores": -1, "pa": 2**64 - 4096, "flowCookie": 255, "mem affinity mask": 3, "entry": {"pa": 16}}
    assert for_json(plain(dict(row, mtu=9000))) == {
        "lcores": "0xffffffffffffffff",
        "pa": "0xfffffffffffff000",
        "flowCookie": "0xff",
        "mem affinity mask": "0x3",
        "entry": {"pa": "0x10"},
        "mtu": 9000,
    }


@pytest.mark.parametrize(
    "numbers, text", [([], "-"), ([3], "3"), ([0, 1, 2, 3, 8], "0-3 8"), ([0, 2, 4], "0 2 4"), ([62, 63], "62-63")]
)
def test_ranges(numbers, text):
    assert ranges(numbers) == text


def ports(text):
    return [row["portID"] for row in ROWS if condition(text, COLUMNS)(row)]


@pytest.mark.parametrize(
    "text, found",
    [
        ("port=10", [10]),
        ("portID=10", [10]),
        ("PORT=0xa", [10]),
        ("port!=10", [0, 9]),
        ("port>9", [10]),
        ("port>=9", [10, 9]),
        ("port<9", [0]),
        ("port<=9", [0, 9]),
        ("client=vnic", [10]),
        ("client~^vnic", [10, 9]),
        ("client~C.P", [9]),
        ("drops=6", [0]),
        ("drops=-", [9]),
        ("drops!=6", [10, 9]),
        ("drops>1", [0]),
        ("lcores=0-1 3", [0]),
        ("lcores=63", [9]),
        ("client>UPLINK", [10, 9]),
    ],
)
def test_condition(text, found):
    assert ports(text) == found


@pytest.mark.parametrize(
    "text, message",
    [
        ("nosuch=1", "there is no column 'nosuch'; there are port, client, drops, lcores"),
        ("port", "'port' is no condition; write COLUMN=VALUE, or one of != > < >= <= ~ for ="),
        ("client~(", "'(' is no pattern: missing ), unterminated subpattern at position 0"),
    ],
)
def test_wrong_condition(text, message):
    with pytest.raises(UnknownColumn) as failure:
        condition(text, COLUMNS)
    assert str(failure.value) == message


@pytest.mark.parametrize(
    "text, order",
    [
        ("port", [0, 9, 10]),
        ("-port", [10, 9, 0]),
        ("client", [0, 10, 9]),
        ("drops", [9, 10, 0]),
        ("-drops", [0, 10, 9]),
    ],
)
def test_order(text, order):
    """Numbers as numbers; what is missing is below everything."""
    key, is_descending = order_of(text, COLUMNS)
    assert [row["portID"] for row in sorted(ROWS, key=key, reverse=is_descending)] == order
