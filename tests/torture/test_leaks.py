"""Every method, called many times as it succeeds, as it refuses arguments and as the platform refuses it: nothing
grows."""

import gc
import os
import sys

import pytest

from observe import standard_error
from contract import RECIPES
from recipes import is_made_of
from refusals import statuses_of

WARM_UPS = 5
CALLS = 100 if sys.getallocatedblocks() else 10  # under the sanitizers, which do not count blocks
ROUNDS = 5

# What is lost in each call grows by CALLS; what comes and goes meanwhile does not.
NOISE = CALLS // 2

SHARED_OBJECTS = [None, True, False, (), "", *range(-5, 257)]

TOO_LARGE = 0xFFFFFFFF


def held(arguments):
    """All objects of arguments, the nested ones too."""
    for each in arguments:
        yield each
        if isinstance(each, (tuple, dict)):
            yield from held(each.values() if isinstance(each, dict) else each)


def keys_of(result):
    """The keys of all dicts in a result."""
    if isinstance(result, dict):
        yield from result
        result = list(result.values())
    for each in result if isinstance(result, (list, tuple)) else []:
        yield from keys_of(each)


def wrong(value):
    """A value of the same type, that the method or the host knows nothing of."""
    if isinstance(value, bool):
        return "neither"
    return {int: TOO_LARGE, str: "unknown", tuple: ("wrong", 1.5), dict: {"models": "wrong"}}[type(value)]


def wrong_calls(arguments):
    """Arguments with one that is refused, in each place; a tuple that does not parse; and one of a wrong length."""
    for i, value in enumerate(arguments):
        yield (*arguments[:i], wrong(value), *arguments[i + 1 :])
        yield (*arguments[:i], 1.5, *arguments[i + 1 :])
    yield (*arguments, 1)
    yield arguments[:-1]


@pytest.fixture
def grows_nothing(frozen, tortured):
    """Calls a method with a recipe's arguments, again and again, and looks at what grew."""
    torture, module = tortured

    def call(method, recipe, prepare):
        arguments = is_made_of(recipe, module)
        prepare()
        try:
            return method(*arguments)
        except Exception:  # among them SystemError for an exception beside None
            return None

    def look(method, recipe, prepare=lambda: None):
        own = [] if callable(recipe) else [recipe, *held(recipe)]
        for _ in range(WARM_UPS):
            result = call(method, recipe, prepare)
        keys = list(dict.fromkeys(keys_of(result)))  # interned: lost references to them are no more blocks
        del result
        grown = None
        for _ in range(ROUNDS):  # what is lost is lost in every round
            gc.collect()
            before = measure(own, keys)
            objects = sys.getallocatedblocks()
            for _ in range(CALLS):
                call(method, recipe, prepare)
            gc.collect()
            more_objects = sys.getallocatedblocks() - objects
            grown = growth(before, measure(own, keys), more_objects)
            if not grown:
                return
        assert grown == []

    def growth(before, after, more_objects):
        found = [what for what in ("module's blocks", "values", "files") if after[what] != before[what]]
        if more_objects >= NOISE:
            found.append(f"{more_objects} blocks of the interpreter")
        for what in ("shared", "arguments", "keys"):
            for i, (old, new) in enumerate(zip(before[what], after[what], strict=True)):
                if abs(new - old) >= NOISE:
                    found.append(f"{new - old} references of {what} object {i}")
        return found

    def measure(own, keys):
        return {
            "module's blocks": torture.blocks_out(),
            "values": frozen.unreleased_values(),
            "files": len(os.listdir("/proc/self/fd")),
            "shared": [sys.getrefcount(each) for each in SHARED_OBJECTS],
            "arguments": [sys.getrefcount(each) for each in own],
            "keys": [sys.getrefcount(each) for each in keys],
        }

    return look


@pytest.fixture(params=RECIPES)
def name(request):
    return request.param


def test_success(tortured, grows_nothing, name):
    _, module = tortured
    with standard_error():
        grows_nothing(getattr(module, name), RECIPES[name])


def test_refused_arguments(tortured, grows_nothing, name):
    _, module = tortured
    good = is_made_of(RECIPES[name], module)
    for arguments in wrong_calls(good):
        with standard_error():
            grows_nothing(getattr(module, name), arguments)


def test_refusing_platform(frozen, tortured, grows_nothing, tally, name):
    _, module = tortured
    method = getattr(module, name)
    arguments = is_made_of(RECIPES[name], module)
    with frozen.recording() as calls, standard_error():
        method(*arguments)
    for operation in dict.fromkeys(call.operation for call in calls):
        for status in statuses_of(operation)[:1]:
            with standard_error():
                grows_nothing(method, RECIPES[name], lambda refused=(operation, status): frozen.fail(*refused))
            tally("operations, many times each, were made to fail", 1)
