"""What the commands have in common that enable or disable something of a switch."""

import pytest

from observe import Call, Outcome


class EnabledOnSwitch:
    method = operation = refusal = ""

    @pytest.mark.parametrize("switch, value", [(0, 0), (0, 1), (15, 0), (15, 1)])
    def test_passes_its_arguments_on(self, host, qdp, switch, value):
        host.script(self.operation)
        assert qdp.call(self.method, switch, value) == Outcome(None, calls=[Call(self.operation, [switch, value])])

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
