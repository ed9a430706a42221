"""What the commands have in common that enable or disable something of a switch."""

import pytest

from observe import Call, Outcome, refused

BAD_SWITCHES = [16, 17, 0xFFFFFFFF, -1]


class EnabledOnSwitch:
    method = operation = refusal = ""

    @pytest.mark.parametrize("switch, value", [(0, 0), (0, 1), (15, 0), (15, 1)])
    def test_passes_its_arguments_on(self, host, qdp, switch, value):
        host.script(self.operation)
        assert qdp.call(self.method, switch, value) == Outcome(None, calls=[Call(self.operation, [switch, value])])

    @pytest.mark.parametrize("switch", BAD_SWITCHES)
    def test_a_switch_number_out_of_range(self, qdp, switch):
        assert qdp.call(self.method, switch, 0) == refused()

    @pytest.mark.parametrize("value", [2, 3, 0xFFFFFFFF, -1])
    def test_a_value_out_of_range(self, qdp, value):
        assert qdp.call(self.method, 0, value) == refused()

    @pytest.mark.parametrize("arguments", [(), (0,), (0, 0, 0), ("0", 0), (0, None), (0, 1.0)])
    def test_a_tuple_that_does_not_parse(self, qdp, arguments):
        assert qdp.call(self.method, *arguments) == refused(left_set=TypeError)

    @pytest.mark.parametrize("value, word", [(0, "disable"), (1, "enable")])
    def test_a_refusing_library(self, host, qdp, value, word):
        host.fail(self.operation)
        assert qdp.call(self.method, 3, value) == Outcome(
            None, self.refusal.format(word), calls=[Call(self.operation, [3, value])]
        )

    @pytest.mark.parametrize("value, word", [(0, "disable"), (1, "enable")])
    def test_embedded_host(self, qdp, value, word):
        assert qdp.call(self.method, 1, value).printed == ""
        assert qdp.call(self.method, 3, value).printed == self.refusal.format(word)
