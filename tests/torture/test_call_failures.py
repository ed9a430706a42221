"""Every platform operation that a method calls is refused in turn, with several statuses: nothing crashes, nothing
leaks, and the method fails in its documented form."""

import pytest

from documented import GOES_ON, PRINTED, RAISED, RETURNED, RETURNING_NULL, SILENT
from observe import Observer
from recipes import RECIPES, is_made_of
from refusals import calls_that_may_be_refused


def is_documented(name, operation, outcome, success):
    """Whether an outcome is one of those that the method's callers know."""
    if outcome.printed and not PRINTED.fullmatch(outcome.printed) or outcome.left_set:
        return False
    if operation in GOES_ON.get(name, []) and type(outcome.result) is type(success) and outcome.result is not None:
        return not outcome.raised
    if name in RAISED:
        return outcome.raised in RAISED[name] and not outcome.printed
    returned = RETURNED.get(name)
    if outcome.raised or type(outcome.result) is not type(returned) or outcome.result != returned:
        return False
    if outcome.returned_null != (name in RETURNING_NULL):
        return False
    if outcome.printed == "":
        return operation in SILENT.get(name, []) or success is None and operation in GOES_ON.get(name, [])
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
    out_before = host.values_out(), torture.blocks_out()
    for refused in calls_that_may_be_refused(success.calls):
        outcome = call(refused)
        assert is_documented(name, refused[0], outcome, success.result), (refused, outcome)
        assert (host.values_out(), torture.blocks_out()) == out_before, refused
        tally("platform calls were made to fail", 1)
