"""The debug buffer of the load balancer."""

import re
import subprocess

import pytest

from adversity import starved
from observe import Call, Capacity, Outcome

ROOM = 2097152  # bytes of text; the store has one more


def dump(switch, flag=0):
    return Call("Qdp_DumpLBDebugBuf", [switch, flag % (1 << 64), Capacity(ROOM)])


def flush(switch):
    return Call("Qdp_FlushLBDebugBuf", [switch])


class TestDumpLBDebugBuf:
    @pytest.mark.parametrize("text", ["", "one line\n", "[    1.000] a\n[    2.000] b\n", "\u00b5s \u20ac \U0001f600"])
    def test_the_text_of_the_buffer(self, host, qdp, text):
        host.script("Qdp_DumpLBDebugBuf", outputs=[text.encode()])
        assert qdp.call("DumpLBDebugBuf", 3, 0) == Outcome(text, calls=[dump(3)])

    @pytest.mark.parametrize(
        "flag, passed",
        [(0, 0), (1, 1), (127, 127), (128, -128), (255, -1), (256, 0), (0xFFFFFF7F, 127), (-1, -1), (0x1FE, -2)],
    )
    def test_the_low_byte_of_the_flag_is_passed_on_with_its_sign(self, host, qdp, flag, passed):
        host.script("Qdp_DumpLBDebugBuf", outputs=[b"x"])
        assert qdp.call("DumpLBDebugBuf", 0, flag) == Outcome("x", calls=[dump(0, passed)])

    def test_exactly_the_returned_number_of_bytes(self, host, qdp):
        host.script("Qdp_DumpLBDebugBuf", outputs=[b"abcdef"], sizes={0: 3})
        assert qdp.result("DumpLBDebugBuf", 0, 0) == "abc"

    def test_the_store_is_zeroed_for_every_call(self, host, qdp):
        host.script("Qdp_DumpLBDebugBuf", outputs=[b"x" * ROOM])
        assert qdp.result("DumpLBDebugBuf", 0, 0) == "x" * ROOM
        host.script("Qdp_DumpLBDebugBuf", outputs=[b"ab"], sizes={0: ROOM})
        assert qdp.result("DumpLBDebugBuf", 0, 0) == "ab" + "\0" * (ROOM - 2)

    def test_an_untouched_length_is_the_whole_buffer(self, host, qdp):
        host.script("Qdp_DumpLBDebugBuf")
        assert qdp.result("DumpLBDebugBuf", 0, 0) == "\0" * ROOM

    @pytest.mark.parametrize("size", [ROOM + 1, ROOM + 2, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF])
    def test_a_length_beyond_the_store_ends_with_the_store(self, host, qdp, size):
        host.script("Qdp_DumpLBDebugBuf", outputs=[b"y" * ROOM], sizes={0: size})
        assert qdp.result("DumpLBDebugBuf", 0, 0) == "y" * ROOM + "\0"

    def test_a_text_that_is_not_utf_8_is_the_interpreters_error(self, host, qdp):
        host.script("Qdp_DumpLBDebugBuf", outputs=[b"a\xff"])
        assert qdp.call("DumpLBDebugBuf", 0, 0) == Outcome(
            raised=(UnicodeDecodeError, "'utf-8' codec can't decode byte 0xff in position 1: invalid start byte"),
            calls=[dump(0)],
        )

    @pytest.mark.parametrize("status, shown", [(1, "0x1"), (0xBAD0003, "0xbad0003"), (0xFFFFFFFF, "0xffffffff")])
    def test_a_refusing_library(self, host, qdp, status, shown):
        host.fail("Qdp_DumpLBDebugBuf", status)
        text = f"ValueError: Failed to dump debug buffer: {shown}.\n"
        assert qdp.call("DumpLBDebugBuf", 2, 0) == Outcome(None, text, calls=[dump(2)])

    @pytest.mark.parametrize("switch", [0, 15])
    def test_switch_numbers_that_are_accepted(self, host, qdp, switch):
        host.script("Qdp_DumpLBDebugBuf", outputs=[b"x"])
        assert qdp.call("DumpLBDebugBuf", switch, 0) == Outcome("x", calls=[dump(switch)])

    def test_lack_of_memory_is_the_interpreters_error(self, qdp):
        assert starved(qdp, "DumpLBDebugBuf", 0, 0) == [Outcome(raised=(MemoryError, ""))]

    def test_the_store_takes_no_room_in_the_file(self, build):
        sections = subprocess.run(
            ["readelf", "-SW", str(build / "_libqdp.abi3.so")], capture_output=True, text=True, check=True
        ).stdout
        size = re.search(r" \.bss +NOBITS +[0-9a-f]+ +[0-9a-f]+ +([0-9a-f]+)", sections)[1]
        assert int(size, 16) >= ROOM + 1

    def test_embedded_host(self, qdp):
        lines = qdp.result("DumpLBDebugBuf", 1, 0).splitlines()
        assert lines[:2] == ["[    0.000] dvs-storage: 4 lcores, 8 ports", "[    0.000] nic4 rx 0 -> context 0"]

    def test_embedded_host_adds_what_happens(self, configured, qdp):
        configured.freeze()
        qdp.result("FlushLBDebugBuf", 0)
        qdp.result("SetLBParam", "dvs-production", "cpuload_low", 7)
        qdp.result("InjectLBTraffic", 0, ((0, -1, 5, 0, 1),))
        text = re.sub(r"\[.{9}\]", "[]", qdp.result("DumpLBDebugBuf", 0, 0))
        assert text == "[] parameter 2 = 7\n[] traffic of 1 flows injected\n"

    def test_embedded_host_has_no_such_switch(self, qdp):
        text = "ValueError: Failed to dump debug buffer: 0xbad0003.\n"
        assert qdp.call("DumpLBDebugBuf", 3, 0) == Outcome(None, text, calls=[dump(3)])


class TestFlushLBDebugBuf:
    @pytest.mark.parametrize("switch", [0, 15])
    def test_returns_none(self, host, qdp, switch):
        host.script("Qdp_FlushLBDebugBuf")
        assert qdp.call("FlushLBDebugBuf", switch) == Outcome(None, calls=[flush(switch)])

    @pytest.mark.parametrize("status, shown", [(1, "0x1"), (0xBAD0003, "0xbad0003"), (0xFFFFFFFF, "0xffffffff")])
    def test_a_refusing_library(self, host, qdp, status, shown):
        host.fail("Qdp_FlushLBDebugBuf", status)
        text = f"ValueError: Failed to flush debug buffer: {shown}.\n"
        assert qdp.call("FlushLBDebugBuf", 2) == Outcome(None, text, calls=[flush(2)])

    def test_embedded_host_empties_the_buffer_of_that_switch(self, qdp):
        other = qdp.result("DumpLBDebugBuf", 1, 0)
        qdp.result("FlushLBDebugBuf", 0)
        assert qdp.result("DumpLBDebugBuf", 0, 0) == ""
        assert qdp.result("DumpLBDebugBuf", 1, 0) == other != ""

    def test_embedded_host_has_no_such_switch(self, qdp):
        text = "ValueError: Failed to flush debug buffer: 0xbad0003.\n"
        assert qdp.call("FlushLBDebugBuf", 3) == Outcome(None, text, calls=[flush(3)])
