"""The pipeline's DSCP configuration."""

import struct

import pytest

from observe import Call, Capacity, Outcome

GET = Call("Qdp_DSCP_Conf_Get", [Capacity(6)])


def set_call(selector, dscp, mask):
    return Call("Qdp_DSCP_Conf_Set", [struct.pack("<IBB", selector, dscp, mask)])


class TestDSCPConfSet:
    @pytest.mark.parametrize(
        "arguments, written",
        [
            ((1, 46, 63), (1, 46, 63)),
            ((0, 300, 256), (0, 44, 0)),
            ((0xFFFFFFFF, 255, 511), (0xFFFFFFFF, 255, 255)),
            ((-1, -1, 0xFFFFFF00), (0xFFFFFFFF, 255, 0)),
        ],
    )
    def test_the_dscp_and_the_mask_keep_their_low_8_bits(self, host, qdp, arguments, written):
        assert qdp.call("DSCPConfSet", *arguments) == Outcome(None, calls=[set_call(*written)])


class TestDSCPConfGet:
    @pytest.mark.parametrize("dscp, mask", [(1, 2), (255, 254), (0, 0x80)])
    def test_the_dscp_then_the_mask(self, host, qdp, dscp, mask):
        host.script("Qdp_DSCP_Conf_Get", outputs=[struct.pack("<IBB", 0xDEADBEEF, dscp, mask)])
        assert qdp.call("DSCPConfGet") == Outcome({"dscp": dscp, "mask": mask}, calls=[GET])

    def test_arguments_are_ignored(self, host, qdp):
        host.script("Qdp_DSCP_Conf_Get")
        assert qdp.call("DSCPConfGet", "x", 99) == Outcome({"dscp": 0, "mask": 0}, calls=[GET])

    def test_an_answer_that_claims_more_than_the_record(self, host, qdp):
        host.script("Qdp_DSCP_Conf_Get", outputs=[bytes(range(1, 33))], sizes={0: 0xFFFFFFFF})
        assert qdp.call("DSCPConfGet") == Outcome({"dscp": 5, "mask": 6}, calls=[GET])

    def test_embedded_host_gets_what_was_set(self, qdp):
        assert qdp.result("DSCPConfGet") == {"dscp": 46, "mask": 63}
        assert qdp.result("DSCPConfSet", 3, 300, 7) is None
        assert qdp.result("DSCPConfGet") == {"dscp": 44, "mask": 7}
