"""What every kind of torture needs."""

import gc
import pathlib

import pytest

from contract import BY_NAME, one_of_each_shape

FOLDER = pathlib.Path(__file__).parent
TALLIES = pytest.StashKey()


def pytest_collection_modifyitems(config, items):
    """With --one-of-each-shape, what is run for each method is run for those alone."""
    if not config.getoption("one_of_each_shape"):
        return
    left_out = BY_NAME.keys() - one_of_each_shape()
    deselected = [
        item
        for item in items
        if FOLDER in item.path.parents
        and getattr(item, "callspec", None)
        and item.callspec.params.get("name") in left_out
    ]
    config.hook.pytest_deselected(items=deselected)
    items[:] = [item for item in items if item not in set(deselected)]


def pytest_terminal_summary(terminalreporter, config):
    for what, count in config.stash.get(TALLIES, {}).items():
        terminalreporter.write_line(f"{count} {what}")


@pytest.fixture
def tally(request):
    """Counts what was tried, for the session's summary."""

    def add(what, count):
        tallies = request.config.stash.setdefault(TALLIES, {})
        tallies[what] = tallies.get(what, 0) + count

    return add


@pytest.fixture
def frozen(configured, tortured):
    """The built-in host after LibraryInit, at a standstill, with counters that are objects of their own and not the
    interpreter's small integers. Collections see what the test makes, and are quick."""
    _, module = tortured
    configured.freeze()
    assert module.P4UKLatencySet(1) is True
    assert module.AdvStatsSetEnabled(0, 1) is None
    configured.advance(seconds=1e6)
    gc.collect()
    gc.freeze()
    return configured
