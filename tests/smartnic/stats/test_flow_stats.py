"""The counters of one offloaded flow."""

import struct

import pytest

from observe import Call, Capacity, Outcome


def entry(packets=0, in_bytes=0, tcp_flags=0):
    return struct.pack(">QQB", packets, in_bytes, tcp_flags) + b"\xdd" * 15


def dump(data, length=None):
    return struct.pack("<IIQ", 16 + len(data) if length is None else length, 0xDEAD, 0x128C00000) + data


def call(index):
    return Call("Qdp_P4_HWTable_Dump", [struct.pack("<III", 4, index, 1), Capacity(2048)])


class TestP4StatsFlowGet:
    def test_one_flow(self, host, qdp):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(entry(0x0102030405060708, 0x1112131415161718, 0x5A))])
        assert qdp.call("P4StatsFlowGet", 9) == Outcome(
            {"pcnt": 0x0102030405060708, "bcnt": 0x1112131415161718, "tcp_flags": 0x5A}, calls=[call(9)]
        )

    def test_counters_are_in_network_byte_order(self, host, qdp):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(bytes([0, 0, 0, 0, 0, 0, 1, 0]) + bytes(24))])
        assert qdp.result("P4StatsFlowGet", 0) == {"pcnt": 256, "bcnt": 0, "tcp_flags": 0}

    @pytest.mark.parametrize(
        "word, shown", [((1 << 63) - 1, (1 << 63) - 1), (1 << 63, -(1 << 63)), ((1 << 64) - 2, -2)]
    )
    def test_counters_are_signed_and_flags_are_not(self, host, qdp, word, shown):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(entry(word, word, 0xFF))])
        assert qdp.result("P4StatsFlowGet", 0) == {"pcnt": shown, "bcnt": shown, "tcp_flags": 255}

    @pytest.mark.parametrize("index", [0, 0x80000000, 0xFFFFFFFF])
    def test_any_index_reaches_the_library(self, host, qdp, index):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(entry(1, 2, 3))])
        assert qdp.call("P4StatsFlowGet", index) == Outcome({"pcnt": 1, "bcnt": 2, "tcp_flags": 3}, calls=[call(index)])

    # Shorter than its own header: no data.
    @pytest.mark.parametrize(
        "length, shown",
        [(16 + 64, 64), (16 + 31, 31), (16 + 33, 33), (16, 0), (15, 0), (0, 0), (4294967295, 4294967279)],
    )
    def test_an_answer_that_is_not_one_entry(self, host, qdp, length, shown):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(entry(1, 2, 3) * 2, length)])
        assert qdp.call("P4StatsFlowGet", 5) == Outcome(
            None, f"Unexpected response size {shown}, expected: 32\n", calls=[call(5)]
        )

    def test_the_length_that_counts_is_the_responses_own(self, host, qdp):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(entry(1, 2, 3))], sizes={0: 3})
        assert qdp.result("P4StatsFlowGet", 0) == {"pcnt": 1, "bcnt": 2, "tcp_flags": 3}

    def test_an_answer_without_its_entry_reads_as_zero(self, host, qdp):
        host.script("Qdp_P4_HWTable_Dump", outputs=[dump(b"", 48)])
        assert qdp.result("P4StatsFlowGet", 0) == {"pcnt": 0, "bcnt": 0, "tcp_flags": 0}

    def test_embedded_host_flows_grow_with_time(self, host, qdp):
        host.freeze()
        before = qdp.result("P4StatsFlowGet", 1)
        host.advance(seconds=10)
        after = qdp.result("P4StatsFlowGet", 1)
        # The flow cache's flow 448: 20 * (5 + 448 * 13 % 900) packets a second of 64 + 448 * 37 % 1400 bytes.
        assert after["pcnt"] - before["pcnt"] == 10 * 8580
        assert after["bcnt"] - before["bcnt"] == 10 * 8580 * 1240
        assert (after["tcp_flags"], qdp.result("P4StatsFlowGet", 0)["tcp_flags"]) == (0x12, 0)
        assert qdp.result("P4StatsFlowGet", 1000) == {"pcnt": 0, "bcnt": 0, "tcp_flags": 0}

    @pytest.mark.parametrize("index", [(1 << 20), 0xFFFFFFFF])
    def test_embedded_host_has_no_such_entry(self, qdp, index):
        assert qdp.call("P4StatsFlowGet", index).printed == "Failed to dump ipfix table entry.\n"
