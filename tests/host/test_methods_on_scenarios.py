"""The module's methods on the scenarios that ship beside the default one: what can succeed there does."""

import pytest

import recipes
from contract import RECIPES
from recipes import is_made_of

# Methods whose success is a text on standard error.
SAYING = "DumpDecapFlowTable DumpDecapSaFlowTable DumpPortFlow FPOHWDestroy".split()

# What depends on the default scenario: other arguments on the SmartNIC host in mux mode.
ON_MUX = {
    "AddMACEntry": (0, 4, 0xFECA01004002, 7),
    "MigratePort": None,  # the balancer is automatic
    "UnpinPort": None,
    "MigrateNetQFilter": None,
    "GetL3SPANRecord": None,  # it has none
    "GetFPOStats": (0, (0, 1)),
    "LifPortUpdate": (16, 1, 0, 0),
    "PortUpdate": (16, 20),
    "P4PortMirrorTableDump": (64, 0),
    "P4RssOverrideSet": (0, 3, 1, 2),
    "P4RssOverrideGet": (0, 64),
    "FPOQueryContextMgr": (0, 100, 0),
    "CTStatsGet": (256,),
    "TableCTStatsGet": (256, 0),
    "TableCTStateGet": (0, 0),
    "TableRegMACGet": lambda module: (
        module.TableInputGet(16)["l2Seg"],
        recipes.number(module.ListPorts(0)[2]["hwAddr"]),
    ),
    "TableFlowKeyGet": lambda module: (
        *(0, recipes.number("02:10:00:00:00:40"), recipes.number("02:40:00:0a:00:01"), 256, 0, 0, 6, 1),
        *(0x0A090001, 0, 0x0A090801, 0, 32768, 443),
    ),
    "GetSwitchMuxMode": (0,),
    "ListSwitchMuxVLAN": (0, 0),
    "ListSwitchShadowPorts": (0, 0),
}

# From this method on, they are about the SmartNIC, which the large host lacks.
FIRST_OF_SMARTNIC = "GetSwitchMuxMode"
ON_LARGE = {
    "GetL3SPANRecord": None,
    "MigratePort": lambda module: (0, 3, module.ListPorts(0)[3]["txQLM"][0], 3, 1),
    "MigrateNetQFilter": (0, 5, 1),
    "InjectLBTraffic": (0, ((0, 0xFFFFFFFF, 5, 0, 1), (5, 0, 7, 0, 2))),
    "UnpinPort": (0, 3, 1),  # which the migration before it has pinned
}


def arguments_of(name, others, alias, module):
    """The arguments of a method; None when it cannot succeed."""
    recipe = others.get(name, RECIPES[name])
    if recipe is None:
        return None
    return [alias if each == recipes.ALIAS else each for each in is_made_of(recipe, module)]


def is_nothing(value):
    """Whether a result says nothing but zeros."""
    if isinstance(value, dict):
        return all(map(is_nothing, value.values()))
    if isinstance(value, (list, tuple)):
        return all(map(is_nothing, value))
    return not value


def goes_wrong(qdp, name, arguments):
    """Whether a call fails or says nothing."""
    outcome = qdp.call(name, *arguments)
    if outcome.raised or outcome.left_set or (outcome.printed and name not in SAYING):
        return True
    return isinstance(outcome.result, (dict, list, tuple)) and is_nothing(outcome.result)


@pytest.fixture
def start(host, control, scenarios, exported):
    """Becomes the host of a scenario, at a frozen time."""

    def start(scenario):
        assert control.load(scenarios / scenario) == 0, control.error()
        assert exported.LibraryInit() == 0
        host.freeze()
        host.advance(1000)

    return start


def test_all_that_can_succeed_in_mux_mode(start, qdp, monkeypatch):
    # The recipes ask the host for what it has, by these.
    monkeypatch.setattr(recipes, "SMARTNIC_SWITCH", 0)
    monkeypatch.setattr(recipes, "SMARTNIC_LCORE", 0)
    wrong = []
    for name in RECIPES:
        start("mux.json")
        arguments = arguments_of(name, ON_MUX, "dvs-mux", qdp.module)
        if arguments is not None and goes_wrong(qdp, name, arguments):
            wrong.append(name)
    assert wrong == []


def test_all_of_the_datapath_that_can_succeed_on_the_large_host(release_only, start, qdp):
    start("large.json")
    names = list(RECIPES)
    wrong = []
    for name in names[: names.index(FIRST_OF_SMARTNIC)]:
        arguments = arguments_of(name, ON_LARGE, "dvs-00", qdp.module)
        if arguments is not None and goes_wrong(qdp, name, arguments):
            wrong.append(name)
    assert wrong == []
