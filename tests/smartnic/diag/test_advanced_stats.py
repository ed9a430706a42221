"""A switch's advanced statistics."""

import struct

import pytest

from observe import Call, Capacity, Outcome

KEYS = """
    spReasonSpFlags spReasonL3Incompat spReasonL4Incompat spReasonEncapIncompat spReasonInnerL2Incompt spReaonVlanTF
    spReasonVniZero spReasonNonUnicast spReasonInnerNoneUnicast spReasonNonIP spReasonInnerNonIP spReasonGeneveOption
    spReasonGeneveLabelType spReasonIpv6Ext spReasonL4NotSupported spReasonLat actionGenFailSameSrcDst
    actionGenFailDoNotCache actionGenFailDstSpFlags actionGenFailNonUnicast actionGenFailInnerFlowParseFailed
    actionGenFailMultiDstReval actionGenFailNonQdpCtxt actionGenFailFcAttrNull actionGenFailMirrorPkt
    actionGenFailPseudoPkt actionGenFailSrcPortNotAvail actionGenFailFlowExpired actionGenFailActionCtxtInitFail
    actionGenFailPktToMbufFail actionGenDropSpFlowAllocFail actionGenDropEnqSpFlowFail actionGenDropInnerOffloadFail
    parserDropGvlanSvlan parserDropInvalidGeneve parserDropL2Invalid parserDropL3L4Invalid
""".split()


class TestAdvStatsSetEnabled:
    @staticmethod
    def call(*arguments):
        return Call("Qdp_AdvStatsSetEnabled", list(arguments))

    @pytest.mark.parametrize("switch", [0, 15])
    @pytest.mark.parametrize("mode", [0, 1, 2])
    def test_bounds_that_are_accepted(self, host, qdp, switch, mode):
        host.script("Qdp_AdvStatsSetEnabled")
        assert qdp.call("AdvStatsSetEnabled", switch, mode) == Outcome(None, calls=[self.call(switch, mode)])

    @pytest.mark.parametrize("mode, name", [(0, "disable"), (1, "enable"), (2, "clear")])
    def test_a_refusing_library(self, host, qdp, mode, name):
        host.fail("Qdp_AdvStatsSetEnabled", 9)
        assert qdp.call("AdvStatsSetEnabled", 3, mode) == Outcome(
            None, f"Failed to {name} advanced stats.\n", calls=[self.call(3, mode)]
        )

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("AdvStatsSetEnabled", 3, 1).printed == "Failed to enable advanced stats.\n"


class TestAdvStatsGetEnabled:
    @staticmethod
    def call(switch):
        return Call("Qdp_AdvStatsGetEnabled", [switch, Capacity(1)])

    @pytest.mark.parametrize("switch", [0, 15])
    @pytest.mark.parametrize("byte, shown", [(0, False), (1, True), (2, True), (0x80, True), (0xFF, True)])
    def test_any_byte_but_0_is_true(self, host, qdp, switch, byte, shown):
        host.script("Qdp_AdvStatsGetEnabled", outputs=[bytes([byte])])
        assert qdp.call("AdvStatsGetEnabled", switch) == Outcome(shown, calls=[self.call(switch)])

    def test_an_answer_without_bytes_is_false(self, host, qdp):
        host.script("Qdp_AdvStatsGetEnabled")
        assert qdp.call("AdvStatsGetEnabled", 0) == Outcome(False, calls=[self.call(0)])

    def test_embedded_host_gets_what_was_set(self, qdp):
        assert [qdp.result("AdvStatsGetEnabled", switch) for switch in range(3)] == [False, False, False]
        qdp.result("AdvStatsSetEnabled", 1, 1)
        assert [qdp.result("AdvStatsGetEnabled", switch) for switch in range(3)] == [False, True, False]
        qdp.result("AdvStatsSetEnabled", 1, 2)
        assert qdp.result("AdvStatsGetEnabled", 1) is True
        qdp.result("AdvStatsSetEnabled", 1, 0)
        assert qdp.result("AdvStatsGetEnabled", 1) is False


class TestAdvStatsGetCounters:
    @staticmethod
    def call(switch, selector, text):
        return Call("Qdp_AdvStatsGetCounters", [switch, selector, text, Capacity(428)])

    @pytest.mark.parametrize(
        "switch, selector, text", [(0, 0, ""), (15, 0xFFFFFFFF, "flow"), (3, 7, "\u00fc"), (3, 7, "x" * 1000)]
    )
    def test_every_counter_at_its_place(self, host, qdp, switch, selector, text):
        words = [1 << 40 | i for i in range(37)]
        host.script("Qdp_AdvStatsGetCounters", outputs=[b"\xee" * 132 + struct.pack("<37Q", *words)])
        assert qdp.call("AdvStatsGetCounters", switch, selector, text) == Outcome(
            dict(zip(KEYS, words, strict=True)), calls=[self.call(switch, selector, text)]
        )

    @pytest.mark.parametrize(
        "word, shown", [((1 << 63) - 1, (1 << 63) - 1), (1 << 63, -(1 << 63)), ((1 << 64) - 1, -1)]
    )
    def test_counters_are_signed(self, host, qdp, word, shown):
        host.script("Qdp_AdvStatsGetCounters", outputs=[bytes(132) + struct.pack("<Q", word) * 37])
        assert qdp.result("AdvStatsGetCounters", 0, 0, "") == dict.fromkeys(KEYS, shown)

    def test_an_answer_without_bytes_reads_as_zero(self, host, qdp):
        host.script("Qdp_AdvStatsGetCounters")
        assert qdp.result("AdvStatsGetCounters", 0, 0, "") == dict.fromkeys(KEYS, 0)

    def test_an_answer_that_claims_more_than_the_record(self, host, qdp):
        host.script("Qdp_AdvStatsGetCounters", outputs=[b"\x01" * 600], sizes={0: 0xFFFFFFFF})
        assert qdp.result("AdvStatsGetCounters", 0, 0, "") == dict.fromkeys(KEYS, 0x0101010101010101)

    def test_embedded_host_counts_while_it_is_enabled(self, host, qdp):
        host.freeze()
        host.advance(seconds=100)
        assert qdp.result("AdvStatsGetCounters", 1, 0, "") == dict.fromkeys(KEYS, 0)
        qdp.result("AdvStatsSetEnabled", 1, 1)
        host.advance(seconds=10)
        on = qdp.result("AdvStatsGetCounters", 1, 0, "")
        # On switch 1 the first reason is counted 2 * 37 times a second, the last one twice.
        assert (on["spReasonSpFlags"], on["parserDropL3L4Invalid"]) == (740, 20)
        assert qdp.result("AdvStatsGetCounters", 0, 0, "") == dict.fromkeys(KEYS, 0)
        qdp.result("AdvStatsSetEnabled", 1, 0)
        host.advance(seconds=10)
        assert qdp.result("AdvStatsGetCounters", 1, 0, "") == on

    @pytest.mark.parametrize("enabled, grown", [(1, 37), (0, 0)])
    def test_embedded_host_clears(self, host, qdp, enabled, grown):
        host.freeze()
        qdp.result("AdvStatsSetEnabled", 0, 1)
        host.advance(seconds=10)
        qdp.result("AdvStatsSetEnabled", 0, enabled)
        assert qdp.result("AdvStatsGetCounters", 0, 0, "")["spReasonSpFlags"] == 370
        qdp.result("AdvStatsSetEnabled", 0, 2)
        assert qdp.result("AdvStatsGetCounters", 0, 0, "") == dict.fromkeys(KEYS, 0)
        host.advance(seconds=1)
        assert qdp.result("AdvStatsGetCounters", 0, 0, "")["spReasonSpFlags"] == grown
