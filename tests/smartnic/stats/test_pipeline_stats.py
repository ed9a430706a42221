"""The counters of the SmartNIC's pipeline."""

import ctypes
import struct
from collections import namedtuple

import pytest

from observe import Call, Capacity, Outcome, refused

TRAFFIC = "UcastBytes UcastPkts McastBytes McastPkts BcastBytes BcastPkts".split()
DROPS = "UcastDropBytes UcastDropPkts McastDropBytes McastDropPkts BcastDropBytes BcastDropPkts".split()

# Keys in dict order, and the offset of each counter in the block.
PORT = {
    way + name: base + 8 * i
    for way, start in (("rx", 0), ("tx", 128))
    for names, base in ((TRAFFIC, start), (DROPS, start + 64))
    for i, name in enumerate(names)
}
LIF = {
    **PORT,
    "rxQueueDisabled": 256,
    "rxQueueEmpty": 264,
    "rxQueueError": 272,
    "rxDescFetchError": 280,
    "rxDescDataError": 288,
    "txQueueDisabled": 320,
    "txQueueError": 328,
    "txDescFetchError": 336,
    "txDescDataError": 344,
}
CONNTRACK = {
    "txPassBytes": 0,
    "txPassPkts": 8,
    "txDropBytes": 16,
    "txDropPkts": 24,
    "rxPassBytes": 32,
    "rxPassPkts": 40,
    "rxDropBytes": 48,
    "rxDropPkts": 56,
}
INGRESS = {
    "rxFromHost": 0,
    "rxFromSwitch": 8,
    "rxFromCpu": 16,
    "rxUserCsumErr": 24,
    "rxSubstrateCsumErr": 32,
    "rxMalformed": 40,
}
EGRESS = {
    "txToHost": 0,
    "txToSwitch": 8,
    "txToCpu": 16,
    "flowMiss": 24,
    "connTrackRedir": 32,
    "wrongReinject": 40,
    "drop": 48,
}


def block(size):
    """A block in which every word differs and says where it lies; all words are used, the reserved ones too."""
    return b"".join(struct.pack("<Q", 0x1000000000000 + offset) for offset in range(0, size, 8))


def decoded(keys):
    return {key: 0x1000000000000 + offset for key, offset in keys.items()}


# A method, the operation that fills its block, what it prints when that is refused, its keys, the bytes of its block,
# and the arguments that both take here.
Counters = namedtuple("Counters", "method operation message keys size arguments")

LIF_STATS = Counters("LifStatsGet", "Qdp_Lif_Stats_Get", "Failed to get lif stats\n", LIF, 384, (17,))
PORT_STATS = Counters("PortStatsGet", "Qdp_Port_Stats_Get", "Failed to get port stats\n", PORT, 256, (17,))
# Reads 64 bytes of a block for which the library takes 256.
CT_STATS = Counters("CTStatsGet", "Qdp_CT_Stats_Get", "Failed to get port conntrack stats\n", CONNTRACK, 256, (17,))
INGRESS_STATS = Counters("P4IStatsGet", "Qdp_P4I_Stats_Get", "Failed to get p4 ingress stats\n", INGRESS, 64, ())
EGRESS_STATS = Counters("P4EStatsGet", "Qdp_P4E_Stats_Get", "Failed to get p4 egress stats\n", EGRESS, 64, ())


def each(*rows):
    return pytest.mark.parametrize("counters", rows, ids=[row.method for row in rows])


each_method = each(LIF_STATS, PORT_STATS, CT_STATS, INGRESS_STATS, EGRESS_STATS)
each_indexed_method = each(LIF_STATS, PORT_STATS, CT_STATS)


def call(counters, *arguments):
    return Call(counters.operation, [*arguments, Capacity(counters.size)])


def assert_decodes(host, qdp, counters, arguments, passed_on):
    """A block in which every word differs comes back whole."""
    host.script(counters.operation, outputs=[block(counters.size)])
    assert qdp.call(counters.method, *arguments) == Outcome(decoded(counters.keys), calls=[call(counters, *passed_on)])


@each_method
class TestAllCounters:

    @pytest.mark.parametrize(
        "word, shown", [((1 << 63) - 1, (1 << 63) - 1), (1 << 63, -(1 << 63)), ((1 << 64) - 1, -1)]
    )
    def test_counters_are_signed(self, host, qdp, counters, word, shown):
        host.script(counters.operation, outputs=[struct.pack("<Q", word) * (counters.size // 8)])
        assert qdp.call(counters.method, *counters.arguments) == Outcome(
            dict.fromkeys(counters.keys, shown), calls=[call(counters, *counters.arguments)]
        )

    def test_an_answer_without_bytes_reads_as_zero(self, host, qdp, counters):
        host.script(counters.operation)
        assert qdp.result(counters.method, *counters.arguments) == dict.fromkeys(counters.keys, 0)

    def test_an_answer_that_claims_more_than_the_block(self, host, qdp, counters):
        host.script(counters.operation, outputs=[block(counters.size + 64)], sizes={0: 0xFFFFFFFF})
        assert qdp.result(counters.method, *counters.arguments) == decoded(counters.keys)

    @pytest.mark.parametrize("status", [1, 0xBAD0003, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, counters, status):
        host.fail(counters.operation, status)
        assert qdp.call(counters.method, *counters.arguments) == Outcome(
            None, counters.message, calls=[call(counters, *counters.arguments)]
        )

    def test_embedded_host_counters_grow_with_time(self, host, qdp, counters):
        host.freeze()
        before = qdp.result(counters.method, *counters.arguments)
        assert list(before) == list(counters.keys)
        assert qdp.result(counters.method, *counters.arguments) == before
        host.advance(seconds=1000)
        after = qdp.result(counters.method, *counters.arguments)
        assert all(after[key] >= before[key] for key in before)
        assert len([key for key in before if after[key] > before[key]]) > len(before) / 2

    def test_embedded_host_refuses_a_buffer_that_is_too_small(self, host, counters):
        untouched = b"\xaa" * counters.size
        small, size = ctypes.create_string_buffer(untouched), ctypes.c_uint32(counters.size - 1)
        assert getattr(host.libqdp, counters.operation)(*counters.arguments, small, ctypes.byref(size)) != 0
        assert (small.raw[: counters.size], size.value) == (untouched, counters.size - 1)


@each_indexed_method
class TestIndexedCounters:
    def test_an_integer_is_taken_modulo_2_to_the_32nd(self, host, qdp, counters):
        assert_decodes(host, qdp, counters, [(1 << 32) + 3], [3])


bounds_accepted = pytest.mark.parametrize("number", [0, 7, 1023])
bounds_refused = pytest.mark.parametrize("number", [1024, 1025, 0x80000000, 0xFFFFFFFF, -1])
ignored_arguments = pytest.mark.parametrize("arguments", [(), (0,), ("x", None, 3)])


class TestLifStatsGet:
    @bounds_accepted
    def test_every_counter_at_its_place(self, host, qdp, number):
        assert_decodes(host, qdp, LIF_STATS, [number], [number])

    @bounds_refused
    def test_a_lif_out_of_range(self, qdp, number):
        assert qdp.call("LifStatsGet", number) == refused()

    def test_there_are_33_counters_and_the_transmit_side_has_one_fewer(self, qdp):
        counters = qdp.result("LifStatsGet", 0)
        assert len(counters) == 33
        assert "rxQueueEmpty" in counters and "txQueueEmpty" not in counters

    def test_embedded_host(self, host, qdp):
        host.freeze()
        before = qdp.result("LifStatsGet", 17)
        host.advance(seconds=10)
        after = qdp.result("LifStatsGet", 17)
        # LIF 17 on port 17: 400 + 13 * 17 packets a second in, 300 + 17 * 17 out, of 64 + 29 * 17 bytes.
        assert before["rxUcastPkts"] == 3600 * 621
        assert after["rxUcastPkts"] - before["rxUcastPkts"] == 6210
        assert after["txUcastPkts"] - before["txUcastPkts"] == 5890
        assert after["txUcastBytes"] - before["txUcastBytes"] == 5890 * 557

    @pytest.mark.parametrize("lif", [7, 31, 1023])
    def test_embedded_host_counts_nothing_where_there_is_no_lif_or_it_is_down(self, qdp, lif):
        assert set(qdp.result("LifStatsGet", lif).values()) == {0}


class TestPortStatsGet:
    @bounds_accepted
    def test_every_counter_at_its_place(self, host, qdp, number):
        assert_decodes(host, qdp, PORT_STATS, [number], [number])

    @bounds_refused
    def test_a_port_out_of_range(self, qdp, number):
        assert qdp.call("PortStatsGet", number) == refused()

    def test_there_are_24_counters(self, qdp):
        assert len(qdp.result("PortStatsGet", 0)) == 24


class TestCTStatsGet:
    @pytest.mark.parametrize("index", [0, 7, 1024, 0x80000000, 0xFFFFFFFF])
    def test_any_index_reaches_the_library(self, host, qdp, index):
        assert_decodes(host, qdp, CT_STATS, [index], [index])

    def test_embedded_host_has_no_such_entry(self, qdp):
        assert qdp.call("CTStatsGet", 1024) == Outcome(None, CT_STATS.message, calls=[call(CT_STATS, 1024)])


class TestP4IStatsGet:
    @ignored_arguments
    def test_every_counter_at_its_place(self, host, qdp, arguments):
        assert_decodes(host, qdp, INGRESS_STATS, arguments, [])


class TestP4EStatsGet:
    @ignored_arguments
    def test_every_counter_at_its_place(self, host, qdp, arguments):
        assert_decodes(host, qdp, EGRESS_STATS, arguments, [])

    def test_embedded_host_sends_what_it_received(self, host, qdp):
        host.freeze()
        host.advance(seconds=60)
        received, sent = qdp.result("P4IStatsGet"), qdp.result("P4EStatsGet")
        assert (sent["txToSwitch"], sent["txToHost"]) == (received["rxFromHost"], received["rxFromSwitch"])
