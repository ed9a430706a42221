"""Results that callbacks of the garbage collector change while they are being built. A method may give another result
or an exception then; it never crashes, leaks nothing, and answers the next call as ever."""

import gc

import pytest

from contract import RECIPES
from observe import exact, standard_error
from recipes import is_made_of

# Containers that the interpreter keeps for reuse: while these are held, each new one is an allocation, at which the
# collector may run.
KEPT = 100
TUPLE_SIZES = 20


def with_contents(found):
    """Containers, and those in them: a dict of numbers is in sight of the collector only by what holds it."""
    seen = {}
    waiting = list(found)
    while waiting:
        each = waiting.pop()
        if type(each) in (list, dict, tuple) and id(each) not in seen:
            seen[id(each)] = each
            waiting += gc.get_referents(each)
    return seen.values()


def clear(container):
    container.clear()


def delete_one(container):
    if isinstance(container, dict):
        container.popitem()
    else:
        del container[len(container) // 2]


def replace_all(container):
    if isinstance(container, dict):
        for key in container:
            container[key] = None
    else:
        container[:] = [None] * len(container)


def extend(container):
    if isinstance(container, dict):
        container.update((f"other {i}", i) for i in range(50))
    else:
        container.extend([None] * 50)


def shorten_and_extend(container):
    clear(container)
    extend(container)


ATTACKS = [clear, delete_one, replace_all, extend, shorten_and_extend]


class Attack:
    """While it lives, each new list and dict that the collector knows is changed, before and after each collection."""

    def __init__(self, change):
        self._change = change
        self.changed = 0

    def __enter__(self):
        self._held = [[[], {}, *(tuple(range(size)) for size in range(1, TUPLE_SIZES + 1))] for _ in range(KEPT)]
        gc.freeze()
        self._threshold = gc.get_threshold()
        gc.callbacks.append(self._run)
        gc.set_threshold(1, 1, 1)
        return self

    def __exit__(self, *exception):
        gc.set_threshold(*self._threshold)
        gc.callbacks.remove(self._run)

    def _run(self, phase, info):
        own = gc.get_objects()
        for each in with_contents(each for each in own if each is not own and each is not info):
            if type(each) in (list, dict) and each and each is not own and each is not info:
                self._change(each)
                self.changed += 1


def outcome(method, arguments):
    """What a call gives and prints."""
    with standard_error() as error:
        try:
            result = exact(method(*arguments))
        except Exception as failure:
            result = type(failure)
    return result, error.text


def lists_dicts(result):
    """Whether a result is a list of dicts, in whose making the collector has many chances to run."""
    return isinstance(result, list) and len(result) > 1 and isinstance(result[0], dict)


@pytest.mark.parametrize("name", RECIPES)
def test_result_changed_by_a_collectors_callback(frozen, tortured, tally, name):
    torture, module = tortured
    method = getattr(module, name)
    usual = outcome(method, is_made_of(RECIPES[name], module))
    before = torture.blocks_out(), frozen.unreleased_values()
    changed = 0
    for change in ATTACKS:
        arguments = is_made_of(RECIPES[name], module)
        with standard_error(), Attack(change) as attack:
            try:
                method(*arguments)
            except Exception:  # of a result that cannot be built any more
                pass
        assert (torture.blocks_out(), frozen.unreleased_values()) == before
        assert outcome(method, is_made_of(RECIPES[name], module)) == usual
        changed += attack.changed
    assert changed or not lists_dicts(method(*is_made_of(RECIPES[name], module)))
    tally("changes were made to results that were being built", changed)
