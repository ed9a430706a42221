"""The histogram of how long the programming of P4 tables took."""

import struct

import pytest

from observe import Call, Capacity, Outcome

KEYS = (
    "minLatency maxLatency 100us 200us 300us 400us 500us 700us 900us 1100us 1300us 1500us 2000us 2500us 3000us 3500us "
    "4000us 5000us 6000us 7000us 8000us 9000us outOfBucket totalSample totalTime"
).split()


class TestP4UKLatencySet:
    @pytest.mark.parametrize("enable", [0, 1, 7, 0xFFFFFFFF])
    def test_the_library_gets_the_value_as_it_is(self, qdp, enable):
        assert qdp.call("P4UKLatencySet", enable) == Outcome(True, calls=[Call("Qdp_P4UKLatencySet", [enable])])

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library_leaves_none_and_no_message(self, host, qdp, status):
        host.fail("Qdp_P4UKLatencySet", status)
        assert qdp.call("P4UKLatencySet", 1) == Outcome(None, calls=[Call("Qdp_P4UKLatencySet", [1])])


class TestP4UKLatencyDump:
    @staticmethod
    def call(selector):
        return Call("Qdp_P4UKLatencyDump", [selector, Capacity(192)])

    @pytest.mark.parametrize("selector", [0, 1, 0xFFFFFFFF])
    def test_every_value_at_its_place(self, host, qdp, selector):
        words = [1 << 32 | i for i in range(23)]
        host.script("Qdp_P4UKLatencyDump", outputs=[struct.pack("<II23Q", 5, 6, *words)])
        assert qdp.call("P4UKLatencyDump", selector) == Outcome(
            dict(zip(KEYS, [5, 6, *words], strict=True)), calls=[self.call(selector)]
        )

    def test_the_extremes_are_unsigned_and_the_counters_signed(self, host, qdp):
        host.script("Qdp_P4UKLatencyDump", outputs=[b"\xff" * 192])
        assert qdp.result("P4UKLatencyDump", 0) == dict(zip(KEYS, [4294967295] * 2 + [-1] * 23, strict=True))

    def test_the_counters_have_64_bits(self, host, qdp):
        words = [1 << 63 | i for i in range(23)]
        host.script("Qdp_P4UKLatencyDump", outputs=[struct.pack("<II23Q", 0, 0, *words)])
        shown = [0, 0, *(i - (1 << 63) for i in range(23))]
        assert qdp.result("P4UKLatencyDump", 0) == dict(zip(KEYS, shown, strict=True))

    def test_an_answer_without_bytes_reads_as_zero(self, host, qdp):
        host.script("Qdp_P4UKLatencyDump")
        assert qdp.result("P4UKLatencyDump", 0) == dict.fromkeys(KEYS, 0)

    def test_an_answer_that_claims_more_than_the_record(self, host, qdp):
        host.script("Qdp_P4UKLatencyDump", outputs=[b"\x01" * 400], sizes={0: 0xFFFFFFFF})
        assert qdp.result("P4UKLatencyDump", 0)["totalTime"] == 0x0101010101010101

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library_leaves_none_and_no_message(self, host, qdp, status):
        host.fail("Qdp_P4UKLatencyDump", status)
        assert qdp.call("P4UKLatencyDump", 3) == Outcome(None, calls=[self.call(3)])

    def test_embedded_host_grows_while_collection_is_on(self, host, qdp):
        host.freeze()
        host.advance(seconds=100)
        assert qdp.result("P4UKLatencyDump", 0) == dict.fromkeys(KEYS, 0)
        qdp.result("P4UKLatencySet", 1)
        host.advance(seconds=20)
        on = qdp.result("P4UKLatencyDump", 0)
        # 40 samples a second within 100 microseconds, 90 within 200, and one in ten seconds beyond all bounds.
        assert (on["100us"], on["200us"], on["outOfBucket"]) == (800, 1800, 2)
        assert on["totalSample"] == sum(on[key] for key in KEYS[2:23])
        assert 0 < on["minLatency"] <= 100 and on["maxLatency"] > 9000
        qdp.result("P4UKLatencySet", 0)
        host.advance(seconds=50)
        assert qdp.result("P4UKLatencyDump", 0) == on
        qdp.result("P4UKLatencySet", 1)
        host.advance(seconds=10)
        assert qdp.result("P4UKLatencyDump", 0)["100us"] == 1200

    def test_embedded_host_knows_two_selectors(self, qdp):
        assert qdp.result("P4UKLatencyDump", 1) == dict.fromkeys(KEYS, 0)
        assert qdp.result("P4UKLatencyDump", 2) is None
