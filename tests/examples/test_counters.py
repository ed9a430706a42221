"""How the examples tell the growth of counters."""

import importlib.util

import pytest


@pytest.fixture(scope="module")
def counters(root):
    spec = importlib.util.spec_from_file_location("counters_of_examples", root / "examples" / "counters.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


@pytest.mark.parametrize(
    "old, new, bits, grown",
    [
        (5, 7, 64, 2),
        (5, 5, 64, 0),
        (2**63 - 1, -(2**63) + 1, 64, 2),  # shown signed
        (-1, 1, 64, 2),  # it wraps
        (2**64 - 1, 1, 64, 2),  # shown unsigned
        (5, 4, 64, None),
        (10**12, 0, 64, None),  # it was set to zero
        (0xFFFFFFFF, 3, 32, 4),
        (0xFFFFFFFF, 3, 64, None),
        (3, 2, 32, None),
        (0, 2**31 - 1, 32, 2**31 - 1),
        (0, 2**31, 32, None),
    ],
)
def test_growth(counters, old, new, bits, grown):
    assert counters.growth(old, new, bits) == grown


def readings(counters, monkeypatch, *timed):
    made = []
    for time, values in timed:
        monkeypatch.setattr(counters.time, "monotonic", lambda: time)
        made.append(counters.Reading(values))
    return made


def test_a_rate_is_of_all_counters_and_by_the_time_between(counters, monkeypatch):
    old, new = readings(counters, monkeypatch, (10.0, {"a": 100, "b": -1, "c": 7}), (12.5, {"a": 150, "b": 24, "c": 9}))
    assert new.growth(old, "a", "b") == 75
    assert new.rate(old, "a", "b") == 30.0
    assert new.rate(old, "c") == 0.8


def test_there_is_no_rate_when_one_counter_was_set_back(counters, monkeypatch):
    old, new = readings(counters, monkeypatch, (0.0, {"a": 100, "b": 5}), (1.0, {"a": 150, "b": 4}))
    assert new.growth(old, "a", "b") is None
    assert new.rate(old, "a", "b") is None
    assert new.rate(old, "a") == 50.0
