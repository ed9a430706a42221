"""Large receive offload of ports and switches."""

import ctypes
import struct

import pytest

from observe import Call, Capacity, Outcome

CANNOT_GET = "ValueError: Failed to get LRO.\n\n"
CANNOT_SET = "ValueError: Failed to set LRO.\n\n"

PORT = 0
SWITCH = 1


class TestGetPortLRO:
    @pytest.mark.parametrize("value", [0, 1, 2, 0x100, 0x80000000, 0xFFFFFFFF])
    @pytest.mark.parametrize("switch, port", [(3, 7), (0, 0), (15, 16383)])
    def test_any_value_but_zero_is_true(self, host, qdp, value, switch, port):
        host.script("Qdp_GetLRO", outputs=[struct.pack("<I", value)])
        assert qdp.call("GetPortLRO", switch, port) == Outcome(
            value != 0, calls=[Call("Qdp_GetLRO", [PORT, switch, port, Capacity(4)])]
        )

    def test_an_answer_without_bytes_is_false(self, host, qdp):
        host.script("Qdp_GetLRO")
        assert qdp.result("GetPortLRO", 3, 7) is False

    @pytest.mark.parametrize("switch, port", [(0, 16383), (15, 0)])
    def test_embedded_host_has_no_such_port(self, qdp, switch, port):
        outcome = qdp.call("GetPortLRO", switch, port)
        assert (outcome.result, outcome.printed) == (None, CANNOT_GET)


class TestSetPortLRO:
    @pytest.mark.parametrize("value, word", [(0, 0), (1, 1), (-1, 0xFFFFFFFF), ((1 << 32) + 2, 2)])
    @pytest.mark.parametrize("switch, port", [(3, 7), (0, 0), (15, 16383)])
    def test_passes_the_value_on(self, host, qdp, value, word, switch, port):
        host.script("Qdp_SetLRO")
        assert qdp.call("SetPortLRO", switch, port, value) == Outcome(
            None, calls=[Call("Qdp_SetLRO", [PORT, switch, port, word])]
        )

    def test_embedded_host_keeps_it_for_that_port(self, qdp):
        assert [qdp.result("GetPortLRO", 0, port) for port in (4, 5)] == [True, True]
        qdp.result("SetPortLRO", 0, 5, 0)
        assert [qdp.result("GetPortLRO", 0, port) for port in (4, 5)] == [True, False]
        assert qdp.result("GetSwitchLRO", 0) is True
        qdp.result("SetPortLRO", 0, 5, 3)
        assert qdp.result("GetPortLRO", 0, 5) is True

    def test_embedded_host_keeps_port_0_apart_from_the_switch(self, qdp):
        qdp.result("SetPortLRO", 0, 0, 0)
        assert (qdp.result("GetPortLRO", 0, 0), qdp.result("GetSwitchLRO", 0)) == (False, True)

    @pytest.mark.parametrize("switch, port", [(0, 16383), (15, 0)])
    def test_embedded_host_has_no_such_port(self, qdp, switch, port):
        assert qdp.call("SetPortLRO", switch, port, 1).printed == CANNOT_SET


class TestGetSwitchLRO:
    @pytest.mark.parametrize("value", [0, 1, 0x100, 0xFFFFFFFF])
    @pytest.mark.parametrize("switch", [0, 3, 15])
    def test_any_value_but_zero_is_true(self, host, qdp, value, switch):
        host.script("Qdp_GetLRO", outputs=[struct.pack("<I", value)])
        assert qdp.call("GetSwitchLRO", switch) == Outcome(
            value != 0, calls=[Call("Qdp_GetLRO", [SWITCH, switch, 0, Capacity(4)])]
        )

    def test_embedded_host(self, qdp):
        assert [qdp.result("GetSwitchLRO", switch) for switch in (0, 1, 2)] == [True, False, True]
        assert qdp.call("GetSwitchLRO", 3).printed == CANNOT_GET


class TestSetSwitchLRO:
    @pytest.mark.parametrize("value, word", [(0, 0), (1, 1), (-1, 0xFFFFFFFF)])
    @pytest.mark.parametrize("switch", [0, 3, 15])
    def test_passes_the_value_on(self, host, qdp, value, word, switch):
        host.script("Qdp_SetLRO")
        assert qdp.call("SetSwitchLRO", switch, value) == Outcome(
            None, calls=[Call("Qdp_SetLRO", [SWITCH, switch, 0, word])]
        )

    def test_embedded_host_overrides_the_ports(self, qdp):
        qdp.result("SetPortLRO", 0, 5, 0)
        qdp.result("SetSwitchLRO", 0, 1)
        assert qdp.result("GetPortLRO", 0, 5) is True
        qdp.result("SetSwitchLRO", 0, 0)
        assert [qdp.result("GetPortLRO", 0, port) for port in (4, 5)] == [False, False]
        qdp.result("SetPortLRO", 0, 5, 1)
        assert [qdp.result("GetPortLRO", 0, port) for port in (4, 5)] == [False, True]
        assert qdp.result("GetSwitchLRO", 2) is True

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("SetSwitchLRO", 3, 1).printed == CANNOT_SET


@pytest.mark.parametrize("scope, port", [(1, 1), (2, 0)])
def test_embedded_host_refuses_a_malformed_request(host, scope, port):
    value = ctypes.c_uint32(77)
    assert host.libqdp.Qdp_GetLRO(scope, 0, port, ctypes.byref(value)) != 0
    assert value.value == 77
    assert host.libqdp.Qdp_SetLRO(scope, 0, port, 0) != 0
