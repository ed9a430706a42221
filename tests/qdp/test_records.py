"""Records: the module's dictionaries, adopted with their keys as attributes and items."""

import copy
import json
import pickle

import pytest

import _libqdp
import qdp
from contract import RECIPES
from observe import standard_error
from qdp import _call, record, records
from recipes import is_made_of
from typings.arguments import MORE_ARGUMENTS
from unrecorded import plain


def dictionaries_in(value):
    """All dictionaries of a plain result."""
    inside = list(value.values()) if isinstance(value, dict) else value if isinstance(value, (list, tuple)) else []
    return ([value] if isinstance(value, dict) else []) + [found for item in inside for found in dictionaries_in(item)]


def records_in(value):
    inside = list(vars(value).values()) if isinstance(value, records.Record) else value
    inside = inside if isinstance(inside, (list, tuple)) else []
    own = [value] if isinstance(value, records.Record) else []
    return own + [found for item in inside for found in records_in(item)]


@pytest.fixture
def port(host):
    return qdp.call("ListPorts", 0)[3]


class TestRecord:
    def test_attributes_and_items_are_the_modules_keys(self, host, port):
        bare = _libqdp.ListPorts(0)[3]
        assert (port.portID, port["hwAddr"], vars(port)) == (3, bare["hwAddr"], bare)
        assert list(port) == list(port.keys()) == list(bare) and len(port) == 9
        assert "portID" in port and "portId" not in port
        assert dict(port) == {**port} == bare
        with pytest.raises(AttributeError):
            port.portId
        with pytest.raises(KeyError):
            port["portId"]

    def test_dictionary_is_adopted_not_copied(self):
        values = {"portID": 3, "hwAddr": "02:00:00:00:00:01"}
        adopted = records.PortInfo(values)
        assert vars(adopted) is values
        adopted["portID"] = 4
        assert adopted.portID == values["portID"] == 4

    def test_keys_that_are_no_names_go_by_item(self, configured):
        ports, _, _ = qdp.call("DumpLBStats", 0, 0, 4, 0, 2)
        assert type(ports[0]) is records.LBPort and type(ports[0]["vnicRxQ"]) is tuple
        assert ports[0]["port ID"] == _libqdp.DumpLBStats(0, 0, 4, 0, 2)[0][0]["port ID"]
        assert {type(item) for item in ports[0]["vnicRxQ"]} == {records.LBItem}

    def test_equality(self, host, port):
        same = qdp.call("ListPorts", 0)
        assert port == same[3] and port != same[4] and port == vars(port)
        assert port != records.SwitchInfo(vars(port)) and port != 3
        with pytest.raises(TypeError):
            hash(port)

    def test_a_record_is_true_though_empty(self):
        assert records.L3SPANRecord({})

    def test_repr_makes_it_again(self, port):
        assert eval(repr(port), vars(records)) == port and repr(port).startswith("PortInfo({'portID': 3, ")

    def test_json(self, configured):
        table = qdp.call("ListSwitchMACTable", 0)
        assert json.loads(json.dumps(table, default=vars)) == _libqdp.ListSwitchMACTable(0)
        assert len(table.MacTableList) > 1

    @pytest.mark.parametrize("copied", [copy.copy, copy.deepcopy, lambda value: pickle.loads(pickle.dumps(value))])
    def test_copies(self, host, copied):
        table = qdp.call("ListSwitchMACTable", 0)
        other = copied(table)
        assert other == table and type(other) is type(table) and type(other.MacTableList[0]) is records.MACEntry

    def test_dictionaries_inside_are_adopted_too(self):
        table = records.PortMACTable({"MacLimit": 1, "MacTableList": [{"vlanID": 7}]})
        assert table.MacTableList[0].vlanID == 7


def bare_result(name, arguments):
    with standard_error():  # some methods say that they are not supported
        return getattr(_libqdp, name)(*arguments)


class TestAdoption:
    @pytest.mark.parametrize("name", RECIPES)
    def test_every_dictionary_of_every_result_is_a_record(self, configured, name):
        configured.freeze()
        arguments = MORE_ARGUMENTS.get(name) or is_made_of(RECIPES[name], _libqdp)
        bare = bare_result(name, arguments)
        plan = record.plan_of(records.RESULTS[name])
        by_helper = _call.as_records(plan, copy.deepcopy(bare))
        in_python = record.as_records(plan, copy.deepcopy(bare))
        assert plain(by_helper) == plain(in_python) == bare and type(by_helper) is type(in_python)
        found = records_in(by_helper)
        assert [list(vars(one)) for one in found] == [list(one) for one in dictionaries_in(bare)]
        assert [type(one) for one in found] == [type(one) for one in records_in(in_python)]

    @pytest.mark.parametrize("as_records", [_call.as_records, record.as_records])
    @pytest.mark.parametrize(
        "shape, value",
        [
            (records.PortInfo, None),
            (records.PortInfo, [1]),
            ([records.PortInfo], {"portID": 3}),
            ([records.PortInfo], [None, 5]),
            (([records.LBPort], [records.LBUplink]), ([],)),
            (records.PortMACTable, {"MacTableList": None}),
            (None, {"portID": 3}),
        ],
    )
    def test_what_is_not_of_its_shape_stays(self, as_records, shape, value):
        assert plain(as_records(record.plan_of(shape), copy.deepcopy(value))) == value
