"""The RSS override of a vNIC port."""

import struct

import pytest

from adversity import starved
from observe import Outcome
from smartnic.commands import OPERATION, command


class TestP4RssOverrideSet:
    @staticmethod
    def request(switch, port, queue, flag):
        return command(12, struct.pack("<HHBB", switch, port, queue, flag))

    @pytest.mark.parametrize(
        "arguments, sent",
        [
            ((0, 0, 0, 0), (0, 0, 0, 0)),
            ((15, 1022, 1, 63), (15, 1022, 63, 1)),
            ((3, 258, 1, 0), (3, 258, 0, 1)),
            ((3, 258, 5, 7), (3, 258, 7, 1)),
            ((3, 258, 256, 7), (3, 258, 7, 1)),
            ((3, 258, -1, 63), (3, 258, 63, 1)),
            ((3, 258, 0, 64), (3, 258, 64, 0)),
            ((3, 258, 0, 200), (3, 258, 200, 0)),
            ((3, 258, 0, 0x1FE), (3, 258, 0xFE, 0)),
            ((3, 258, 0, -1), (3, 258, 0xFF, 0)),
        ],
    )
    def test_request(self, host, qdp, arguments, sent):
        host.script(OPERATION)
        assert qdp.call("P4RssOverrideSet", *arguments) == Outcome(True, calls=[self.request(*sent)])

    def test_embedded_host_keeps_what_is_set(self, qdp):
        assert qdp.result("P4RssOverrideSet", 0, 1022, 5, 63) is True
        assert qdp.result("P4RssOverrideSet", 1, 1022, 0, 200) is True
        assert [list(qdp.result("P4RssOverrideGet", switch, 1022).values()) for switch in range(3)] == [
            [0, 1022, 63, 1],
            [1, 1022, 200, 0],
            [2, 1022, 0, 0],
        ]

    def test_embedded_host_has_no_such_switch(self, qdp):
        assert qdp.call("P4RssOverrideSet", 3, 0, 0, 0).printed == "Failed to set RSS override\n"


class TestP4RssOverrideGet:
    @staticmethod
    def call(switch, port):
        return command(13, struct.pack("<HHBB", switch, port, 0, 0), response=6)

    @pytest.mark.parametrize(
        "answer", [(1, 2, 3, 1), (0, 0, 0, 0), (0xFFFF, 0xFFFE, 0xFD, -1), (0x8000, 0x7FFF, 0x80, -128), (1, 2, 3, 127)]
    )
    def test_result(self, host, qdp, answer):
        host.script(OPERATION, outputs=[struct.pack("<HHBb", *answer)])
        expected = dict(zip(("swID", "fcPortID", "rssOverrideQid", "rssOverride"), answer))
        assert qdp.call("P4RssOverrideGet", 3, 258) == Outcome(expected, calls=[self.call(3, 258)])

    def test_a_short_answer_decodes_as_zeros(self, host, qdp):
        host.script(OPERATION, outputs=[struct.pack("<HH", 1, 2)])
        expected = {"swID": 1, "fcPortID": 2, "rssOverrideQid": 0, "rssOverride": 0}
        assert qdp.call("P4RssOverrideGet", 3, 4) == Outcome(expected, calls=[self.call(3, 4)])

    @pytest.mark.parametrize("arguments", [(0, 0), (15, 0), (0, 1022), (15, 1022)])
    def test_bounds_that_are_accepted(self, host, qdp, arguments):
        host.script(OPERATION)
        assert qdp.call("P4RssOverrideGet", *arguments).calls == [self.call(*arguments)]

    def test_lack_of_memory_is_printed_for_the_dict_and_left_set_for_what_is_in_it(self, qdp):
        assert starved(qdp, "P4RssOverrideGet", 2, 1022) == [
            Outcome(None, "Failed to allocate buffer.\n", left_set=(MemoryError, "")),
            Outcome(None, left_set=(SystemError, "Failed to set dict item.\n")),
            Outcome(None, left_set=(SystemError, "Failed to allocate buffer.\n")),
        ]

    def test_embedded_host(self, qdp):
        assert qdp.call("P4RssOverrideGet", 2, 96) == Outcome(
            {"swID": 2, "fcPortID": 96, "rssOverrideQid": 32, "rssOverride": 1}, calls=[self.call(2, 96)]
        )
        assert qdp.call("P4RssOverrideGet", 3, 96).printed == "Failed to get RSS override info.\n"
