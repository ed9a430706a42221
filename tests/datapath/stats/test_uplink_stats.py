"""An uplink's counters, those of its queues, and its driver's private statistics."""

import ctypes
import resource
import struct
import sys

import pytest

from observe import Call, Capacity, Outcome

NAMES = """
    rxPkts txPkts rxBytes txBytes rxErrors txErrors rxDrops txDrops
    rxMulticastPkts rxBroadcastPkts txMulticastPkts txBroadcastPkts
    collisions rxLengthErrors rxOverflowErrors rxCRCErrors rxFrameAlignErrors rxFifoErrors rxMissErrors
    txAbortedErrors txCarrierErrors txFifoErrors txHeartbeatErrors txWindowErrors
""".split()

LENGTH = Call("Qdp_Get_Uplink_Priv_Stats_Len", [3, 7, Capacity(4)])
STATS = Call("Qdp_Get_Uplink_Stats", [3, 7, Capacity(192)])
UNDER_SANITIZERS = "libasan" in open("/proc/self/maps").read()


def text_call(length):
    return Call("Qdp_Get_Uplink_Priv_Stats", [3, 7, Capacity(length)])


def record(counters):
    return struct.pack("<24Q", *counters)


def pairs(counters):
    return list(zip(NAMES, counters))


ZEROS = pairs([0] * 24)


def script_length(host, length, status=0):
    host.script("Qdp_Get_Uplink_Priv_Stats_Len", status, outputs=[struct.pack("<I", length)])


class TestGetUplinkStats:
    def script(self, host, text=b"", counters=(0,) * 24, length=None):
        length = len(text) if length is None else length
        script_length(host, length)
        if length:
            host.script("Qdp_Get_Uplink_Priv_Stats", outputs=[text])
        host.script("Qdp_Get_Uplink_Stats", outputs=[record(counters)])

    def test_counters_in_order_then_the_private_text(self, host, qdp):
        assert len(NAMES) == 24
        counters = [1000 + i for i in range(24)]
        self.script(host, b"rx_q0: 17\nrx_q1: 4\n\0", counters)
        assert qdp.call("GetUplinkStats", 3, 7) == Outcome(
            {"uplinkStats": pairs(counters), "privStats": "rx_q0: 17\nrx_q1: 4\n"},
            calls=[LENGTH, text_call(20), STATS],
        )

    @pytest.mark.parametrize("lowest", [-(1 << 63), -12, (1 << 63) - 24])
    def test_counters_are_signed(self, host, qdp, lowest):
        counters = [lowest + i for i in range(24)]
        self.script(host, counters=[each % (1 << 64) for each in counters])
        assert qdp.result("GetUplinkStats", 3, 7)["uplinkStats"] == pairs(counters)

    def test_a_length_of_0_is_the_empty_text(self, host, qdp):
        self.script(host)
        assert qdp.call("GetUplinkStats", 3, 7) == Outcome(
            {"uplinkStats": ZEROS, "privStats": ""}, calls=[LENGTH, STATS]
        )

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_failed_length_query_counts_as_0_even_when_it_wrote_one(self, host, qdp, status):
        script_length(host, 10, status)
        host.script("Qdp_Get_Uplink_Stats", outputs=[record([0] * 24)])
        assert qdp.call("GetUplinkStats", 3, 7) == Outcome(
            {"uplinkStats": ZEROS, "privStats": ""}, calls=[LENGTH, STATS]
        )

    def test_a_length_query_that_writes_nothing_is_a_length_of_0(self, host, qdp):
        host.script("Qdp_Get_Uplink_Priv_Stats_Len")
        host.script("Qdp_Get_Uplink_Stats", outputs=[record([0] * 24)])
        assert qdp.call("GetUplinkStats", 3, 7).result["privStats"] == ""

    @pytest.mark.parametrize(
        "written, text",
        [
            (b"abcd", "abcd"),  # no NUL: the text ends with its buffer
            (b"abcdefgh", "abcd"),
            (b"ab\0d", "ab"),
            (b"\0bcd", ""),
            (b"", ""),
            ("pé1".encode(), "pé1"),
        ],
    )
    def test_the_text_ends_at_its_nul_or_with_its_buffer(self, host, qdp, written, text):
        self.script(host, written, length=4)
        assert qdp.call("GetUplinkStats", 3, 7) == Outcome(
            {"uplinkStats": ZEROS, "privStats": text}, calls=[LENGTH, text_call(4), STATS]
        )

    @pytest.mark.parametrize("length", [1, 16, 65536, 1 << 20])
    def test_a_text_that_fills_its_buffer(self, host, qdp, length):
        self.script(host, b"x" * length)
        assert qdp.result("GetUplinkStats", 3, 7)["privStats"] == "x" * length

    def test_the_length_that_the_second_call_reports_does_not_count(self, host, qdp):
        script_length(host, 6)
        host.script("Qdp_Get_Uplink_Priv_Stats", outputs=[b"abcdef"], sizes={0: 2})
        host.script("Qdp_Get_Uplink_Stats", outputs=[record([0] * 24)])
        assert qdp.result("GetUplinkStats", 3, 7)["privStats"] == "abcdef"

    def test_a_text_that_is_not_utf_8_is_raised(self, host, qdp):
        self.script(host, b"ab\xff\0")
        assert qdp.call("GetUplinkStats", 3, 7) == Outcome(
            raised=(UnicodeDecodeError, "'utf-8' codec can't decode byte 0xff in position 2: invalid start byte"),
            calls=[LENGTH, text_call(4), STATS],
        )

    def test_the_text_cannot_be_fetched(self, host, qdp):
        script_length(host, 20)
        host.fail("Qdp_Get_Uplink_Priv_Stats")
        assert qdp.call("GetUplinkStats", 3, 7) == Outcome(
            printed="Failed to get private stats.\n", returned_null=True, calls=[LENGTH, text_call(20)]
        )

    @pytest.mark.parametrize("text, calls", [(b"", []), (b"abc\0", [text_call(4)])])
    def test_the_counters_cannot_be_fetched(self, host, qdp, text, calls):
        self.script(host, text)
        host.fail("Qdp_Get_Uplink_Stats")
        assert qdp.call("GetUplinkStats", 3, 7) == Outcome(
            printed="Failed to get uplink stats.\n", returned_null=True, calls=[LENGTH, *calls, STATS]
        )

    @pytest.mark.skipif(UNDER_SANITIZERS, reason="their own memory is beyond any limit")
    def test_no_memory_for_the_text(self, host, qdp):
        script_length(host, 0xFFFFFFFF)
        limits = resource.getrlimit(resource.RLIMIT_AS)
        resource.setrlimit(resource.RLIMIT_AS, (3 << 30, limits[1]))
        try:
            outcome = qdp.call("GetUplinkStats", 3, 7)
        finally:
            resource.setrlimit(resource.RLIMIT_AS, limits)
        assert outcome == Outcome(None, "Failed to allocate memory.\n", calls=[LENGTH])

    def test_nobody_else_keeps_the_list(self, host, qdp):
        self.script(host)
        stats = qdp.result("GetUplinkStats", 3, 7)
        references = sys.getrefcount(stats["uplinkStats"])
        assert references == 2  # of the dict and of the question

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        self.script(host)
        assert [call.arguments[:2] for call in qdp.call("GetUplinkStats", switch, port).calls] == [[switch, port]] * 2

    def test_embedded_host_counters_grow_with_time(self, host, qdp):
        host.freeze()
        before = dict(qdp.result("GetUplinkStats", 0, 1)["uplinkStats"])
        host.advance(seconds=20)
        after = dict(qdp.result("GetUplinkStats", 0, 1)["uplinkStats"])
        # Port 1: 1500 + 53 packets a second of 64 + 23 bytes in, 1000 + 37 of 64 + 17 out.
        assert after["rxPkts"] - before["rxPkts"] == 31060
        assert after["rxBytes"] - before["rxBytes"] == 31060 * 87
        assert after["txPkts"] - before["txPkts"] == 20740
        assert after["txBytes"] - before["txBytes"] == 20740 * 81
        assert after["rxMulticastPkts"] > before["rxMulticastPkts"]
        assert after["collisions"] == 0

    def test_embedded_host_private_statistics_grow_within_their_length(self, host, qdp):
        host.freeze()

        def private():
            text = qdp.result("GetUplinkStats", 0, 0)["privStats"]
            return len(text), {name: int(value) for name, value in map(str.split, text.splitlines())}

        length, before = private()
        host.advance(seconds=1_000_000)
        length_after, after = private()
        assert length == length_after
        assert list(before) == ["link_resets", "rx_buffer_refills"] + [f"rx_queue_{i}_packets" for i in range(8)]
        assert after["rx_queue_7_packets"] - before["rx_queue_7_packets"] == 1500 // 8 * 1_000_000

    def test_embedded_host_has_one_uplink_without_private_statistics(self, qdp):
        texts = {
            (switch, port): qdp.result("GetUplinkStats", switch, port)["privStats"]
            for switch in range(3)
            for port in range(2)
        }
        assert [uplink for uplink, text in texts.items() if text == ""] == [(2, 1)]

    @pytest.mark.parametrize("switch, port", [(0, 2), (0, 99), (3, 0)])
    def test_embedded_host_has_no_such_uplink(self, qdp, switch, port):
        outcome = qdp.call("GetUplinkStats", switch, port)
        assert outcome == Outcome(printed="Failed to get uplink stats.\n", returned_null=True, calls=outcome.calls)

    def test_embedded_host_refuses_a_buffer_that_is_too_small(self, host):
        buffer = ctypes.create_string_buffer(b"#" * 64, 64)
        size = ctypes.c_uint32(64)
        assert host.libqdp.Qdp_Get_Uplink_Priv_Stats(0, 0, buffer, ctypes.byref(size)) != 0
        assert host.libqdp.Qdp_Get_Uplink_Stats(0, 0, buffer, ctypes.byref(size)) != 0
        assert (buffer.raw, size.value) == (b"#" * 64, 64)


class TestGetUplinkQueueStats:
    @staticmethod
    def call(queue, direction, switch=3, port=7):
        return Call("Qdp_Get_Uplink_Queue_Stats", [switch, port, queue, direction, Capacity(192)])

    def test_the_list_itself(self, host, qdp):
        counters = [7000 + i for i in range(24)]
        host.script("Qdp_Get_Uplink_Queue_Stats", outputs=[record(counters)])
        assert qdp.call("GetUplinkQueueStats", 3, 7, 1, 5) == Outcome(pairs(counters), calls=[self.call(5, 1)])

    def test_counters_are_signed(self, host, qdp):
        host.script("Qdp_Get_Uplink_Queue_Stats", outputs=[record([(1 << 64) - 1] * 23 + [1 << 63])])
        assert qdp.result("GetUplinkQueueStats", 3, 7, 0, 0) == pairs([-1] * 23 + [-(1 << 63)])

    @pytest.mark.parametrize(
        "direction, queue, passed",
        [
            (0, 9, (9, 0)),
            (1, 9, (9, 1)),
            (2, 0, (0, 1)),
            (-1, -1, (0xFFFFFFFF, 1)),
            (0, 0xFFFFFFFF, (0xFFFFFFFF, 0)),
            (0x80000000, 64, (64, 1)),
        ],
    )
    def test_the_queue_goes_before_the_direction_flag(self, host, qdp, direction, queue, passed):
        host.script("Qdp_Get_Uplink_Queue_Stats", outputs=[record([0] * 24)])
        assert qdp.call("GetUplinkQueueStats", 3, 7, direction, queue) == Outcome(ZEROS, calls=[self.call(*passed)])

    def test_an_answer_without_bytes_is_zeros(self, host, qdp):
        host.script("Qdp_Get_Uplink_Queue_Stats")
        assert qdp.result("GetUplinkQueueStats", 3, 7, 0, 0) == ZEROS

    @pytest.mark.parametrize("switch, port", [(0, 0), (15, 16383)])
    def test_bounds_that_are_accepted(self, host, qdp, switch, port):
        host.script("Qdp_Get_Uplink_Queue_Stats", outputs=[record([0] * 24)])
        assert qdp.call("GetUplinkQueueStats", switch, port, 0, 1) == Outcome(
            ZEROS, calls=[self.call(1, 0, switch, port)]
        )

    def test_embedded_host_queues_share_the_traffic(self, host, qdp):
        host.freeze()
        host.advance(seconds=8)
        whole = dict(qdp.result("GetUplinkStats", 1, 0)["uplinkStats"])
        received = [dict(qdp.result("GetUplinkQueueStats", 1, 0, 0, queue)) for queue in range(8)]
        sent = [dict(qdp.result("GetUplinkQueueStats", 1, 0, 1, queue)) for queue in range(8)]
        assert whole["rxPkts"] - 8 < sum(queue["rxPkts"] for queue in received) <= whole["rxPkts"]
        assert whole["txPkts"] - 8 < sum(queue["txPkts"] for queue in sent) <= whole["txPkts"]
        assert {queue["txPkts"] for queue in received} == {queue["rxPkts"] for queue in sent} == {0}

    @pytest.mark.parametrize("port, queue", [(0, 8), (2, 0)])
    def test_embedded_host_has_no_such_queue(self, qdp, port, queue):
        assert qdp.call("GetUplinkQueueStats", 0, port, 0, queue) == Outcome(
            None, "Failed to get uplink stats.\n", calls=[self.call(queue, 0, 0, port)]
        )
