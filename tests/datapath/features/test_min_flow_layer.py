"""The minimum flow layer of a switch."""

import struct

import pytest

from observe import Call, Capacity, Outcome

CANNOT_SET = "ValueError: Failed to set switch minFlowLayer.\n\n"


class TestGetSwitchMinFlowLayer:
    @pytest.mark.parametrize("layer", [0, 2, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF])
    @pytest.mark.parametrize("switch", [0, 3, 15])
    def test_is_unsigned(self, host, qdp, layer, switch):
        host.script("Qdp_GetSwitchMinFlowLayer", outputs=[struct.pack("<I", layer)])
        assert qdp.call("GetSwitchMinFlowLayer", switch) == Outcome(
            layer, calls=[Call("Qdp_GetSwitchMinFlowLayer", [switch, Capacity(4)])]
        )

    @pytest.mark.parametrize("switch", [0, 15])
    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, switch, status):
        host.fail("Qdp_GetSwitchMinFlowLayer", status)
        assert qdp.call("GetSwitchMinFlowLayer", switch) == Outcome(
            None,
            f"ValueError: Failed to get minimum flow layer of switch {switch}\n\n",
            calls=[Call("Qdp_GetSwitchMinFlowLayer", [switch, Capacity(4)])],
        )

    def test_embedded_host(self, qdp):
        assert [qdp.result("GetSwitchMinFlowLayer", switch) for switch in (0, 1, 2)] == [2, 3, 3]
        assert qdp.call("GetSwitchMinFlowLayer", 3).result is None


class TestSetSwitchMinFlowLayer:
    @pytest.mark.parametrize("layer, word", [(0, 0), (4, 4), (-1, 0xFFFFFFFF)])
    @pytest.mark.parametrize("switch", [0, 3, 15])
    def test_passes_the_layer_on(self, host, qdp, layer, word, switch):
        host.script("Qdp_SetSwitchMinFlowLayer")
        assert qdp.call("SetSwitchMinFlowLayer", switch, layer) == Outcome(
            True, calls=[Call("Qdp_SetSwitchMinFlowLayer", [switch, word])]
        )

    def test_embedded_host_keeps_it_for_that_switch(self, qdp):
        assert qdp.result("SetSwitchMinFlowLayer", 1, 4) is True
        assert [qdp.result("GetSwitchMinFlowLayer", switch) for switch in (0, 1, 2)] == [2, 4, 3]

    def test_embedded_host_has_no_such_switch(self, qdp):
        outcome = qdp.call("SetSwitchMinFlowLayer", 3, 2)
        assert (outcome.result, outcome.printed) == (False, CANNOT_SET)
