"""Every allocation of every method fails in turn, once and from then on for ever: nothing crashes, nothing leaks, and the
failure is one of the documented forms."""

import gc
import importlib.machinery
import importlib.util
import inspect
import os
import sys

import pytest

import _libqdp
from observe import exact, standard_error
from recipes import RECIPES

BUILDING = [
    "Failed to allocate buffer.\n",
    "Failed to set dict item.\n",
    "Failed to set list item.\n",
    "Failed to set tuple item.\n",
]

# What a method prints when memory fails, in the order of the allocations; most then return None.
PRINTED = {
    "ListSwitches": ["Failed to allocate memory.\n", "Failed to allocate buffer.\n"],
    "ListPorts": ["Failed to allocate memory.\n", "Failed to allocate port list.\n"],
    "GetPortStats": ["Failed to allocate memory.\n", "Failed to allocate stats tuple.\n"],
    "GetRepPortStats": [],
}

# Methods that return NULL when memory fails, and the exceptions they raise then.
RAISING = {}

# A sweep that loses a block loses it every time; what else comes and goes does not grow with the sweeps.
SWEEPS = 3

pytestmark = pytest.mark.skipif(
    os.environ.get("PYTHONMALLOC") == "malloc", reason="the sanitizers' allocator does not count blocks"
)


@pytest.fixture(scope="session")
def tortured(build):
    """The tortured module, and the functions that torture it; both are in one file."""
    path = str(build / "tests" / "torture.so")
    loaded = []
    for name in ("torture", "_libqdp"):
        loader = importlib.machinery.ExtensionFileLoader(name, path)
        spec = importlib.util.spec_from_file_location(name, path, loader=loader)
        loaded.append(importlib.util.module_from_spec(spec))
    return loaded


def test_every_method_has_a_recipe():
    methods = [name for name, value in vars(_libqdp).items() if inspect.isbuiltin(value)]
    assert [name for name in methods if name not in RECIPES] == []


@pytest.mark.parametrize("forever", [False, True], ids=["once", "for ever"])
@pytest.mark.parametrize("name", RECIPES)
def test_failing_allocations(configured, tortured, name, forever):
    torture, module = tortured
    method = getattr(module, name)
    configured.freeze()
    configured.advance(seconds=1e6)  # counters that are objects of their own, not the interpreter's small integers
    texts = []

    def shoot(nth):
        with standard_error() as error:
            seen = torture.invoke(method, RECIPES[name], nth, forever)
        return *seen, error.text

    def sweep():
        for nth in range(1, points + 1):
            check(*shoot(nth))
            assert torture.blocks_out() == 0

    def check(was_null, result, raised, text, _, printed):
        if raised is None and not was_null and result is not None:
            assert exact(result) == exact(expected)  # the method could do without
        elif was_null:
            assert name in RAISING and raised in RAISING[name]
        elif printed:
            if printed not in texts:
                texts.append(printed)
            assert result is None and raised in (None, MemoryError)
        else:
            assert result is None and raised is SystemError
            assert text in BUILDING or forever and text is None  # not even the text could be made

    was_null, expected, raised, _, points, printed = shoot(0)
    assert (was_null, raised, printed) == (False, None, "")
    sweep()
    assert texts == PRINTED[name]
    sweep()
    gc.collect()
    before = sys.getallocatedblocks()
    for _ in range(SWEEPS):
        sweep()
    gc.collect()
    assert sys.getallocatedblocks() - before < SWEEPS
