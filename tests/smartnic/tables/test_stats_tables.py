"""The counter tables."""

import struct

import pytest

from observe import Outcome, refused
from smartnic.tables.layouts import LIF_STATS, P4_EGRESS, P4_INGRESS, PORT_STATS
from smartnic.tables.requests import read_at

LAST = (1 << 64) - 1


def check_index_bound(host, qdp, method, table, layout):
    for index in (0, 1, 1023):
        host.script("Qdp_P4_Cmd", outputs=[b"\x01" * layout.size])
        assert qdp.call(method, index) == Outcome(
            layout.decoded(b"\x01" * layout.size), calls=[read_at(table, index, layout.size)]
        )
    for index in (1024, 1025, 0x10000, -1, 1 << 31):
        assert qdp.call(method, index) == refused()


class TestTableLifStatsGet:
    def test_index_below_1024(self, host, qdp):
        check_index_bound(host, qdp, "TableLifStatsGet", 0, LIF_STATS)

    def test_reserved_slots_never_appear(self, host, qdp):
        shown = {0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, 16, 17, 18, 19, 20, 21, 24, 25, 26, 27, 28, 29}
        shown |= {32, 33, 34, 35, 36, 40, 41, 42, 43}
        words = [word if word in shown else 0x7777 for word in range(48)]
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<48Q", *words)])
        assert list(qdp.result("TableLifStatsGet", 0).values()) == sorted(shown)
        assert len(shown) == 33

    def test_transmit_queues_have_no_counter_of_empty_ones(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<48Q", *range(48))])
        stats = qdp.result("TableLifStatsGet", 0)
        assert stats["rxQueueEmpty"] == 33 and "txQueueEmpty" not in stats
        assert [stats[key] for key in ("txQueueDisabled", "txQueueError")] == [40, 41]

    def test_counters_are_signed(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<3Q", LAST, 1 << 63, (1 << 63) - 1)])
        stats = qdp.result("TableLifStatsGet", 0)
        assert list(stats.values())[:3] == [-1, -(1 << 63), (1 << 63) - 1]


class TestTablePortStatsGet:
    def test_index_below_1024(self, host, qdp):
        check_index_bound(host, qdp, "TablePortStatsGet", 1, PORT_STATS)

    def test_the_first_keys_of_a_lif(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<32Q", *range(32))])
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<48Q", *range(48))])
        port = list(qdp.result("TablePortStatsGet", 0).items())
        assert len(port) == 24
        assert port == list(qdp.result("TableLifStatsGet", 0).items())[:24]


class TestTableP4IStatsGet:
    def test_reads_table_3(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<8Q", LAST, 2, 3, 4, 5, 6, 7, 8)])
        expected = {
            "rxFromHost": -1,
            "rxFromSwitch": 2,
            "rxFromCpu": 3,
            "rxUserCsumErr": 4,
            "rxSubstrateCsumErr": 5,
            "rxMalformed": 6,
        }
        assert qdp.call("TableP4IStatsGet") == Outcome(expected, calls=[read_at(3, 0, P4_INGRESS.size)])


class TestTableP4EStatsGet:
    @pytest.mark.parametrize("arguments", [(), (3,), (1023, "x")])
    def test_reads_index_0_of_table_2_whatever_the_arguments(self, host, qdp, arguments):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<8Q", 1, 2, 3, 4, 5, 6, LAST, 8)])
        expected = {
            "txToHost": 1,
            "txToSwitch": 2,
            "txToCpu": 3,
            "flowMiss": 4,
            "connTrackRedir": 5,
            "wrongReinject": 6,
            "drop": -1,
        }
        assert qdp.call("TableP4EStatsGet", *arguments) == Outcome(expected, calls=[read_at(2, 0, P4_EGRESS.size)])
