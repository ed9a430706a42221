"""The module's definition, its table of methods, and the plain functions that do nothing."""

import ctypes
import inspect
import re

import pytest

import _libqdp
from core.methods import METHODS
from observe import standard_error


def methods():
    return [name for name, value in vars(_libqdp).items() if inspect.isbuiltin(value)]


def test_definition():
    assert _libqdp.__name__ == "_libqdp"
    assert _libqdp.__doc__ == "Python binding for qdp"


def test_methods_in_table_order():
    assert methods() == [name for name, _, _ in METHODS]


@pytest.mark.parametrize("name, documentation, parameters", METHODS)
def test_documentation_and_signature(name, documentation, parameters):
    method = getattr(_libqdp, name)
    assert method.__doc__ == documentation
    shown = inspect.signature(method).parameters.values()
    assert [each.name for each in shown] == parameters.split()
    assert all(each.kind is inspect.Parameter.POSITIONAL_ONLY for each in shown)


@pytest.mark.parametrize("name", [name for name, _, _ in METHODS])
def test_keyword_arguments_are_refused_by_the_interpreter(host, name):
    with standard_error() as error, host.recording() as calls, pytest.raises(TypeError):
        getattr(_libqdp, name)(switch=0)
    assert (error.text, calls) == ("", [])


def test_every_method_has_tests_of_its_own(root):
    tested = set()
    for path in (root / "tests").rglob("test_*.py"):
        for name, body in re.findall(r"^class Test(\w+)(?:\(\w+\))?:\n((?:    .*\n|\n)*)", path.read_text(), re.MULTILINE):
            if re.search(r"^    def test_", body, re.MULTILINE):
                tested.add(name)
    assert [name for name in methods() if name not in tested] == []


def test_the_module_keeps_no_state_of_its_own(host):
    """A second import is the same module, and importing calls nothing."""
    import importlib
    import sys

    with host.recording() as calls:
        del sys.modules["_libqdp"]
        again = importlib.import_module("_libqdp")
    sys.modules["_libqdp"] = _libqdp
    assert again.__name__ == "_libqdp"
    assert calls == []


@pytest.mark.parametrize("name", ["Warning", "Panic", "Log"])
def test_log_entry_points_do_nothing(exported, name):
    function = getattr(exported, name)
    with standard_error() as error:
        function()
        function(b"%s %n %d", 1, ctypes.c_double(2.5), None)
        function(None)
    assert error.text == ""
