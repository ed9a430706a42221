"""What the tests of a switch's properties share."""

import pytest

from observe import Call

# Steps of resolving an alias that tell nothing beyond the alias itself; their arguments are addresses.
RESOLVING = ("DVS_ClassName", "DVS_SwitchId", "DVSState_HostPropLookup", "DVSState_GlobalPropLookup", "DVSData_Data")


@pytest.fixture
def on_switch(configured, qdp):
    """Calls a method that names a switch by its alias. Of the platform calls only the lookup of the alias is left of
    resolving it, and a released value has no address."""

    def call(method, *arguments):
        outcome = qdp.call(method, *arguments)
        outcome.calls = [
            Call(each.operation, []) if each.operation == "DVSHCK_DataFree" else each
            for each in outcome.calls
            if each.operation not in RESOLVING
        ]
        return outcome

    return call
