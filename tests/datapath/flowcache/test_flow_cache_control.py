"""Commands to the flow cache of a switch."""

import pytest

from datapath.enabled import EnabledOnSwitch
from observe import Call, Outcome


class TestClearSwitchFlowTable:
    REFUSAL = "Failed clear switch flow table\n"

    @pytest.mark.parametrize("switch", [0, 15])
    def test_names_the_switch(self, host, qdp, switch):
        host.script("Qdp_Clear_Switch_Flow_Table")
        assert qdp.call("ClearSwitchFlowTable", switch) == Outcome(
            None, calls=[Call("Qdp_Clear_Switch_Flow_Table", [switch])]
        )

    @pytest.mark.parametrize("switch, printed", [(2, ""), (3, REFUSAL)])
    def test_embedded_host(self, qdp, switch, printed):
        assert qdp.call("ClearSwitchFlowTable", switch) == Outcome(
            None, printed, calls=[Call("Qdp_Clear_Switch_Flow_Table", [switch])]
        )


class TestEnableSwitchFlowCache(EnabledOnSwitch):
    method, operation = "EnableSwitchFlowCache", "Qdp_Enable_Switch_Flow_Cache"
    refusal = "Failed to {} switch flow cache.\n"

    def test_its_refusals_name_what_was_tried(self, host, qdp):
        host.fail("Qdp_Enable_Switch_Flow_Cache", times=2)
        assert qdp.call("EnableSwitchFlowCache", 0, 1).printed == "Failed to enable switch flow cache.\n"
        assert qdp.call("EnableSwitchFlowCache", 0, 0).printed == "Failed to disable switch flow cache.\n"
