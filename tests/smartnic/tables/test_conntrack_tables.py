"""The pairs of tables of flow counters and of connection tracking."""

import struct

from observe import Outcome, refused
from smartnic.tables.requests import read_at


def check_pair(host, qdp, method, tables, bound, entry_bytes):
    for index in (0, bound - 1):
        for selector, table in [(0, tables[0]), (1, tables[1]), (7, tables[1]), (-1, tables[1]), (1 << 16, tables[1])]:
            host.script("Qdp_P4_Cmd")
            assert qdp.call(method, index, selector).calls == [read_at(table, index, entry_bytes)]
    for index in (bound, bound + 1, -1):
        for selector in (0, 1):
            assert qdp.call(method, index, selector) == refused()


class TestTableIPFixGet:
    def test_indexes_and_selectors(self, host, qdp):
        check_pair(host, qdp, "TableIPFixGet", (6, 7), 4194304, 24)

    def test_entry(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<QQB", 5, (1 << 64) - 2, 0x12) + b"\xff" * 7])
        expected = {"pkts": 5, "bytes": -2, "tcpFlags": 18}
        assert qdp.call("TableIPFixGet", 4194303, 1) == Outcome(expected, calls=[read_at(7, 4194303, 24)])


class TestTableCTStatsGet:
    def test_indexes_and_selectors(self, host, qdp):
        check_pair(host, qdp, "TableCTStatsGet", (4, 5), 4096, 64)

    def test_entry(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<8q", 1, 2, 3, 4, 5, 6, 7, -8)])
        expected = {
            "passBytes0": 1,
            "passPkts0": 2,
            "dropBytes0": 3,
            "dropPkts0": 4,
            "passBytes1": 5,
            "passPkts1": 6,
            "dropBytes1": 7,
            "dropPkts1": -8,
        }
        assert qdp.call("TableCTStatsGet", 4095, 1) == Outcome(expected, calls=[read_at(5, 4095, 64)])


class TestTableCTStateGet:
    def test_indexes_and_selectors(self, host, qdp):
        check_pair(host, qdp, "TableCTStateGet", (20, 21), 4194304, 24)

    def test_entry(self, host, qdp):
        entry = struct.pack("<IIHBBIIHBB", 0xFFFFFFFF, 2, 3, 0x54, 0x76, 8, 9, 10, 11, 0xFE)
        host.script("Qdp_P4_Cmd", outputs=[entry])
        expected = {
            "sloppy": 1,
            "srcSeqlo": 0xFFFFFFFF,
            "srcSeqhi": 2,
            "srcMaxWin": 3,
            "srcState": 4,
            "srcWscale": 5,
            "dstSeqlo": 8,
            "dstSeqhi": 9,
            "dstMaxWin": 10,
            "dstState": 6,
            "dstWscale": 7,
            "swState": 11,
            "ctLog": 0,
        }
        assert qdp.call("TableCTStateGet", 1, 7) == Outcome(expected, calls=[read_at(21, 1, 24)])
