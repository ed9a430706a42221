"""The declarations of the command: together they cover the module, and what they name is there."""

import collections
import inspect

import pytest

import _libqdp
import qdp.methods
from qdp.cli import load, object_names
from qdp.cli._declare import Read
from qdp.cli.table import TABLES, arguments_of, keys_of

OBJECTS = {name: load(name) for name in object_names()}
VERBS = [(name, verb) for name, thing in OBJECTS.items() for verb in thing.verbs.values()]
METHODS = [name for name in dir(_libqdp) if callable(getattr(_libqdp, name)) and not name.startswith("_")]


def test_module_has_the_methods_that_are_counted():
    assert len(METHODS) == 147


def test_each_method_belongs_to_one_verb():
    claims = collections.Counter(method for _, verb in VERBS for method in verb.methods)
    assert {method: claims[method] for method in METHODS if claims[method] != 1} == {}
    assert set(claims) == set(METHODS)


def test_each_object_file_declares_the_object_of_its_name():
    assert {name: thing.name for name, thing in OBJECTS.items()} == {name: name for name in OBJECTS}


@pytest.mark.parametrize("name, verb", VERBS, ids=lambda value: getattr(value, "name", value))
def test_help_of_each_verb(qdp_command, name, verb):
    code, out, err = qdp_command(name, *verb.name.split(), "--help")
    assert (code, err) == (0, "")
    assert out.startswith("usage: qdp {} {}".format(name, verb.name))
    for option in verb.selectors + verb.options:
        assert option.settings.get("metavar", option.flags[-1]) in out
    for method in verb.methods:
        assert method in out


@pytest.mark.parametrize("name, verb", VERBS, ids=lambda value: getattr(value, "name", value))
def test_names_of_columns_differ(name, verb):
    if isinstance(verb, Read):
        names = [column.name for column in verb.columns]
        assert len(set(names)) == len(names)


@pytest.mark.parametrize("table", TABLES)
def test_table_gives_its_method_as_many_arguments_as_it_takes(table):
    import ipaddress

    values = {key: ipaddress.ip_address("192.0.2.1") if kind == "address" else 1 for key, kind, _ in keys_of(table)}
    parameters = inspect.signature(getattr(qdp.methods, TABLES[table][0])).parameters
    assert len(list(arguments_of(table, values))) == len(parameters)


# What needs selectors or options, to show something on the default host.
SHOWN = {
    "flow trace": ["101"],
    "mirror span": ["0", "10.20.0.5"],
    "table dump": ["0", "--entries", "2"],
    "table get": ["flow-info", "101"],
    "call call": ["ListSwitches"],
    "uplink queue": ["0", "0", "--queue", "1"],
    "port queues": ["0"],
    "port conf": ["0"],
}
# What these show depends on two readings; test_snapshot.py has both.
OF_TWO_READINGS = ("check", "diff")
READS = [
    ("{} {}".format(name, verb.name), verb)
    for name, verb in VERBS
    if isinstance(verb, Read) and name not in OF_TWO_READINGS
]


@pytest.mark.parametrize("words, verb", READS, ids=[words for words, _ in READS])
def test_each_column_has_a_value(qdp_command, words, verb):
    """A column whose key no row has would be empty for ever."""
    _libqdp.AdvStatsSetEnabled(0, 1)
    _libqdp.P4UKLatencySet(1)
    selectors = [_libqdp.ListPorts(0)[3]["hwAddr"]] if words == "mac find" else SHOWN.get(words, [])
    rows = qdp_command.rows(*words.split(), *selectors, *["-s"] * verb.has_statistics)
    assert rows
    keys = {key for row in rows for key, value in row.items() if value is not None}
    missing = [column.name for column in verb.columns if not set(column.keys) <= keys]
    assert missing == ["alias"] * missing.count("alias")
    for key in verb.identity:
        assert any(key in row for row in rows)
