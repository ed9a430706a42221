"""The host's physical functions."""

import struct

import pytest

from adversity import starved
from observe import Outcome
from smartnic.commands import OPERATION, at_bounds, command

GOOD = (4, 1, 2, 3, 4)
BOUNDS = (6, 1024, 1024, 1024, 1024)


def request(count, *pfs):
    return command(0, struct.pack("<6H", count, *pfs, 0))


class TestHostPFSet:
    @pytest.mark.parametrize("arguments", [GOOD, (0, 0, 0, 0, 0), (3, 0x101, 0x203, 0x302, 7), (5, 1023, 1, 2, 3)])
    def test_the_fifth_slot_is_sent_as_zero(self, host, qdp, arguments):
        host.script(OPERATION)
        assert qdp.call("HostPFSet", *arguments) == Outcome(None, calls=[request(*arguments)])

    @pytest.mark.parametrize("arguments", at_bounds(GOOD, BOUNDS))
    def test_bounds_that_are_accepted(self, host, qdp, arguments):
        host.script(OPERATION)
        assert qdp.call("HostPFSet", *arguments) == Outcome(None, calls=[request(*arguments)])

    def test_embedded_host_keeps_what_is_set(self, qdp):
        assert qdp.result("HostPFSet", 5, 9, 8, 7, 1023) is None
        assert qdp.result("HostPFGet") == [9, 8, 7, 1023, 0]
        assert qdp.result("HostPFSet", 0, 9, 8, 7, 6) is None
        assert qdp.result("HostPFGet") == []


class TestHostPFGet:
    call = command(1, response=12)

    @pytest.mark.parametrize("count", range(6))
    def test_as_many_pfs_as_are_counted(self, host, qdp, count):
        pfs = [0xFFFF, 1, 1024, 0x8000, 5]
        host.script(OPERATION, outputs=[struct.pack("<6H", count, *pfs)])
        assert qdp.call("HostPFGet") == Outcome(pfs[:count], calls=[self.call])

    @pytest.mark.parametrize("count", [6, 7, 0x100, 0xFFFF])
    def test_a_count_of_more_than_five(self, host, qdp, count):
        host.script(OPERATION, outputs=[struct.pack("<6H", count, *range(5))])
        assert qdp.call("HostPFGet") == Outcome(None, "Error in geting host pfs\n", calls=[self.call])

    def test_a_short_answer_decodes_as_zeros(self, host, qdp):
        host.script(OPERATION, outputs=[struct.pack("<2H", 3, 7)])
        assert qdp.call("HostPFGet") == Outcome([7, 0, 0], calls=[self.call])

    def test_an_answer_without_bytes_is_an_empty_list(self, host, qdp):
        host.script(OPERATION)
        assert qdp.call("HostPFGet") == Outcome([], calls=[self.call])

    def test_arguments_are_ignored(self, host, qdp):
        host.script(OPERATION)
        assert qdp.call("HostPFGet", "x", 99) == Outcome([], calls=[self.call])

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library(self, host, qdp, status):
        host.script(OPERATION, status, outputs=[struct.pack("<6H", 6, *range(5))])
        assert qdp.call("HostPFGet") == Outcome(None, "Failed to get host pfs\n", calls=[self.call])

    def test_lack_of_memory_is_printed_for_the_list_and_left_set_for_a_pf(self, qdp):
        qdp.result("HostPFSet", 2, 1022, 1023, 0, 0)
        assert starved(qdp, "HostPFGet") == [
            Outcome(None, "Failed to allocate buffer.\n", left_set=(MemoryError, "")),
            Outcome(None, left_set=(SystemError, "Failed to allocate buffer.\n")),
        ]

    def test_embedded_host(self, qdp):
        assert qdp.call("HostPFGet") == Outcome([1, 2, 3, 4], calls=[self.call])
