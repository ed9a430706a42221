"""The SmartNIC: its lists, its tables by name, what their keys are packed to, and the path of a flow."""

import inspect
import struct

import _libqdp
import pytest

import qdp
from qdp.nic import TABLES


@pytest.fixture
def nic(host):
    host.freeze()
    return qdp.Host().nic


def commands(calls):
    """The requests of commands to the SmartNIC."""
    return [call.arguments[0] for call in calls if call.operation == "Qdp_P4_Cmd"]


def test_lists_are_read_to_the_end(nic):
    assert [lif.lifID for lif in nic.lifs()] == [*range(1, 5), 8, 9, *range(16, 196)]
    assert [port.muxVLAN for port in nic.vlan_ports()] == list(range(100, 280))
    ports = [port.dstPort for port in nic.ports()]
    assert ports == sorted(set(ports)) and len(ports) > 2 * 63
    assert nic.host_pfs() == [1, 2, 3, 4]


# --- Tables ---


def test_every_reader_has_a_name():
    readers = {name for name, value in vars(_libqdp).items() if inspect.isbuiltin(value) and name.startswith("Table")}
    assert {row.method for row in TABLES} == readers
    assert len({row.name for row in TABLES}) == len(TABLES) == 23


def test_parameters_are_those_of_the_reader():
    """The halves of an address are two parameters of the reader, the family is one."""
    for row in TABLES:
        width = {"address": 2}
        expected = sum(width.get(parameter.kind, 1) for parameter in row.parameters)
        assert len(inspect.signature(getattr(qdp.methods, row.method)).parameters) == expected


def test_entry_by_index(nic):
    assert nic.tables["flow_info"][101] == qdp.methods.TableFlowInfoGet(101)
    assert nic.tables["mirror"][1] == qdp.methods.TableMirrorGet(1, 0)
    assert nic.tables["mirror"][1, 1] == nic.tables["mirror"].read(1, half=1) == qdp.methods.TableMirrorGet(1, 1)
    assert nic.tables["uplink_map"].read() == nic.tables["uplink_map"][()] == qdp.methods.TableUplinkMapGet()


# By table: parameters, and the reader's arguments. The halves of an address are signed, the low one first.
PACKED = {
    "reg_mac": ([7, "02:00:5e:10:ab:01"], (7, 0x02005E10AB01)),
    "tunnel_sa": ({"value": 9, "address": "10.0.0.1"}, (9, 1, 0x0A000001, 0)),
    "tunnel_terminate": (
        {"mac": "02:00:5e:10:ab:01", "value": 8, "vlan_1": 300, "address": "2001:db8::8000:0:0:1"},
        (0x02005E10AB01, 8, 1, 0, 300, 4095, 1 - (1 << 63), 0x20010DB800000000),
    ),
    "flow_key": (
        {"vlan": 5, "source": "02:00:5e:10:ab:01", "protocol": 6, "destination_ip": "10.0.0.2", "source_port": 80},
        (5, 0x02005E10AB01, 0, 0, 0, 0, 6, 1, 0, 0, 0x0A000002, 0, 80, 0),
    ),
    "vlan_map": ([4094], (4094, 0)),
    "mirror_l3": ([5, 1023], (5, 1023)),
}


@pytest.mark.parametrize("name", PACKED)
def test_keys_are_packed_as_the_reader_takes_them(nic, name):
    given, arguments = PACKED[name]
    table = nic.tables[name]
    packed = table.packed(**given) if isinstance(given, dict) else table.packed(*given)
    assert packed == arguments


# 65541 would be read as VLAN 5, flow index 65536 as 0, an index modulo 2^32.
REFUSED = {
    "vlan_map": [[65541], [4095], [-1]],
    "flow_key": [{"index": 65536}, {"vlan": 4095}, {"source_ip": "10.0.0.1", "destination_ip": "::1"}, {"colour": 1}],
    "flow_info": [[1 << 22], [-1], ["101"], [True], [None], [], [1, 2]],
    "mirror": [[8], [0, 2]],
    "l2_seg": [[1 << 32]],
    "reg_mac": [[7, "02:00"], [65536, "02:00:5e:10:ab:01"]],
    "tunnel_sa": [{"value": 256, "address": "10.0.0.1"}, {"value": 1}],
    "lif_stats": [[1024]],
}


@pytest.mark.parametrize("name, given", [(name, given) for name, every in REFUSED.items() for given in every])
def test_key_out_of_range_is_refused_before_any_call(nic, host, name, given):
    with host.recording() as calls, pytest.raises(qdp.InvalidArgument):
        nic.tables[name].read(**given) if isinstance(given, dict) else nic.tables[name].read(*given)
    assert calls == []


def test_request_of_a_key_lies_as_the_platform_has_it(nic, host):
    """Length 16, opcode 11, table 14, key length 8; the first part of the key, and the address as a number."""
    with host.recording() as calls, pytest.raises(qdp.Refused):
        nic.tables["reg_mac"].read(7, mac="02:00:5e:10:ab:01")
    assert commands(calls) == [struct.pack("<5H", 16, 11, 14, 8, 7) + b"\x01\xab\x10\x5e\x00\x02"]


def test_tables_are_a_mapping(nic):
    assert list(nic.tables)[:2] == ["lif_stats", "port_stats"] and len(nic.tables) == 23
    assert "flow_info" in nic.tables and "flows" not in nic.tables and nic.tables.get("flows") is None
    with pytest.raises(qdp.NotFound, match="no table flows"):
        nic.tables["flows"]
    with pytest.raises(TypeError):
        iter(nic.tables["flow_info"])
    assert repr(nic.tables["mirror"]) == "<Table mirror(session, half): a mirror session>"


# --- The path of a flow ---


def steps(trace):
    return [(step.step, step.table, step.arguments) for step in trace]


PATH_OF_101 = [
    ("comes in", "flow_info", (101,)),
    ("comes in", "ct_state", (1, 0)),
    ("comes in", "ipfix", (1, 0)),
    ("is rewritten", "flow_rewrite", (101,)),
    ("enters tunnel 17", "tunnel_rewrite", (17,)),
    ("leaves", "output", (8,)),
    ("leaves", "uplink_map", ()),
    ("leaves", "ct_state", (1, 1)),
    ("leaves", "ipfix", (1, 1)),
]


def test_path_of_a_flow_by_index_and_by_key(nic):
    trace = list(nic.trace(101))
    assert steps(trace) == PATH_OF_101
    for step in trace:
        assert step.entry == nic.tables[step.table].read(*step.arguments)
    assert [step.uplink for step in trace if step.table == "uplink_map"] == [0]
    key = {"source": "02:10:00:02:00:1c", "destination": "02:40:00:0a:00:c0", "port": 42, "protocol": 6}
    addresses = {"source_ip": "10.2.3.199", "destination_ip": "10.2.17.137"}
    assert steps(nic.trace(source_port=35456, destination_port=443, **key, **addresses)) == PATH_OF_101


def test_path_of_the_first_flow_that_there_is(nic):
    assert next(nic.trace()).arguments == (100,)


def test_dropped_flow_leaves_nowhere(nic):
    assert list(dict.fromkeys(step.step for step in nic.trace(123))) == ["comes in", "is rewritten"]


def test_flow_that_the_pipeline_does_not_have(nic):
    with pytest.raises(qdp.NotFound, match="the pipeline has no flow 4000"):
        nic.trace(4000)
    with pytest.raises(qdp.Refused, match="TableFlowKeyGet"):
        nic.trace(vlan=104)
    with pytest.raises(qdp.InvalidArgument):
        nic.trace(1 << 22)


def test_entry_on_the_way_that_is_refused(nic, host):
    """Of flow 101, the fifth command reads the tunnel."""
    host.fail("Qdp_P4_Cmd", nth=5)
    with pytest.raises(qdp.Refused, match="TableTunnelRewriteGet"):
        list(nic.trace(101))
    host.fail("Qdp_P4_Cmd", nth=5)
    failures = []
    assert steps(nic.trace(101, failures=failures)) == PATH_OF_101[:4] + PATH_OF_101[5:]
    assert [str(failure) for failure in failures] == ["TableTunnelRewriteGet(17): Failed to get table data"]


# --- Verbs and counters ---


def test_reads_what_its_methods_give(nic):
    pairs = [
        (nic.lif_stats(1), qdp.methods.LifStatsGet(1)),
        (nic.port_stats(17), qdp.methods.PortStatsGet(17)),
        (nic.ingress_stats(), qdp.methods.P4IStatsGet()),
        (nic.egress_stats(), qdp.methods.P4EStatsGet()),
        (nic.ct_stats(1), qdp.methods.CTStatsGet(1)),
        (nic.flow_stats(1), qdp.methods.P4StatsFlowGet(1)),
        (nic.flow_ops(), qdp.methods.FlowOpsStatsGet()),
        (nic.latency(1), qdp.methods.P4UKLatencyDump(1)),
        (nic.hw_tables(), qdp.methods.P4HWTableList()),
        (nic.dump(0, 0, 2), qdp.methods.P4HWTableDump(0, 0, 2)),
        (nic.ct_context(1), qdp.methods.P4CTContextQuery(1)),
        (nic.fpo_context(2, 101, 1), qdp.methods.FPOQueryContextMgr(2, 101, 1)[0]),
        (nic.mirror_sessions(), qdp.methods.P4MirrorTableDump()),
        (nic.port_mirrors(1, 0), qdp.methods.P4PortMirrorTableDump(1, 0)),
    ]
    for found, expected in pairs:
        assert found == expected and found


def test_verbs(nic, host):
    """A request begins with its length and its opcode."""
    with host.recording() as calls:
        nic.create_lif(40, 40, 41, flow_key_type=1, lif_type=2, status=1)
        nic.update_lif(40, 2, 0, 1)
        nic.create_vlan_port(900, 50, 51, 1, 5, 6)
        nic.update_vlan_port(900, 2)
        nic.set_default_vlan(40, 20)
        nic.delete_port(40)
        nic.invalidate_cache(0, 0, 2)
    heads = [struct.unpack_from("<HH", request) for request in commands(calls)]
    assert [opcode for _, opcode in heads] == [2, 3, 5, 6, 8, 9]
    assert all(length == len(request) for (length, _), request in zip(heads, commands(calls)))
    assert [call.operation for call in calls][-1] == "Qdp_P4_Cache_Invalidate"
    vlan_port = next(port for port in nic.vlan_ports() if port.muxVLAN == 900)
    assert (vlan_port.pfLif0, vlan_port.pfLif1, vlan_port.flowKeyType) == (5, 6, 2)


@pytest.mark.parametrize("lifs", [(300, 5), (5, 256), (-1, 5)])
def test_lif_of_which_only_the_low_bits_would_be_sent_is_refused(nic, host, lifs):
    with host.recording() as calls, pytest.raises(qdp.InvalidArgument, match="a PF's LIF is 0 to 255"):
        nic.create_vlan_port(900, 50, 51, 1, *lifs)
    assert calls == []


def test_arguments_are_checked(nic, host):
    with host.recording() as calls:
        for call in (
            lambda: nic.lif_stats(1024),
            lambda: nic.set_default_vlan(1, 4095),
            lambda: nic.create_lif(1, 2, 3, lif_type=9),
            lambda: nic.update_lif(1, 3, 0, 0),
            lambda: nic.invalidate_cache(0, -1, 1),
            lambda: nic.port_mirrors(65536, 0),
        ):
            with pytest.raises(qdp.InvalidArgument):
                call()
    assert calls == []
