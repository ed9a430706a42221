"""Mux mode, the mux VLAN map and shadow ports. What all lists share is in test_page.py."""

import ctypes
import struct

import pytest

from adversity import starved
from observe import Call, Capacity, Outcome

MAX = 0xFFFFFFFF


class TestGetSwitchMuxMode:
    """Both of its texts end in an empty line."""

    @staticmethod
    def call(switch):
        return Call("Qdp_Get_Mux_Mode", [switch, Capacity(4)])

    @pytest.mark.parametrize("enabled", [0, 1, 2, MAX])
    def test_result(self, host, qdp, enabled):
        host.script("Qdp_Get_Mux_Mode", outputs=[struct.pack("<I", enabled)])
        assert qdp.call("GetSwitchMuxMode", 3) == Outcome({"enabled": enabled}, calls=[self.call(3)])

    def test_the_result_is_zeroed_before_the_call(self, host, qdp):
        host.script("Qdp_Get_Mux_Mode")
        assert qdp.call("GetSwitchMuxMode", 3) == Outcome({"enabled": 0}, calls=[self.call(3)])

    @pytest.mark.parametrize("switch", [15, 16, MAX, -1, 1 << 32])
    def test_any_switch_number_goes_to_the_library(self, host, qdp, switch):
        host.script("Qdp_Get_Mux_Mode", outputs=[struct.pack("<I", 1)])
        assert qdp.call("GetSwitchMuxMode", switch) == Outcome({"enabled": 1}, calls=[self.call(switch & MAX)])

    def test_lack_of_memory_is_raised(self, qdp):
        assert starved(qdp, "GetSwitchMuxMode", 2) == [Outcome(raised=(MemoryError, ""))]

    @pytest.mark.parametrize("switch, enabled", [(0, 0), (1, 0), (2, 1)])
    def test_embedded_host(self, qdp, switch, enabled):
        assert qdp.result("GetSwitchMuxMode", switch) == {"enabled": enabled}

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("GetSwitchMuxMode", 3).printed == "TypeError: Failed to get mux mode.\n\n"


class Listing:
    """What the two list methods check alike; each test class says which method and which operation."""

    def __init__(self, method, operation):
        self.method = method
        self.operation = operation

    def call(self, switch, start):
        return Call(self.operation, [struct.pack("<II", switch, start), Capacity(520)])

    def lists(self, host, qdp, entries, expected):
        answer = struct.pack("<II", len(entries), 0x12345678) + b"".join(entries)
        host.script(self.operation, outputs=[answer])
        assert qdp.call(self.method, 15, MAX) == Outcome(
            {"portlist": expected, "nextFcPort": 0x12345678}, calls=[self.call(15, MAX)]
        )

    def accepts(self, host, qdp, switch, start):
        host.script(self.operation)
        assert qdp.call(self.method, switch, start) == Outcome(
            {"portlist": [], "nextFcPort": 0}, calls=[self.call(switch, start & MAX)]
        )

    def fails(self, host, qdp, text):
        host.fail(self.operation)
        assert qdp.call(self.method, 1, 2) == Outcome(None, text, calls=[self.call(1, 2)])

    def transmit(self, host, request, capacity):
        """Hands a request straight to the embedded host: the status, and whether anything was written."""
        buffer = ctypes.create_string_buffer(b"#" * 600, 600)
        size = ctypes.c_uint32(capacity)
        status = getattr(host.libqdp, self.operation)(request, len(request), buffer, ctypes.byref(size))
        return status, buffer.raw != b"#" * 600

    def embedded_host_refuses(self, host):
        good = struct.pack("<II", 2, 0)
        assert self.transmit(host, good, 520) == (0, True)
        for request, capacity in [(good, 519), (good, 0), (good + b"\0", 520), (good[:7], 520), (b"", 520)]:
            status, is_written = self.transmit(host, request, capacity)
            assert status != 0 and not is_written


IN_RANGE = [(0, 0), (15, 0), (0, 1023), (0, MAX), (0, -1)]


class TestListSwitchMuxVLAN:
    listing = Listing("ListSwitchMuxVLAN", "Qdp_List_Mux_VLAN_Info")

    def test_the_port_comes_first(self, host, qdp):
        self.listing.lists(
            host,
            qdp,
            [struct.pack("<HHI", 1, 2, 3), struct.pack("<HHI", 0xFFFF, 0xFFFE, 0xFFFFFFFD)],
            [
                {"portID": 3, "fcPortID": 1, "vlanID": 2},
                {"portID": 0xFFFFFFFD, "fcPortID": 0xFFFF, "vlanID": 0xFFFE},
            ],
        )

    @pytest.mark.parametrize("switch, start", IN_RANGE)
    def test_only_the_switch_number_has_a_bound(self, host, qdp, switch, start):
        self.listing.accepts(host, qdp, switch, start)

    def test_a_refusing_library(self, host, qdp):
        self.listing.fails(host, qdp, "Failed to get mux VLAN info\n")

    def test_embedded_host(self, qdp):
        page = qdp.result("ListSwitchMuxVLAN", 2, 65)
        assert page["portlist"][0] == {"portID": 257, "fcPortID": 65, "vlanID": 101}
        assert page["nextFcPort"] == 65 + 64
        assert qdp.result("ListSwitchMuxVLAN", 2, 244) == {"portlist": [], "nextFcPort": 0}

    def test_embedded_host_has_an_empty_list_for_other_switches(self, qdp):
        assert qdp.result("ListSwitchMuxVLAN", 0, 0) == {"portlist": [], "nextFcPort": 0}
        assert qdp.call("ListSwitchMuxVLAN", 3, 0).printed == "Failed to get mux VLAN info\n"

    def test_embedded_host_refuses_malformed_requests(self, host):
        self.listing.embedded_host_refuses(host)


class TestListSwitchShadowPorts:
    listing = Listing("ListSwitchShadowPorts", "Qdp_List_Shadow_Ports")

    def test_packed_entries(self, host, qdp):
        self.listing.lists(
            host,
            qdp,
            [struct.pack("<3H", 1, 2, 3), struct.pack("<3H", 0xFFFF, 0xFFFE, 0xFFFD), struct.pack("<3H", 4, 5, 6)],
            [
                {"fcPortID": 1, "muxPFPortID": 2, "muxVLANID": 3},
                {"fcPortID": 0xFFFF, "muxPFPortID": 0xFFFE, "muxVLANID": 0xFFFD},
                {"fcPortID": 4, "muxPFPortID": 5, "muxVLANID": 6},
            ],
        )

    @pytest.mark.parametrize("switch, start", IN_RANGE)
    def test_only_the_switch_number_has_a_bound(self, host, qdp, switch, start):
        self.listing.accepts(host, qdp, switch, start)

    def test_a_refusing_library(self, host, qdp):
        self.listing.fails(host, qdp, "Failed to get shadow port list\n")

    def test_embedded_host(self, qdp):
        page = qdp.result("ListSwitchShadowPorts", 2, 65)
        assert page["portlist"][:2] == [
            {"fcPortID": 65, "muxPFPortID": 3, "muxVLANID": 101},
            {"fcPortID": 66, "muxPFPortID": 1, "muxVLANID": 102},
        ]
        assert page["nextFcPort"] == 65 + 85

    def test_embedded_host_has_an_empty_list_for_other_switches(self, qdp):
        assert qdp.result("ListSwitchShadowPorts", 1, 0) == {"portlist": [], "nextFcPort": 0}
        assert qdp.call("ListSwitchShadowPorts", 3, 0).printed == "Failed to get shadow port list\n"

    def test_embedded_host_refuses_malformed_requests(self, host):
        self.listing.embedded_host_refuses(host)
