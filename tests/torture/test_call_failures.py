"""Every platform operation that a method calls is refused in turn, with several statuses: nothing crashes, nothing
leaks, and the method fails in its documented form."""

import pytest

from contract import BY_NAME, RECIPES
from documented import PRINTED
from observe import Observer
from recipes import is_made_of
from refusals import calls_that_may_be_refused


def is_documented(method, operation, outcome, success):
    """Whether an outcome is one of those that the method's callers know."""
    goes_on = operation in method.goes_on
    if outcome.printed and not PRINTED.fullmatch(outcome.printed) or outcome.left_set:
        return False
    if goes_on and type(outcome.result) is type(success) and outcome.result is not None:
        return not outcome.raised
    if method.raises:
        return outcome.raised in method.raises.values() and not outcome.printed
    if outcome.raised or type(outcome.result) is not type(method.returns) or outcome.result != method.returns:
        return False
    if outcome.returned_null != method.refusal_is_null:
        return False
    if outcome.printed == "":
        return operation in method.silent or success is None and goes_on
    return True


@pytest.mark.parametrize("name", RECIPES)
def test_refused_operations(host, exported, tortured, tally, name):
    torture, module = tortured
    observer = Observer(module, host)

    def call(refused=None):
        host.reset()
        host.freeze()
        assert exported.LibraryInit() == 0
        arguments = is_made_of(RECIPES[name], module)
        if refused:
            operation, nth, status = refused
            host.fail(operation, status, nth=nth)
        return observer.call(name, *arguments)

    success = call()
    out_before = host.unreleased_values(), torture.blocks_out()
    for refused in calls_that_may_be_refused(success.calls):
        outcome = call(refused)
        assert is_documented(BY_NAME[name], refused[0], outcome, success.result), (refused, outcome)
        assert (host.unreleased_values(), torture.blocks_out()) == out_before, refused
        tally("platform calls were made to fail", 1)
