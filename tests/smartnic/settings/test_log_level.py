"""The log level of the SmartNIC's P4 application."""

import pytest

from adversity import starved
from observe import Outcome
from smartnic.commands import OPERATION, command


class TestP4LogLevelSet:
    @pytest.mark.parametrize("level", range(6))
    def test_request(self, host, qdp, level):
        host.script(OPERATION)
        assert qdp.call("P4LogLevelSet", level) == Outcome(True, calls=[command(14, bytes([level]))])

    @pytest.mark.parametrize("level", range(6))
    def test_embedded_host_keeps_what_is_set(self, qdp, level):
        assert qdp.result("P4LogLevelSet", level) is True
        assert qdp.result("P4LogLevelGet") == {"level": level}


class TestP4LogLevelGet:
    call = command(15, response=1)

    @pytest.mark.parametrize("level", [0, 5, 128, 255])
    def test_result(self, host, qdp, level):
        host.script(OPERATION, outputs=[bytes([level])])
        assert qdp.call("P4LogLevelGet") == Outcome({"level": level}, calls=[self.call])

    def test_an_answer_without_bytes_is_level_0(self, host, qdp):
        host.script(OPERATION)
        assert qdp.call("P4LogLevelGet") == Outcome({"level": 0}, calls=[self.call])

    def test_arguments_are_ignored(self, host, qdp):
        host.script(OPERATION, outputs=[b"\2"])
        assert qdp.call("P4LogLevelGet", "x", 99) == Outcome({"level": 2}, calls=[self.call])

    def test_lack_of_memory_is_printed_for_the_dict_and_left_set_for_what_is_in_it(self, qdp):
        assert starved(qdp, "P4LogLevelGet") == [
            Outcome(None, "Failed to allocate buffer.\n", left_set=(MemoryError, "")),
            Outcome(None, left_set=(SystemError, "Failed to set dict item.\n")),
        ]

    def test_embedded_host(self, qdp):
        assert qdp.call("P4LogLevelGet") == Outcome({"level": 3}, calls=[self.call])
