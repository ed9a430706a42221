"""All methods on the default scenario: each succeeds, with the kind of result that it is documented to have."""

import inspect

import pytest

import _libqdp
from observe import Outcome
from contract import RECIPES
from recipes import ALIAS, SMARTNIC_PORT, after, is_made_of

# Methods whose success is a fixed text.
TEXTS = {
    "DumpDecapFlowTable": "Dump Decap  Flow Not supported below 2.10.0.0\n",
    "DumpDecapSaFlowTable": "Dump Decap  Flow Not supported below 2.10.0.0\n",
    "DumpPortFlow": "Dump Port Flow Not supported below 2.10.0.0\n",
    "FPOHWDestroy": "Not supported in release build.\n\n",
}

# What the methods return that return neither a dict nor None.
KINDS = {
    list: """
        ListSwitches ListPorts GetFlowStats GetUplinkQueueStats ListRSSEngine ListDevAffinity GetFPOStats HostPFGet
        P4HWTableList P4HWTableDump P4MirrorTableDump P4PortMirrorTableDump FPOQueryContextMgr
    """.split(),
    tuple: "GetUplinkRingSize ListLCoreIDs DumpLBStats".split(),
    str: "DumpLBDebugBuf GetLBMetric".split(),
    bool: """
        SetSwitchFilterTypes SetLBMetric GetSwitchNUMATeam GetPortLRO GetSwitchLRO SetSwitchMinFlowLayer EnableFPO
        InitMbufFastslabs GetOffloadFlows GetOffloadICMPEcho P4AppSet P4AppGet P4UKLatencySet AdvStatsGetEnabled
        P4RssOverrideSet P4LogLevelSet
    """.split(),
    int: """
        GetPanicOnTxHang GetSwitchBurstSize GetSwitchOverlayL2Flow GetSwitchMinFlowLayer GetSwitchMetaFlow
        SetSwitchMetaFlow GetFlowTimeout GetRefreshPktInjectionConfig AgingIntervalGet
    """.split(),
}

# Methods that only act, or whose success is a text.
RETURNING_NONE = [
    *TEXTS,
    *"""
    ClearPortMACTable AddMACEntry DelMACEntry ClearSwitchMACTable GetRepPortStats MigratePort UnpinPort ResetPort
    SetUplinkMACLearn ClearSwitchFlowTable EnableSwitchFlowCache SetPanicOnTxHang MigrateNetQFilter SetUplinkRingSize
    SetDevAffinity FlushLBDebugBuf SetLBParam InjectLBTraffic SetSwitchNUMATeam SetSwitchBurstSize
    SetSwitchOverlayL2Flow SetPortLRO SetSwitchLRO SetFlowTimeout SetFPORevalConfig SetFPODelayCtOlConfig
    SetRefreshPktInjectionConfig HostPFSet LifPortCreate LifPortUpdate VlanPortCreate VlanPortUpdate PortUpdate
    PortDelete SetFPOFlowStatsConfig SetOffloadFlows SetOffloadICMPEcho DSCPConfSet P4CacheInvalidate
    AdvStatsSetEnabled AgingIntervalSet
    """.split(),
]

KIND_OF = {name: kind for kind, names in KINDS.items() for name in names}


def kind_of(name):
    return type(None) if name in RETURNING_NONE else KIND_OF.get(name, dict)


def test_every_method_has_a_recipe():
    methods = [name for name, value in vars(_libqdp).items() if inspect.isbuiltin(value)]
    assert len(methods) == 147 and methods == list(RECIPES)


# Where a recipe's own arguments are answered by nothing but zeros, which is right then: what makes the answer say more.
TELLING = {
    "GetPanicOnTxHang": after("SetPanicOnTxHang", 0, 1, returned=(0,)),
    "GetOffloadFlows": after("SetOffloadFlows", ALIAS, 1, returned=(ALIAS,)),
    "GetOffloadICMPEcho": after("SetOffloadICMPEcho", 1),
    "AdvStatsGetEnabled": after("AdvStatsSetEnabled", 0, 1, returned=(0,)),
    "P4CTContextQuery": (1,),
    "TableL2SegGet": after("PortUpdate", SMARTNIC_PORT, 77, returned=(1000 + 77,)),
}


def says_something(value):
    """Whether there is anything in a result that is not zero."""
    if isinstance(value, dict):
        return any(map(says_something, value.values()))
    if isinstance(value, (list, tuple)):
        return any(map(says_something, value))
    return bool(value)


@pytest.mark.parametrize("name", [name for name in RECIPES if name not in RETURNING_NONE])
def test_results_are_not_trivial(configured, qdp, name):
    configured.freeze()
    arguments = is_made_of(TELLING.get(name, RECIPES[name]), qdp.module)
    configured.advance(seconds=1000)  # what was switched on counts from then on
    assert says_something(qdp.result(name, *arguments))


@pytest.mark.parametrize("name", RECIPES)
def test_success(configured, qdp, name):
    configured.freeze()
    configured.advance(seconds=1000)
    arguments = is_made_of(RECIPES[name], qdp.module)
    outcome = qdp.call(name, *arguments)
    assert outcome == Outcome(outcome.result, TEXTS.get(name, ""), calls=outcome.calls)
    assert type(outcome.result) is kind_of(name)
    if type(outcome.result) in (list, tuple, str, dict):
        assert outcome.result


@pytest.mark.parametrize("name", RECIPES)
def test_success_again(configured, qdp, name):
    """A recipe stands for any number of calls."""
    for _ in range(3):
        outcome = qdp.call(name, *is_made_of(RECIPES[name], qdp.module))
        assert (outcome.printed, outcome.raised, outcome.left_set) == (TEXTS.get(name, ""), None, None)
