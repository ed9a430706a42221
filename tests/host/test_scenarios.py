"""Scenarios: what they may say, what is said of one that is wrong, and the hosts that they describe."""

import ctypes
import json
import os
import random
import subprocess
import sys

import jsonschema
import pytest

from contract import RECIPES
from recipes import is_made_of

NO_MORE = 0xFFFFFFFF
SHIPPED = ["default.json", "mux.json", "large.json"]


@pytest.fixture
def load(control, tmp_path):
    """Loads a scenario that is given as a value or as a text; returns what is wrong with it, without the file's
    name."""

    def load(scenario):
        path = tmp_path / "scenario.json"
        path.write_text(scenario if isinstance(scenario, str) else json.dumps(scenario))
        status = control.load(path)
        error = control.error()
        assert (status, error is None) in [(0, True), (-1, False)]
        if error is None:
            return None
        assert error.startswith(f"{path}: ")
        return error[len(f"{path}: ") :]

    return load


def switch(**members):
    return {"switches": [{"alias": "a", **members}]}


def port(**members):
    return switch(ports=[{"client": "UPLINK"}, members])


def flow(**members):
    return {**switch(ports=[{"repeat": 2}]), "flows": [{"lcore": 0, **members}]}


FLOW_ADDRESS = 'an IP address such as "10.0.0.1" or "2001:db8::1"'
MAC = 'a MAC address such as "02:10:00:00:00:01"'

FAULTS = {
    "not an object": ([], "expected an object, found a list of 0"),
    "an unknown key": (
        {"l3span": [], "switch": []},
        "/switch: expected one of the keys $schema, switches, devices, mbufFastslabs, lcores, balancerIsAutomatic, "
        "timing, l3span, smartnic, flows, clearedLcores, pipeline, hardwareTables, found an unknown key",
    ),
    "an unknown key below": (
        port(tx={"packets": 1, "size": 2}),
        "/switches/0/ports/1/tx/size: expected one of the keys packets, packetBytes, drops, errors, found an unknown "
        "key",
    ),
    "an unknown key of a turn": (
        {"devices": [{"repeat": 2, "turns": [{"name": "a"}, {"name": "b", "node": 1}]}]},
        "/devices/0/node: expected one of the keys name, affinity, found an unknown key",
    ),
    "an unknown key of a repeated entry": (
        {"devices": [{"repeat": 2, "name": "a{0}", "node": 1}]},
        "/devices/0/node: expected one of the keys name, affinity, found an unknown key",
    ),
    "an unknown key below a turn": (
        switch(ports=[{"repeat": 2, "turns": [{}, {"tx": {"size": 2}}]}]),
        "/switches/0/ports/0/tx/size: expected one of the keys packets, packetBytes, drops, errors, found an unknown "
        "key",
    ),
    "a key that needs escapes": (
        {"timing": {"a/b~": 1}},
        "/timing/a~1b~0: expected one of the keys flowTimeout, revalidation, conntrackDelay, refreshPacketInjection, "
        "found an unknown key",
    ),
    "a missing key": ({"switches": [{}]}, "/switches/0/alias: expected a text of 1 to 127 bytes, found nothing"),
    "a text for a number": (
        switch(mtu="big"),
        '/switches/0/mtu: expected a whole number from 0 to 4294967295, found "big"',
    ),
    "a fraction": (switch(mtu=1.5), "/switches/0/mtu: expected a whole number from 0 to 4294967295, found 1.5"),
    "a negative number": (switch(mtu=-1), "/switches/0/mtu: expected a whole number from 0 to 4294967295, found -1"),
    "a number out of range": (
        switch(lcores=[0, 64]),
        "/switches/0/lcores/1: expected a whole number from 0 to 63, found 64",
    ),
    "no list": (switch(ports={}), "/switches/0/ports: expected a list, found an object"),
    "no truth": (switch(settings={"flowCache": 1}), "/switches/0/settings/flowCache: expected true or false, found 1"),
    "no truth of a word": (
        port(passThrough="yes"),
        '/switches/0/ports/1/passThrough: expected true or false, found "yes"',
    ),
    "no text": (switch(id=5), "/switches/0/id: expected a text of 1 to 63 bytes, found 5"),
    "an empty text": (switch(portset=""), '/switches/0/portset: expected a text of 1 to 127 bytes, found ""'),
    "a text that is too long": (
        switch(id="x" * 64),
        f'/switches/0/id: expected a text of 1 to 63 bytes, found "{"x" * 59}...',
    ),
    "no MAC address": (port(mac=12), f"/switches/0/ports/1/mac: expected {MAC}, found 12"),
    "half a MAC address": (port(mac="02:10:00"), f'/switches/0/ports/1/mac: expected {MAC}, found "02:10:00"'),
    "no IP address": (flow(source="10.0.0"), f'/flows/0/source: expected {FLOW_ADDRESS}, found "10.0.0"'),
    "no name": (
        port(client="VM"),
        '/switches/0/ports/1/client: expected one of "VNIC", "UPLINK", "GENERIC", "REPRESENTOR", or a number, found '
        '"VM"',
    ),
    "no name in a list": (
        port(conf={"receives": ["UNICAST", None]}),
        '/switches/0/ports/1/conf/receives/1: expected one of "UNICAST", "MULTICAST", "ALLMULTI", "BROADCAST", '
        '"PROMISC", '
        '"USE_LADRF", or a number, found nothing',
    ),
    "no property": (
        switch(hostProperties={"a": 5}),
        '/switches/0/hostProperties/a: expected a text, or bytes as {"hex": digits}, found 5',
    ),
    "no digits": (
        switch(hostProperties={"a": {"hex": "0g"}}),
        '/switches/0/hostProperties/a/hex: expected hexadecimal digits, two a byte, found "0g"',
    ),
    "too many": (
        {"devices": [{"name": f"nic{i}"} for i in range(33)]},
        "/devices: expected at most 32 entries, found a list of 33",
    ),
    "repeated too often": (
        switch(ports=[{"repeat": 16385}]),
        "/switches/0/ports/0/repeat: expected a whole number from 1 to 16384, found 16385",
    ),
    "repeated by no number": (
        switch(ports=[{"repeat": "all"}]),
        '/switches/0/ports/0/repeat: expected a whole number from 1 to 16384, found "all"',
    ),
    "two of a number": (
        switch(ports=[{"number": 1}, {"number": 1}]),
        "/switches/0/ports/1: expected an entry whose number no other entry has, found the number 1 again",
    ),
    "two switches of a number": (
        {"switches": [{"alias": "a", "number": 1}, {"alias": "b", "number": 1}]},
        "/switches/1/number: expected a number that no other switch has, found 1",
    ),
    "an lcore of two switches": (
        {"switches": [{"alias": "a", "lcores": [1]}, {"alias": "b", "lcores": [1, 2]}]},
        "/switches/1/lcores: expected lcores that no other switch has, found a list of 2",
    ),
    "more lcores than queues": (
        port(txQueues=2, txLcores=[0]),
        "/switches/0/ports/1/txLcores: expected as many lcores as there are queues, found a list of 1",
    ),
    "a filter to no uplink": (
        port(filters=[{"type": "mac", "queues": [{"uplink": 1}]}]),
        "/switches/0/ports/1/filters/0/queues/0/uplink: expected an uplink before this port, found 1",
    ),
    "a filter to no queue": (
        port(filters=[{"type": "mac", "queues": [{"uplink": 0, "queue": 1}]}]),
        "/switches/0/ports/1/filters/0/queues/0/queue: expected a receive queue of the uplink, found 1",
    ),
    "a MAC address of no port": (
        switch(macTable={"macs": [{"port": 0, "mac": "02:00:00:00:00:01"}]}),
        "/switches/0/macTable/macs/0/port: expected the number of a port of this switch, found 0",
    ),
    "a MAC address twice": (
        {**switch(ports=[{}], macTable={"macs": [{"repeat": 2, "port": 0, "mac": "02:00:00:00:00:01", "vlan": 7}]})},
        "/switches/0/macTable/macs/0: expected an entry whose MAC address and VLAN no other entry has, found the MAC "
        "address "
        "and VLAN 02:00:00:00:00:01 in VLAN 7 again",
    ),
    "a flow of no switch": (flow(lcore=9), "/flows/0/lcore: expected an lcore of a switch, found 9"),
    "a flow of no port": (flow(inputPort=2), "/flows/0/inputPort: expected a port of the lcore's switch, found 2"),
    "addresses of two families": (
        {
            **switch(),
            "l3span": [
                {
                    "switch": 0,
                    "address": "10.0.0.1",
                    "gre": {
                        "sourceMac": "02:00:00:00:00:01",
                        "destinationMac": "02:00:00:00:00:02",
                        "source": "::1",
                        "destination": "1.2.3.4",
                    },
                }
            ],
        },
        '/l3span/0/gre/destination: expected an address of the same family as the source, found "1.2.3.4"',
    ),
    "an entry of another size": (
        {
            "pipeline": {
                "tables": [{"table": 0, "entryBytes": 4, "entries": 9, "contents": [{"index": 1, "bytes": "00"}]}]
            }
        },
        '/pipeline/tables/0/contents/0/bytes: expected as many bytes as an entry has, found "00"',
    ),
    "no cycle": (
        switch(ports=[{"repeat": 2, "name": {"cycle": []}}]),
        '/switches/0/ports/0/name: expected the key "cycle" alone, with a list of values that take turns, found an '
        'object',
    ),
    "runs that end early": (
        switch(ports=[{"repeat": 3, "name": {"runs": [[1, "a"], [1, "b"]]}}]),
        "/switches/0/ports/0/name: expected runs that make up all turns of the entry, found an object",
    ),
    "no run": (
        switch(ports=[{"repeat": 3, "name": {"runs": ["a"]}}]),
        "/switches/0/ports/0/name: expected runs of [turns, value], found an object",
    ),
    "steps out of range": (
        switch(ports=[{"repeat": 3, "number": {"from": 16382}}]),
        "/switches/0/ports/0/number: expected a whole number from 0 to 16383, found an object",
    ),
    "steps that are none": (
        switch(ports=[{"repeat": 3, "number": {"from": 1, "steps": 2}}]),
        "/switches/0/ports/0/number/steps: expected one of the keys from, step, every, offset, modulo, found an "
        "unknown key",
    ),
    "series around series": (
        '{"devices": [{"repeat": 2, "name": "n", "affinity": ' + '{"from": ' * 20 + "1" + "}" * 20 + "}]}",
        f"/devices/0/affinity{'/from' * 16}: expected a value with at most 16 series around it, found an object",
    ),
    "objects without end": (
        '{"devices": [{"repeat": 2, "name": "n", "affinity": ' + '{"from": ' * 100_000 + "1" + "}" * 100_000 + "}]}",
        f"/devices/0/affinity{'/from' * 5}: expected at most 64 levels of objects and lists, found one more",
    ),
    "a number beyond all numbers": (
        '{"switches": [{"alias": "a"}, {"alias": "b", "mtu": 1e400}]}',
        "/switches/1/mtu: expected a smaller number, found 1e400",
    ),
    "a key twice": (
        '{"switches": [{"alias": "a", "mtu": 1, "ports": [], "mtu": 2}]}',
        "/switches/0/mtu: expected each key once, found it again",
    ),
    "a key twice that needs escapes": (
        '{"timing": {"a/b": 1, "a/b": 1}}',
        "/timing/a~1b: expected each key once, found it again",
    ),
    "an alias twice": (
        {"switches": [{"alias": "a"}, {"alias": "a"}]},
        '/switches/1: expected an entry whose alias no other entry has, found the alias "a" again',
    ),
    "a 17th switch": (
        {"switches": [{"repeat": 17, "alias": "a{0}", "lcores": []}]},
        "/switches/0/number: expected at most 16 switches of the datapath, found nothing",
    ),
    "a flow between two families": (
        flow(source="10.0.0.1", destination="2001:db8::1"),
        '/flows/0/destination: expected an address of the same family as the source, found "2001:db8::1"',
    ),
    "a tunnel between two families": (
        {
            "hardwareTables": {
                "tunnels": [
                    {
                        "record": 1,
                        "localMac": "02:00:00:00:00:01",
                        "remoteMac": "02:00:00:00:00:02",
                        "local": "10.0.0.1",
                        "remote": "2001:db8::1",
                    }
                ]
            }
        },
        '/hardwareTables/tunnels/0/remote: expected an address of the same family as the source, found "2001:db8::1"',
    ),
    "a SmartNIC behind no switch": (
        {**switch(), "smartnic": {"switch": 1}},
        "/smartnic/switch: expected the number of a switch of the datapath, found 1",
    ),
    "a mux mode of no switch": (
        {**switch(), "smartnic": {"muxSwitches": [{"switch": 3}]}},
        "/smartnic/muxSwitches/0/switch: expected the number of a switch of the datapath, found 3",
    ),
    "an RSS override of no switch": (
        {
            **switch(),
            "smartnic": {"rssOverrides": [{"switch": 0, "port": 1, "queue": 2}, {"switch": 2, "port": 1, "queue": 2}]},
        },
        "/smartnic/rssOverrides/1/switch: expected the number of a switch of the datapath, found 2",
    ),
    "an RSS override to no queue": (
        {**switch(), "smartnic": {"rssOverrides": [{"switch": 0, "port": 1, "queue": 64}]}},
        "/smartnic/rssOverrides/0/queue: expected a queue from 0 to 63, found 64",
    ),
    "statistics of no switch": (
        {**switch(), "pipeline": {"advancedStats": [0, 9]}},
        "/pipeline/advancedStats: expected numbers of switches of the datapath, found a list of 2",
    ),
    "an L3 SPAN of no switch": (
        {"l3span": [{"switch": 0}]},
        "/l3span/0/switch: expected the number of a switch of the datapath, found 0",
    ),
    "more MAC addresses than the limit": (
        switch(
            ports=[{}], macTable={"limit": 2, "macs": [{"repeat": 3, "port": 0, "mac": {"from": "02:00:00:00:00:01"}}]}
        ),
        "/switches/0/macTable/limit: expected room for all entries of the table, found 2",
    ),
    "more MAC addresses of a port than the limit": (
        switch(
            ports=[{}],
            macTable={"portLimit": 2, "macs": [{"repeat": 3, "port": 0, "mac": {"from": "02:00:00:00:00:01"}}]},
        ),
        "/switches/0/macTable/portLimit: expected room for the entries of each port, found 2",
    ),
    "more ports than the most": (
        switch(maxPorts=2, ports=[{"repeat": 3}]),
        "/switches/0/maxPorts: expected room for the ports that are listed, found 2",
    ),
    "injected traffic of a switch without ports": (
        switch(balancer={"injected": [{"direction": 0, "sourcePort": 0, "destinationPort": 0}]}),
        "/switches/0/balancer/injected/0/direction: expected no traffic, since the switch has no ports, found 0",
    ),
    "turns outside a repeated entry": (
        port(name={"cycle": ["a"]}),
        "/switches/0/ports/1/name: expected a text of 1 to 127 bytes, found an object",
    ),
    "no turns": (
        switch(ports=[{"repeat": 3, "turns": [{}, 1]}]),
        "/switches/0/ports/0/turns/1: expected an object, found 1",
    ),
    "an open object": (
        '{\n  "switches": [\n',
        "line 3, column 1: expected JSON, found a syntax error while parsing value - unexpected end of input; "
        "expected '[', '{', or a literal",
    ),
    "a missing comma": (
        '{"switches": []\n "flows": []}',
        "line 2, column 8: expected JSON, found a syntax error while parsing object - unexpected string literal; "
        "expected '}'",
    ),
    "nothing": (
        "",
        "line 1, column 1: expected JSON, found a syntax error while parsing value - unexpected end of input; "
        "expected '[', '{', or a literal",
    ),
}


class TestFaults:
    @pytest.mark.parametrize("name", FAULTS)
    def test_a_fault_is_named_with_its_place(self, load, name):
        scenario, expected = FAULTS[name]
        assert load(scenario) == expected

    def test_a_file_that_is_not_there(self, control, tmp_path):
        path = tmp_path / "none.json"
        assert control.load(path) == -1
        assert control.error() == f"{path}: expected a scenario file, found No such file or directory"

    def test_a_folder(self, control, tmp_path):
        assert control.load(tmp_path) == -1
        assert control.error() == f"{tmp_path}: expected a scenario file, found a directory"

    def test_a_fifo_is_not_waited_for(self, control, tmp_path):
        os.mkfifo(tmp_path / "fifo.json")
        assert control.load(tmp_path / "fifo.json") == -1
        assert control.error() == f"{tmp_path / 'fifo.json'}: expected a scenario file, found a FIFO"

    def test_a_device(self, control):
        assert control.load("/dev/zero") == -1
        assert control.error() == "/dev/zero: expected a scenario file, found a device or a socket"

    def test_a_name_that_no_scenario_has(self, control):
        assert control.load("nothing") == -1
        expected = "a scenario file or one of the names default, large, mux, found No such file or directory"
        assert control.error() == f"nothing: expected {expected}"

    def test_calls_fail_until_a_scenario_is_loaded(self, control, load, host):
        size = ctypes.c_uint32(2568)
        buffer = ctypes.create_string_buffer(b"#" * 2568, 2568)
        assert load("{") is not None
        for _ in range(2):
            assert host.libqdp.Qdp_Get_Switch_List(buffer, ctypes.byref(size)) != 0
            assert (buffer.raw, size.value) == (b"#" * 2568, 2568)
        assert load({}) is None
        assert host.libqdp.Qdp_Get_Switch_List(buffer, ctypes.byref(size)) == 0
        assert buffer.raw[:8] == bytes(8)


CHILD = """
import ctypes, sys
folder = sys.argv[1]
control = ctypes.PyDLL(folder + "/libqdphost.so")
libraries = [ctypes.PyDLL(folder + "/" + name) for name in ("libqmtPublic.so", "libqdp.so")]
control.qdp_host_operations.restype = ctypes.c_char_p
import json
for name in json.loads(control.qdp_host_operations()):
    library = next(each for each in libraries if hasattr(each, name))
    function = getattr(library, name)
    function.restype = ctypes.c_uint64
    buffers = [ctypes.create_string_buffer(b"#" * 64, 64) for _ in range(7)]
    result = function(*buffers)
    assert [each.raw for each in buffers] == [b"#" * 64] * 7, name
    print(name, result)
control.qdp_host_freeze_time()
control.qdp_host_advance_time(5)
control.qdp_host_reset()
control.qdp_host_load(b"/another/that/is/not/there")
"""


def run_with(scenario, build):
    return subprocess.run(
        [sys.executable, "-c", CHILD, str(build / "host")],
        env={**os.environ, "QDP_HOST_SCENARIO": str(scenario)},
        capture_output=True,
        text=True,
        timeout=60,
    )


def assert_all_calls_fail(done, scenario, host):
    """Every operation fails, and it is said why, once; nothing crashes."""
    assert done.returncode == 0, done.stderr
    results = dict(line.split() for line in done.stdout.splitlines())
    assert sorted(results) == sorted(host.operations())
    returning_pointers = {
        "DVSState_SwitchFindByAlias",
        "DVS_SwitchId",
        "DVS_ClassName",
        "DVSState_PortFind",
        "DVSData_Name",
    }
    returning_nothing = {"DVSState_SwitchForEach", "DVSState_GlobalPropForEach", "DVSHCK_DataFree"}
    for name, result in results.items():
        if name in returning_pointers:
            assert result == "0", name
        elif name not in returning_nothing:
            assert int(result) & 0xFFFFFFFF != 0, name
    (line,) = done.stderr.splitlines()
    assert line.startswith(f"qdp-host: {scenario}: ")
    assert ": expected " in line and ", found " in line


class TestBrokenScenarios:
    def test_every_operation_fails_and_the_message_comes_once(self, build, host, tmp_path):
        path = tmp_path / "broken.json"
        path.write_text('{"switches": [{"alias": 5}]}')
        assert_all_calls_fail(run_with(path, build), path, host)

    def test_no_file(self, build, host, tmp_path):
        assert_all_calls_fail(run_with(tmp_path / "none.json", build), tmp_path / "none.json", host)

    @pytest.mark.parametrize("part", [1, 2, 3])
    def test_a_truncated_file(self, build, host, scenarios, tmp_path, part):
        text = (scenarios / "default.json").read_bytes()
        path = tmp_path / "truncated.json"
        path.write_bytes(text[: len(text) * part // 4])
        assert_all_calls_fail(run_with(path, build), path, host)

    def test_random_bytes(self, control, tmp_path):
        rng = random.Random(20240611)
        path = tmp_path / "random.json"
        for length in range(200):
            path.write_bytes(rng.randbytes(length))
            assert control.load(path) == -1
            assert control.error().startswith(f"{path}: ") and ": expected " in control.error()

    def test_scenarios_with_values_replaced(self, control, scenarios, tmp_path):
        """Whatever stands where something else is expected, loading ends with a message or with a host."""
        rng = random.Random(7)
        path = tmp_path / "mutated.json"
        odd = [
            None,
            True,
            -1,
            2**64 - 1,
            2**70,
            1.5,
            "",
            "x",
            "{0}",
            [],
            [[]],
            {},
            {"cycle": [1]},
            {"repeat": 3},
            {"from": 1},
        ]

        def replace_one(value):
            while isinstance(value, (dict, list)) and value:
                key = rng.choice(list(value) if isinstance(value, dict) else range(len(value)))
                if not isinstance(value[key], (dict, list)) or rng.random() < 0.15:
                    value[key] = rng.choice(odd)
                    return
                value = value[key]

        failures = 0
        for _ in range(150):
            scenario = json.loads((scenarios / "mux.json").read_text())
            replace_one(scenario)
            path.write_text(json.dumps(scenario))
            if control.load(path) == 0:
                assert control.error() is None
            else:
                failures += 1
                assert control.error().startswith(f"{path}: /") and ", found " in control.error()
        assert 50 < failures < 150


class TestShippedScenarios:
    @pytest.mark.parametrize("name", SHIPPED[:2])
    def test_what_is_written_is_the_same_host(self, control, scenarios, tmp_path, name):
        assert control.load(scenarios / name) == 0, control.error()
        written = control.scenario()
        path = tmp_path / name
        path.write_text(written)
        assert control.load(path) == 0, control.error()
        assert control.scenario() == written

    def test_the_default_scenario_is_built_in(self, control, scenarios):
        assert control.load() == 0
        built_in = control.scenario()
        assert control.load(scenarios / "default.json") == 0
        assert control.scenario() == built_in

    def test_the_schema_is_the_one_in_the_repository(self, scenarios, schema_text):
        assert (scenarios / "schema.json").read_text() == schema_text

    @pytest.mark.parametrize("name", SHIPPED)
    def test_shipped_scenarios_are_valid_by_the_schema(self, scenarios, name):
        schema = json.loads((scenarios / "schema.json").read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        jsonschema.validate(json.loads((scenarios / name).read_text()), schema)

    def test_the_large_scenario_is_what_its_script_makes(self, scenarios, tmp_path):
        made = tmp_path / "large.json"
        subprocess.run([sys.executable, scenarios / "make_large.py", made], check=True)
        assert made.read_bytes() == (scenarios / "large.json").read_bytes()

    def test_every_key_of_the_state_comes_back_after_a_change(self, control, configured, qdp, tmp_path):
        """What calls have set is part of what is written."""
        for name in (
            "SetPortLRO",
            "AddMACEntry",
            "MigratePort",
            "InjectLBTraffic",
            "SetLBParam",
            "LifPortCreate",
            "VlanPortCreate",
            "PortUpdate",
            "SetFlowTimeout",
            "SetFPORevalConfig",
            "AgingIntervalSet",
            "P4RssOverrideSet",
            "SetOffloadFlows",
            "DSCPConfSet",
            "EnableSwitchFlowCache",
            "SetUplinkRingSize",
        ):
            arguments = {"EnableSwitchFlowCache": (0, 0)}.get(name, RECIPES[name])
            assert qdp.call(name, *is_made_of(arguments, qdp.module)).raised is None
        before = control.scenario()
        assert '"clearedLcores": [\n    0,' in before and '"lcore": 12' in before
        (tmp_path / "changed.json").write_text(before)
        assert control.load(tmp_path / "changed.json") == 0, control.error()
        assert control.scenario() == before


class TestNames:
    @pytest.mark.parametrize("name", ["default", "mux"])
    def test_a_built_in_scenario_is_the_file(self, control, scenarios, name):
        assert control.load(name) == 0, control.error()
        built_in = control.scenario()
        assert control.load(scenarios / f"{name}.json") == 0
        assert control.scenario() == built_in

    def test_the_environment_takes_a_name(self, build):
        code = """
import ctypes, sys
control = ctypes.PyDLL(sys.argv[1] + "/libqdphost.so")
control.qdp_host_summary.restype = ctypes.c_char_p
print(control.qdp_host_summary().decode())
"""
        command = [sys.executable, "-c", code, str(build / "host")]
        environment = {**os.environ, "QDP_HOST_SCENARIO": "mux"}
        printed = subprocess.run(command, env=environment, capture_output=True, text=True, check=True).stdout
        assert [each["alias"] for each in json.loads(printed)["switches"]] == ["dvs-mux"]


class TestSchema:
    def members(self, value, path=""):
        """All members of objects that the schema describes, each with its path and whether it is required."""
        if isinstance(value, list):
            for item in value:
                yield from self.members(item, path)
        elif isinstance(value, dict):
            for key, member in value.get("properties", {}).items():
                required = value.get("required", []) + [
                    key for each in value.get("anyOf", []) for key in each.get("required", [])
                ]
                yield f"{path}/{key}", member, key in required
                yield from self.members(member, f"{path}/{key}")
            for key in ("items", "anyOf"):
                yield from self.members(value.get(key), path)

    def test_every_default_is_said_once(self, schema_text):
        """A member that may be absent has a default, or members with defaults, or a sentence about what it follows
        from."""
        schema = json.loads(schema_text)
        members = list(self.members({key: value for key, value in schema.items() if key != "$defs"}))
        assert len(members) > 200
        derived = [path for path, member, _ in members if "Absent:" in member.get("description", "")]
        for path, member, is_required in members:
            if "$ref" in member:
                continue
            is_object = member.get("type") == "object"
            is_below_derived = any(path.startswith(f"{each}/") for each in derived)
            is_said = ("default" in member) + (path in derived) + is_required
            assert is_said <= 1, path
            assert is_said or is_object or is_below_derived, path

    def test_defaults_are_those_of_the_code(self, schema_text):
        properties = json.loads(schema_text)["properties"]
        of_switch = properties["switches"]["items"]["properties"]
        assert (of_switch["mtu"]["default"], of_switch["maxPorts"]["default"]) == (1500, 16384)
        assert of_switch["features"]["properties"]["burstSize"]["default"] == 32
        assert properties["timing"]["properties"]["flowTimeout"]["default"] == 10
        assert properties["balancerIsAutomatic"]["default"] is False
        assert of_switch["balancer"]["properties"]["metric"]["default"] == "cpu"
        assert properties["flows"]["items"]["properties"]["packetBytes"]["default"] == 512

    def test_defaults_are_what_a_host_has(self, load, control, schema_text):
        assert load(switch(ports=[{}])) is None
        whole = json.loads(control.scenario())
        properties = json.loads(schema_text)["properties"]
        (made,) = whole["switches"]
        of_switch = properties["switches"]["items"]["properties"]
        compared = 0
        for described, present in [(properties, whole), (of_switch, made)]:
            for key, member in described.items():
                if "default" in member and key not in ("switches", "ports"):
                    assert present[key] == member["default"], key
                    compared += 1
        assert compared > 6


class TestWritten:
    """What `check` accepts is written so that `check` accepts it."""

    def assert_it_comes_back(self, load, control, scenario):
        assert load(scenario) is None
        written = control.scenario()
        assert load(written) is None
        assert control.scenario() == written

    @pytest.mark.parametrize(
        "scenario",
        [
            switch(ports=[{"name": "twin", "client": "UPLINK"}, {"name": "twin", "client": "UPLINK"}]),
            {"switches": [{"repeat": 2, "alias": "a{0}", "ports": [{"client": "UPLINK", "name": "nic0"}]}]},
            switch(ports=[{"name": "n" * 100, "client": "UPLINK"}]),
            switch(ports=[{"repeat": 4000}]),
            switch(ports=[{"client": "UPLINK"}, {"repeat": 100}], macTable={"limit": 10, "portLimit": 2}),
            {"switches": [{"repeat": 20, "alias": "a{0}", "datapath": False}]},
            switch(hostProperties={"": "", "a/b~": {"hex": "ff00"}, "comment": "x"}),
            {"switches": [{"alias": "b", "number": 1}, {"alias": "a"}, {"alias": "c"}]},
        ],
        ids=[
            "uplinks named alike",
            "switches with one NIC",
            "a long name",
            "4000 ports",
            "a small MAC table",
            "20 switches elsewhere",
            "properties",
            "numbers",
        ],
    )
    def test_corner_cases(self, load, control, scenario):
        self.assert_it_comes_back(load, control, scenario)

    def test_an_override_that_was_taken_back_is_written(self, load, control, qdp):
        """Its queue may be any number, and says nothing."""
        assert load({**switch(ports=[{}]), "smartnic": {}}) is None
        assert qdp.result("P4RssOverrideSet", 0, 5, 0, 255) is True
        written = json.loads(control.scenario())
        assert written["smartnic"]["rssOverrides"] == [{"switch": 0, "port": 5, "queue": 255, "isOverride": 0}]
        self.assert_it_comes_back(load, control, written)

    def test_vlans_of_4000_ports_filters_are_vlans(self, load, qdp):
        assert load(switch(ports=[{"client": "UPLINK"}, {"repeat": 4500}])) is None
        vlans = set()
        for port in range(2, 4501, 4):
            (filters,) = [value for value in qdp.result("GetPortNetQInfo", 0, port).values() if isinstance(value, list)]
            vlans.update(each.get("vlan") for each in filters)
        assert not vlans - {None, *range(1, 4095)}

    @pytest.mark.parametrize("seed", range(30))
    def test_random_scenarios(self, load, control, schema_text, seed):
        """Made from the schema; what is refused is taken out until the rest is accepted."""
        print("seed", seed)
        random_scenario = RandomScenario(json.loads(schema_text), random.Random(seed))
        scenario = random_scenario.make()
        for _ in range(3000):
            wrong = load(scenario)
            if wrong is None:
                break
            random_scenario.take_out(scenario, wrong.split(": expected ")[0])
        assert wrong is None and scenario.get("switches")
        self.assert_it_comes_back(load, control, scenario)


class RandomScenario:
    """Scenarios in which any key may stand, with any value of its type."""

    def __init__(self, schema, rng):
        self.schema, self.rng = schema, rng

    def make(self):
        made = self.value({key: value for key, value in self.schema.items() if key != "$defs"}, 0)
        switches = [self.value(self.schema["properties"]["switches"]["items"], 1, all_of_it=True) for _ in range(3)]
        own = [{"alias": f"switch{i}", "number": i, "lcores": [4 * i, 4 * i + 1], "repeat": 1} for i in range(3)]
        made["switches"] = [{**each, **these} for each, these in zip(switches, own)]
        return made

    def value(self, schema, depth, all_of_it=False):
        rng = self.rng
        if "$ref" in schema:
            name = schema["$ref"].split("/")[-1]
            return {
                "comment": "a comment",
                "property": rng.choice(["text", "", {"hex": "00 ff"}]),
                "repeat": rng.randint(1, 3),
                "turns": [{}, {}],
            }[name]
        if "anyOf" in schema and "properties" not in schema:
            return self.value(
                next(each for each in [rng.choice(schema["anyOf"]), *schema["anyOf"]] if "$ref" not in each), depth
            )
        if "enum" in schema:
            return rng.choice(schema["enum"])
        types = schema["type"] if isinstance(schema["type"], list) else [schema["type"]]
        return getattr(self, rng.choice(types))(schema, depth, all_of_it)

    def object(self, schema, depth, all_of_it):
        properties = schema.get("properties") or {
            "a": schema["additionalProperties"],
            "": schema["additionalProperties"],
        }
        keys = [key for key in properties if key not in ("turns", "datapath")]
        share = 0.9 if all_of_it else 0.4
        return {key: self.value(properties[key], depth + 1) for key in keys if self.rng.random() < share}

    def array(self, schema, depth, _):
        return [self.value(schema["items"], depth + 1) for _ in range(self.rng.randint(0, 4))]

    def integer(self, schema, *_):
        low, high = schema.get("minimum", 0), schema.get("maximum", 2**16)
        near = min(low + 12, high)
        return self.rng.choice(
            [low, high, self.rng.randint(low, near), self.rng.randint(low, near), self.rng.randint(low, high)]
        )

    def boolean(self, *_):
        return self.rng.random() < 0.5

    def string(self, schema, *_):
        rng = self.rng
        if "pattern" not in schema:
            return rng.choice(["a", "b", "c", "twin", "näme", "{0}", "x" * 31, "y" * 63, "z" * 127, "w" * 4000])
        if "{5}" in schema["pattern"]:
            return ":".join(f"{rng.randrange(4):02x}" for _ in range(6))
        if "[.:]" in schema["pattern"]:
            return rng.choice(["10.0.0.1", "10.0.0.2", "2001:db8::1"])
        return rng.choice(["", "00", "01 02 03 04"])

    def take_out(self, scenario, pointer):
        """Takes out what an error names, or what is around it where nothing stands there or it cannot be spared."""
        path, holder = [], scenario
        for part in [each.replace("~1", "/").replace("~0", "~") for each in pointer.split("/")[1:]]:
            key = int(part) if isinstance(holder, list) else part
            path.append((holder, key))
            if isinstance(holder, dict) and key not in holder:
                break
            holder = holder[key]
        for holder, key in reversed(path):
            if isinstance(holder, list) or key in holder:
                del holder[key]
                return
        raise AssertionError(pointer)


class TestWithout:
    def test_a_host_without_a_smartnic_counts_nothing_there(self, load, host, qdp):
        assert load(switch(ports=[{"client": "UPLINK"}, {"repeat": 3}])) is None
        host.freeze()
        for name in ("P4IStatsGet", "P4EStatsGet", "FlowOpsStatsGet"):
            assert set(flattened(qdp.result(name))) <= {0}, name

    def test_a_switch_without_ports_has_no_flows(self, load, host, qdp):
        assert load(switch()) is None
        host.freeze()
        assert set(flattened(qdp.result("GetFPOStats", 0, (0, 1, 2, 3)))) <= {0, 1, 2, 3}
        assert [each["hits"] for each in qdp.result("GetFPOStats", 0, (0, 1, 2, 3))] == [0] * 4


def flattened(value):
    """The numbers in a result."""
    if isinstance(value, dict):
        value = list(value.values())
    if isinstance(value, (list, tuple)):
        return [number for each in value for number in flattened(each)]
    return [value] if isinstance(value, int) else []


class TestTinyScenario:
    @pytest.fixture
    def tiny(self, load, host, exported):
        assert load(switch(ports=[{"client": "UPLINK", "txQueues": 8, "rxQueues": 8}, {"repeat": 3}])) is None
        assert exported.LibraryInit() == 0
        host.freeze()

    def test_its_ports_are_filled_in(self, tiny, qdp):
        assert [(each["name"], each["swID"]) for each in qdp.result("ListSwitches")] == [("a", 0)]
        ports = qdp.result("ListPorts", 0)
        assert [each["clientType"] for each in ports] == ["UPLINK", "VNIC", "VNIC", "VNIC"]
        assert [each["hwAddr"] for each in ports] == [f"02:10:00:00:00:0{i}" for i in range(4)]

    def test_what_it_has_can_be_asked_for(self, tiny, qdp):
        for name, arguments in {
            "GetPortStats": (0, 3), "GetPortConf": (0, 3), "GetPortTxUplink": (0, 3), "GetUplinkStats": (0, 0),
            "ListRSSEngine": (0, 0), "GetPortNetQInfo": (0, 3), "ListPortMACTable": (0, 3),
            "GetSwitchFilterTypes": ("a",), "GetLBParams": ("a",), "DumpLBStats": (0, 0, 4, 0, 2),
            "GetPortLRO": (0, 3), "ListLCoreIDs": (0,),
        }.items():  # fmt: skip
            outcome = qdp.call(name, *arguments)
            assert outcome.result and not outcome.printed, name

    def test_it_has_no_flows_and_no_smartnic(self, tiny, qdp):
        page = qdp.result("DumpFlowTable", 0, 3, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
        assert page == {"startIndex": NO_MORE, "list": []}
        assert set(qdp.result("GetSwitchMuxMode", 0).values()) == {0}
        assert qdp.call("TableRegMACGet", 1000, 1).result is None


class TestTurns:
    def names(self, load, qdp, entry):
        assert load({"devices": [entry]}) is None
        return [(each["devname"], each["affinity"]) for each in qdp.result("ListDevAffinity")]

    @pytest.mark.parametrize(
        "entry, expected",
        [
            ({"repeat": 3, "name": "nic{7}"}, [("nic7", 0), ("nic8", 0), ("nic9", 0)]),
            ({"repeat": 3, "name": "n{0}", "affinity": {"from": 5}}, [("n0", 5), ("n1", 6), ("n2", 7)]),
            ({"repeat": 4, "name": "n{0}", "affinity": {"from": 1, "step": 2, "every": 2}},
             [("n0", 1), ("n1", 1), ("n2", 3), ("n3", 3)]),
            ({"repeat": 4, "name": "n{0}", "affinity": {"from": 9, "offset": 2, "modulo": 3}},
             [("n0", 11), ("n1", 9), ("n2", 10), ("n3", 11)]),
            ({"repeat": 3, "name": "n{0}", "affinity": {"cycle": [4, {"from": 6}]}}, [("n0", 4), ("n1", 7), ("n2", 4)]),
            ({"repeat": 3, "name": "n{0}", "affinity": {"runs": [[2, 4], [1, None]]}},
             [("n0", 4), ("n1", 4), ("n2", 0)]),
            ({"repeat": 3, "name": "n{0}", "affinity": {"from": {"cycle": [0, 10]}}},
             [("n0", 0), ("n1", 11), ("n2", 2)]),
            ({"repeat": 3, "affinity": 1, "turns": [{"name": "a{0}"}, {"name": "b{0}", "affinity": 2}]},
             [("a0", 1), ("b1", 2), ("a2", 1)]),
        ],
    )  # fmt: skip
    def test_values_take_turns(self, load, qdp, entry, expected):
        assert self.names(load, qdp, entry) == expected

    def test_addresses_count_up(self, load, qdp):
        macs = switch(ports=[{"repeat": 3, "mac": {"from": "02:00:00:00:00:ff", "step": 256}}])
        flows = [
            {
                "repeat": 3,
                "lcore": 0,
                "source": {"from": "10.0.0.255"},
                "destination": {"from": "2001:db8::ffff", "step": 2},
            }
        ]
        assert load({**macs, "flows": flows[:0]}) is None
        assert [each["hwAddr"] for each in qdp.result("ListPorts", 0)] == [f"02:00:00:00:0{i}:ff" for i in range(3)]
        flows[0]["destination"]["from"] = "10.1.255.254"
        assert load({**macs, "flows": flows}) is None
        page = qdp.result("DumpFlowTable", 0, 0, 0, 0, 0, "", 0, "", 0, "", 0, "", 0, 0, 0, 0, 0)
        addresses = [tuple(each["key"].split()[5:7]) for each in page["list"]]
        assert addresses == [("10.0.0.255", "10.1.255.254"), ("10.0.1.0", "10.2.0.0"), ("10.0.1.1", "10.2.0.2")]


class TestRates:
    def test_counters_follow_from_the_scenarios_rates(self, load, host, qdp):
        traffic = {"tx": {"packets": 7, "packetBytes": 100}, "rx": {"packets": 11, "packetBytes": 200}}
        smartnic = {"switch": 0, "lifs": [{"lif": 20}], "traffic": [{"port": 20, **traffic}]}
        assert load({**switch(ports=[traffic]), "smartnic": smartnic, "pipeline": {"packets": 13}}) is None
        host.freeze()
        host.advance(400)
        stats, nic = qdp.result("GetPortStats", 0, 0), qdp.result("PortStatsGet", 20)
        assert (stats["txPkts"], stats["txBytes"], stats["rxPkts"], stats["rxBytes"]) == (
            28000,
            2800000,
            44000,
            8800000,
        )
        assert (nic["txUcastPkts"], nic["rxUcastPkts"]) == (28000, 44000)
        assert qdp.result("P4IStatsGet")["rxFromHost"] == 13 * 4000


    def test_drops_and_errors_are_those_of_the_scenario(self, load, host, qdp):
        """4000 seconds after the host came up."""
        traffic = {
            "tx": {"packets": 700, "packetBytes": 100, "drops": 2, "errors": 3},
            "rx": {"packets": 1100, "packetBytes": 200, "drops": 5, "errors": 7},
        }
        smartnic = {"switch": 0, "lifs": [{"lif": 20}], "traffic": [{"port": 20, **traffic}]}
        assert load({**switch(ports=[{"client": "UPLINK", **traffic}]), "smartnic": smartnic}) is None
        host.freeze()
        host.advance(400)
        stats = qdp.result("GetPortStats", 0, 0)
        assert (stats["txDrops"], stats["rxDrops"], stats["spTxDrops"], stats["spRxDrops"]) == (8000, 20000, 80, 200)
        uplink = dict(qdp.result("GetUplinkStats", 0, 0)["uplinkStats"])
        assert [uplink[key] for key in ("txDrops", "rxDrops", "txErrors", "rxErrors", "rxMissErrors")] == [
            8000, 20000, 12000, 28000, 28000,
        ]  # fmt: skip
        lif = qdp.result("LifStatsGet", 20)
        assert [lif[key] for key in ("txUcastDropPkts", "rxUcastDropPkts", "txDescFetchError", "rxDescFetchError")] == [
            8000, 20000, 12000, 28000,
        ]  # fmt: skip

    def test_queues_and_lcores_are_as_busy_as_the_scenario_says(self, load, host, qdp):
        port = {"rxQueues": 2, "rxLcores": [0, 1], "rxRates": [300, 20], "txQueues": 1, "txLcores": [1]}
        lcores = [{"lcore": 9, "cpu": 97, "failures": 6, "cacheFailures": 2}]
        assert load({**switch(lcores=[8, 9], ports=[port]), "lcores": lcores}) is None
        host.freeze()
        host.advance(400)
        (described,), _, contexts = qdp.result("DumpLBStats", 0, 0, 1, 0, 2)
        assert [each["count load"] for each in described["vnicRxQ"]] == [300, 20]
        assert [each["raw CPU"] for each in contexts] == [0, 97]
        assert [each["ctHwContextFailed"] for each in qdp.result("GetFPOStats", 0, (8, 9))] == [
            (20_000 + 500 * 8) * 4000 // 100_000,
            6 * 4000,
        ]
        (stats,) = qdp.result("GetFPOStats", 0, (9,))
        assert (stats["markMismatched"], stats["pnicMismatched"]) == (3 * 4000, 6 * 1000)
        assert [each["actionAllocFails"] for each in qdp.result("GetFlowStats", 0, (8, 9), 0)] == [0, 2 * 4000]

    def test_as_many_rates_as_queues(self, load):
        expected = "/switches/0/ports/0/rxRates: expected as many rates as there are queues, found a list of 1"
        assert load(switch(ports=[{"rxQueues": 2, "rxRates": [1]}])) == expected


class TestMuxScenario:
    @pytest.fixture
    def at(self, control, scenarios, host, qdp, exported):
        assert control.load(scenarios / "mux.json") == 0, control.error()
        assert exported.LibraryInit() == 0
        host.freeze()
        return qdp.result

    def test_mux_mode_with_its_vlans_and_shadow_ports(self, at):
        assert set(at("GetSwitchMuxMode", 0).values()) == {1}
        (vlans,) = [value for value in at("ListSwitchMuxVLAN", 0, 0).values() if isinstance(value, list)]
        (shadows,) = [value for value in at("ListSwitchShadowPorts", 0, 0).values() if isinstance(value, list)]
        assert [tuple(each.values()) for each in vlans] == [(256 + i, 64 + i, 100 + i) for i in range(24)]
        assert [tuple(each.values()) for each in shadows] == [(64 + i, (1, 3)[i % 2], 100 + i) for i in range(24)]

    def test_lifs_and_vlan_ports(self, at):
        lifs = at("LifPortList", 0)["liflist"]
        assert [each["lifID"] for each in lifs] == [1, 2, 3, 4, 8, 9, *range(16, 22)]
        entry = at("TableMuxVlanGet", 105, 0)
        assert [entry[key] for key in ("vlanId", "valid", "lif0", "lif1", "srcPortId", "repPortId")] == [
            105,
            1,
            3,
            4,
            261,
            773,
        ]
        assert at("TableMuxVlanGet", 124, 0)["valid"] == 0

    def test_offloaded_flows_and_their_tunnels(self, at):
        info = at("TableFlowInfoGet", 100)
        assert (info["encap"], info["encapIdx"], info["isDstUplink"]) == (1, 17, 1)
        assert at("TableTunnelRewriteGet", info["encapIdx"])["geneve"] == 1
        assert at("FlowOpsStatsGet")["entries"] == 210 + 240 + 30
        assert info["count"] == 6000 * 3600

    def test_memory_that_the_scenario_describes(self, host, at):
        size = ctypes.c_uint32(2048)
        buffer = ctypes.create_string_buffer(2048)
        request = (ctypes.c_uint32 * 3)(0, 3, 1)
        assert host.libqdp.Qdp_P4_HWTable_Dump(request, 12, buffer, ctypes.byref(size)) == 0
        assert buffer.raw[16:32] == bytes(range(16))

    def test_an_automatic_balancer_refuses_to_be_overruled(self, at, qdp):
        assert (
            "utomatic"
            in qdp.call("MigrateNetQFilter", 0, 3, 1).printed + qdp.call("MigratePort", 0, 3, 3, 1, 1).printed
        )

    def test_what_is_switched_on(self, host, at):
        host.advance(10)
        assert at("GetOffloadFlows", "dvs-mux") is True and at("AdvStatsGetEnabled", 0) is True
        assert at("P4UKLatencyDump", 0)


class TestLargeScenario:
    @pytest.fixture
    def large(self, release_only, control, scenarios, host):
        assert control.load(scenarios / "large.json") == 0, control.error()
        host.freeze()
        return host

    def test_it_is_large(self, large, qdp):
        switches = qdp.result("ListSwitches")
        assert len(switches) == 16 and switches[0]["numPorts"] == 16384
        assert len(qdp.result("ListPorts", 0)) == 16384
        stats = [qdp.result("GetFlowStats", 0, tuple(range(first, first + 32)), 0) for first in (0, 32)]
        assert sum(each["numFlows"] for page in stats for each in page) == 1_000_000
        size = ctypes.c_uint32(1310736)
        table = ctypes.create_string_buffer(1310736)
        assert large.libqdp.Qdp_Dump_Switch_MAC_Table(0, table, ctypes.byref(size)) == 0
        assert int.from_bytes(table.raw[:4], "little") == 65536
        for number in (0, 8000, 16383):
            assert qdp.result("GetPortStats", 0, number)["rxPkts"] > 0
            assert qdp.result("GetPortConf", 0, number)["portID"] == number
