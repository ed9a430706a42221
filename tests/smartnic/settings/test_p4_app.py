"""The switch of the SmartNIC's P4 user application."""

import struct

import pytest

from observe import Call, Capacity, Outcome

GET = Call("Qdp_P4AppGet", [Capacity(4)])


class TestP4AppSet:
    @pytest.mark.parametrize("enable", [0, 1, 7, 0xFFFFFFFF])
    def test_the_library_gets_the_value_as_it_is(self, qdp, enable):
        assert qdp.call("P4AppSet", enable) == Outcome(True, calls=[Call("Qdp_P4AppSet", [enable])])

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library_leaves_none_and_no_message(self, host, qdp, status):
        host.fail("Qdp_P4AppSet", status)
        assert qdp.call("P4AppSet", 1) == Outcome(None, calls=[Call("Qdp_P4AppSet", [1])])


class TestP4AppGet:
    @pytest.mark.parametrize("word, shown", [(0, False), (1, True), (2, True), (0x80000000, True)])
    def test_any_word_but_0_is_true(self, host, qdp, word, shown):
        host.script("Qdp_P4AppGet", outputs=[struct.pack("<I", word)])
        assert qdp.call("P4AppGet") == Outcome(shown, calls=[GET])

    def test_an_answer_without_bytes_is_false(self, host, qdp):
        host.script("Qdp_P4AppGet")
        assert qdp.call("P4AppGet", "ignored", 9) == Outcome(False, calls=[GET])

    @pytest.mark.parametrize("status", [1, 0xFFFFFFFF])
    def test_a_refusing_library_leaves_none_and_no_message(self, host, qdp, status):
        host.fail("Qdp_P4AppGet", status)
        assert qdp.call("P4AppGet") == Outcome(None, calls=[GET])

    def test_embedded_host_gets_what_was_set(self, qdp):
        assert qdp.result("P4AppGet") is True
        assert qdp.result("P4AppSet", 0) is True
        assert qdp.result("P4AppGet") is False
        qdp.result("P4AppSet", 2)
        assert qdp.result("P4AppGet") is True
