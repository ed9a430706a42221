"""Watching: growth in place of totals, null after a reset, a document a line, frames in order."""

import itertools
import json
import struct

import pytest

import _libqdp
from qdp.cli import _watch


class Clock:
    """The time module of the watch, on the embedded host's clock."""

    def __init__(self, host):
        self.host = host
        self.now = 0.0

    def monotonic(self):
        return self.now

    def sleep(self, seconds):
        self.now += seconds
        self.host.advance(seconds)

    def gmtime(self):
        return None

    def strftime(self, form, when=None):
        return "12:00:00"


@pytest.fixture
def watched(qdp_command, monkeypatch):
    monkeypatch.setattr(_watch, "time", Clock(qdp_command.host))
    return qdp_command


def documents(watched, *arguments):
    code, out, err = watched(*arguments, "-j")
    assert (code, err) == (0, "")
    return [json.loads(line) for line in out.splitlines()]


def test_rates_follow_the_counters(watched):
    before = _libqdp.GetPortStats(0, 3)
    (document,) = documents(watched, "port", "stats", "0", "3", "-w", "2", "--count", "1")
    after = _libqdp.GetPortStats(0, 3)
    assert document["seconds"] == 2 and document["time"] == "12:00:00"
    (row,) = document["rows"]
    assert after["rxPkts"] > before["rxPkts"]
    assert {key: row[key] for key in ("rxPkts", "spTxBytes")} == {
        key: (after[key] - before[key]) / 2 for key in ("rxPkts", "spTxBytes")
    }
    assert row["portID"] == 3


def counters(rx_packets):
    return struct.pack("<16Q", *[0] * 9, rx_packets, *[0] * 6)


@pytest.mark.parametrize(
    "before, after, options, grown",
    [
        (1000, 1060, [], 30.0),
        (1000, 1060, ["--delta"], 60),
        (2**64 - 10, 20, [], 15.0),  # wrapped
        (1000, 10, [], None),  # set back
        (1000, 10, ["--delta"], None),
    ],
)
def test_growth(watched, before, after, options, grown):
    for count in (before, after):
        watched.host.script("Qdp_Get_Port_Stats", outputs=[counters(count)])
    (document,) = documents(watched, "port", "stats", "1", "2", "-w", "2", "--count", "1", *options)
    assert document["rows"][0]["rxPkts"] == grown
    assert type(document["rows"][0]["rxPkts"]) is type(grown)


def test_low_half_of_a_counter_wraps_at_32_bits(watched):
    verb = __import__("qdp.cli.lcore", fromlist=["OBJECT"]).OBJECT.verbs["show"]
    old, new = ([{"swID": 0, "lcoreID": 1, "hits": hits}] for hits in (2**32 - 4, 6))
    rows = _watch.grown_rows(verb, old, new, 5, False)
    assert [row["hits"] for row in rows] == [2.0]


def test_each_frame_is_sorted_anew(watched):
    others = [0] * (len(_libqdp.ListPorts(1)) - 2)
    for counts in ((0, 0), (100000, 200000), (500000, 300000)):
        for count in [*counts, *others]:
            watched.host.script("Qdp_Get_Port_Stats", outputs=[counters(count)])
    found = documents(
        watched, *"port stats 1 --where client=UPLINK --sort -rx-pkts -w 1 --count 2".split()
    )
    assert [[(row["portID"], row["rxPkts"]) for row in document["rows"]] for document in found] == [
        [(1, 200000.0), (0, 100000.0)],
        [(0, 400000.0), (1, 100000.0)],
    ]


def test_row_that_is_new_has_no_rates(watched):
    verb = __import__("qdp.cli.port", fromlist=["OBJECT"]).OBJECT.verbs["stats"]
    rows = list(_watch.grown_rows(verb, [], [{"swID": 0, "portID": 1, "rxPkts": 5, "spRxPkts": 0}], 1, False))
    assert rows == [{"swID": 0, "portID": 1, "rxPkts": None, "spRxPkts": None}]


def test_tables_are_printed_one_below_the_other(watched):
    lines = watched.lines(*"uplink stats 1 0 --columns port,rx-pkts -w 1 --count 2".split())
    assert lines[0] == lines[3] == "port  rx-pkts/s"
    assert lines[2] == "" and len(lines) == 5


def test_without_a_number_of_frames_it_goes_on(watched, monkeypatch):
    seen = itertools.count()

    def write_json(*arguments):
        if next(seen) == 5:
            raise KeyboardInterrupt

    monkeypatch.setattr(_watch, "write_json", write_json)
    assert watched("switch", "-w", "1", "-j") == (130, "", "")
    assert next(seen) == 6
