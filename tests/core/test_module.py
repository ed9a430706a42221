"""The module's definition, its table of methods, and the plain functions that do nothing."""

import ctypes
import importlib
import inspect
import os
import re
import sys

import pytest

import _libqdp
from contract import METHODS, RECIPES
from observe import standard_error
from recipes import is_made_of


def methods_of(module):
    return [name for name, value in vars(module).items() if inspect.isbuiltin(value)]


def methods():
    return methods_of(_libqdp)


def test_definition():
    assert _libqdp.__name__ == "_libqdp"
    assert _libqdp.__doc__ == "Python binding for qdp"


def test_methods_in_table_order():
    assert methods() == [method.name for method in METHODS]


@pytest.mark.parametrize("name, documentation, parameters", [method[:3] for method in METHODS])
def test_documentation_and_signature(name, documentation, parameters):
    method = getattr(_libqdp, name)
    assert method.__doc__ == documentation
    shown = inspect.signature(method).parameters.values()
    assert [each.name for each in shown] == parameters.split()
    assert all(each.kind is inspect.Parameter.POSITIONAL_ONLY for each in shown)


@pytest.mark.parametrize("name", [method.name for method in METHODS])
def test_keyword_arguments_are_refused_by_the_interpreter(host, name):
    with standard_error() as error, host.recording() as calls, pytest.raises(TypeError):
        getattr(_libqdp, name)(switch=0)
    assert (error.text, calls) == ("", [])


def test_every_method_has_tests_of_its_own(root):
    tested = set()
    for path in (root / "tests").rglob("test_*.py"):
        for name, body in re.findall(
            r"^class Test(\w+)(?:\(\w+\))?:\n((?:    .*\n|\n)*)", path.read_text(), re.MULTILINE
        ):
            if re.search(r"^    def test_", body, re.MULTILINE):
                tested.add(name)
    assert [name for name in methods() if name not in tested] == []


def test_importing_calls_nothing(host, monkeypatch):
    monkeypatch.delitem(sys.modules, "_libqdp")
    with host.recording() as calls:
        again = importlib.import_module("_libqdp")
    assert again is not _libqdp
    assert methods_of(again) == methods_of(_libqdp)
    assert calls == []


def writable_memory(module):
    """The bytes of all variables of a module's file: its writable mappings, and the one right behind them."""
    file, ending, found = os.path.realpath(module.__file__), None, []
    with open("/proc/self/maps") as maps, open("/proc/self/mem", "rb") as memory:
        for line in maps:
            place, permissions, _, _, inode, *path = line.split(None, 5)
            start, end = (int(each, 16) for each in place.split("-"))
            is_behind = start == ending and inode == "0" and not path
            if permissions.startswith("rw") and (path and path[0].strip() == file or is_behind):
                memory.seek(start)
                found.append(memory.read(end - start))
                ending = end
    return found


def test_no_call_leaves_anything_in_the_modules_variables(configured, tortured):
    # The buffer of DumpLBDebugBuf is kept until its next call, by contract.
    names = [name for name in RECIPES if name != "DumpLBDebugBuf"]

    def call_all(names):
        with standard_error():
            for name in names:
                getattr(_libqdp, name)(*is_made_of(RECIPES[name], _libqdp))
        return writable_memory(_libqdp)

    before = call_all(names)
    assert sum(map(len, before)) > 2 << 20  # the buffer's variable is among them
    assert call_all(reversed(names)) == before

    torture, tortured_module = tortured
    before = writable_memory(torture)
    torture.invoke(tortured_module.ListSwitches, (), 0, False)  # counts allocations in a variable
    assert writable_memory(torture) != before


@pytest.mark.parametrize("name", ["Warning", "Panic", "Log"])
def test_log_entry_points_do_nothing(exported, name):
    function = getattr(exported, name)
    with standard_error() as error:
        function()
        function(b"%s %n %d", 1, ctypes.c_double(2.5), None)
        function(None)
    assert error.text == ""
