"""A port's counters."""

import struct

import pytest

from observe import Call, Capacity, Outcome

FAST = Call("Qdp_Get_Port_Stats", [3, 7, Capacity(128)])
SLOW = Call("Qdp_Get_Port_Stats_Slowpath", [3, 7, Capacity(128)])

# The keys in dict order, and the place of each counter in the record.
FAST_KEYS = {
    "txPkts": 1,
    "txBytes": 0,
    "txMcastPkts": 3,
    "txMcastBytes": 2,
    "txBcastPkts": 5,
    "txBcastBytes": 4,
    "txDrops": 6,
    "txErrors": 7,
    "rxPkts": 9,
    "rxBytes": 8,
    "rxMcastPkts": 11,
    "rxMcastBytes": 10,
    "rxBcastPkts": 13,
    "rxBcastBytes": 12,
    "rxDrops": 14,
    "rxErrors": 15,
}
SLOW_KEYS = {"sp" + key[0].upper() + key[1:]: index for key, index in FAST_KEYS.items()}


def record(counters):
    return struct.pack("<16Q", *counters)


class TestGetPortStats:
    def test_fast_path_then_slow_path(self, host, qdp):
        fast = [1000 + i for i in range(16)]
        slow = [2000 + i for i in range(16)]
        host.script("Qdp_Get_Port_Stats", outputs=[record(fast)])
        host.script("Qdp_Get_Port_Stats_Slowpath", outputs=[record(slow)])
        expected = {key: fast[index] for key, index in FAST_KEYS.items()}
        expected.update({key: slow[index] for key, index in SLOW_KEYS.items()})
        assert len(expected) == 32
        assert qdp.call("GetPortStats", 3, 7) == Outcome(expected, calls=[FAST, SLOW])

    def test_counters_are_signed(self, host, qdp):
        host.script("Qdp_Get_Port_Stats", outputs=[record([(1 << 63) + i for i in range(16)])])
        host.script("Qdp_Get_Port_Stats_Slowpath", outputs=[record([(1 << 64) - 1 - i for i in range(16)])])
        expected = {key: i - (1 << 63) for key, i in FAST_KEYS.items()}
        expected.update({key: -1 - i for key, i in SLOW_KEYS.items()})
        assert qdp.call("GetPortStats", 3, 7) == Outcome(expected, calls=[FAST, SLOW])

    def test_counters_have_64_bits(self, host, qdp):
        host.script("Qdp_Get_Port_Stats", outputs=[record([(1 << 63) - 1 - i for i in range(16)])])
        host.script("Qdp_Get_Port_Stats_Slowpath", outputs=[record([(1 << 63) + i for i in range(16)])])
        expected = {key: (1 << 63) - 1 - i for key, i in FAST_KEYS.items()}
        expected.update({key: i - (1 << 63) for key, i in SLOW_KEYS.items()})
        assert qdp.call("GetPortStats", 3, 7) == Outcome(expected, calls=[FAST, SLOW])

    def test_both_paths_fill_one_record(self, host, qdp):
        """What the slow path leaves untouched is still what the fast path wrote."""
        host.script("Qdp_Get_Port_Stats", outputs=[record(range(16))])
        host.script("Qdp_Get_Port_Stats_Slowpath", outputs=[struct.pack("<Q", 99)])
        stats = qdp.result("GetPortStats", 3, 7)
        assert (stats["spTxBytes"], stats["spTxPkts"], stats["spRxErrors"]) == (99, 1, 15)

    def test_a_short_fast_path_does_not_shorten_the_slow_path(self, host, qdp):
        host.script("Qdp_Get_Port_Stats", outputs=[struct.pack("<Q", 7)])
        host.script("Qdp_Get_Port_Stats_Slowpath", outputs=[record(range(100, 116))])
        outcome = qdp.call("GetPortStats", 3, 7)
        assert outcome.calls == [FAST, SLOW]
        assert (outcome.result["txBytes"], outcome.result["spTxBytes"], outcome.result["spRxErrors"]) == (7, 100, 115)

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Get_Port_Stats", outputs=[record([0] * 16)])
        host.script("Qdp_Get_Port_Stats_Slowpath", outputs=[record([0] * 16)])
        outcome = qdp.call("GetPortStats", switch, port)
        assert [call.arguments[:2] for call in outcome.calls] == [[switch, port]] * 2
        assert list(outcome.result.values()) == [0] * 32

    def test_a_refusing_fast_path(self, host, qdp):
        host.fail("Qdp_Get_Port_Stats")
        assert qdp.call("GetPortStats", 3, 7) == Outcome(None, "Failed to retrieve port stats.\n", calls=[FAST])

    def test_a_refusing_slow_path(self, host, qdp):
        host.script("Qdp_Get_Port_Stats", outputs=[record([0] * 16)])
        host.fail("Qdp_Get_Port_Stats_Slowpath")
        assert qdp.call("GetPortStats", 3, 7) == Outcome(
            None, "Failed to retrieve slowpath port stats.\n", calls=[FAST, SLOW]
        )

    def test_embedded_host_counters_grow_with_time(self, host, qdp):
        host.freeze()
        before = qdp.result("GetPortStats", 0, 5)
        assert qdp.result("GetPortStats", 0, 5) == before
        host.advance(seconds=10)
        after = qdp.result("GetPortStats", 0, 5)
        # Port 5: 1000 + 37 * 5 packets a second of 64 + 17 * 5 bytes out, 1500 + 53 * 5 of 64 + 23 * 5 in.
        assert after["txPkts"] - before["txPkts"] == 11850
        assert after["txBytes"] - before["txBytes"] == 11850 * 149
        assert after["rxPkts"] - before["rxPkts"] == 17650
        assert 0 < after["spRxPkts"] - before["spRxPkts"] < 17650 / 50

    def test_embedded_host_has_no_such_port(self, qdp):
        outcome = qdp.call("GetPortStats", 0, 16383)
        assert outcome.printed == "Failed to retrieve port stats.\n"


class TestGetRepPortStats:
    @pytest.mark.parametrize("arguments", [(), (0, 0), ("x", None, 3)])
    def test_returns_none_and_calls_nothing(self, qdp, arguments):
        assert qdp.call("GetRepPortStats", *arguments) == Outcome(None)
