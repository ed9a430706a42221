"""All methods on the default scenario: each succeeds, with the kind of result that it is documented to have."""

import inspect

import pytest

import _libqdp
from observe import Outcome
from contract import BY_NAME, METHODS, RECIPES
from recipes import ALIAS, SMARTNIC_PORT, after, is_made_of


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


@pytest.mark.parametrize("name", [method.name for method in METHODS if method.success])
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
    assert outcome == Outcome(outcome.result, BY_NAME[name].printed, calls=outcome.calls)
    assert type(outcome.result) is (BY_NAME[name].success or type(None))
    if type(outcome.result) in (list, tuple, str, dict):
        assert outcome.result


@pytest.mark.parametrize("name", RECIPES)
def test_success_again(configured, qdp, name):
    """A recipe stands for any number of calls."""
    for _ in range(3):
        outcome = qdp.call(name, *is_made_of(RECIPES[name], qdp.module))
        assert (outcome.printed, outcome.raised, outcome.left_set) == (BY_NAME[name].printed, None, None)
