"""The flow table library's counters of operations."""

import struct

from observe import Outcome
from smartnic.tables.requests import read_at


class TestFlowOpsStatsGet:
    def test_words_17_and_18_stand_in_the_places_of_words_0_and_4(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[struct.pack("<37Q", *range(100, 137))])
        expected = {
            "insert": 117,
            "duplicateInsert": 101,
            "failedInsert": 102,
            "recircFailedInsert": 103,
            "remove": 118,
            "removeNotFound": 105,
            "failedRemove": 106,
            "update": 107,
            "failedUpdate": 108,
            "get": 109,
            "failedGet": 110,
            "release": 113,
            "failedRelease": 114,
            "read": 119,
            "write": 120,
            "entries": 115,
            "collisions": 116,
            "insertLevel": [121, 122, 123, 124, 125, 126, 127, 128],
            "removeLevel": [129, 130, 131, 132, 133, 134, 135, 136],
        }
        assert len(expected) == 19
        assert qdp.call("FlowOpsStatsGet") == Outcome(expected, calls=[read_at(27, 0, 296)])

    def test_counters_are_signed(self, host, qdp):
        host.script("Qdp_P4_Cmd", outputs=[b"\xff" * 288 + struct.pack("<Q", 1 << 63)])
        stats = qdp.result("FlowOpsStatsGet")
        assert list(stats.values())[:17] == [-1] * 17
        assert stats["insertLevel"] == [-1] * 8
        assert stats["removeLevel"] == [-1] * 7 + [-(1 << 63)]
