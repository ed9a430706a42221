"""The example that follows a flow, as an operator would run it."""

import re

import _libqdp
import pytest

KEY = (
    "source=02:10:00:02:00:1c destination=02:40:00:0a:00:c0 port=42 protocol=6 "
    "source_ip=10.2.3.199 destination_ip=10.2.17.137 source_port=35456 destination_port=443"
).split()
IPV6_KEY = (
    "vlan=0 source=02:10:00:02:00:1e destination=02:40:00:0a:00:c2 port=44 vni=0 protocol=6 "
    "source_ip=2001:db8:2::10c9 destination_ip=2001:db8:2:10::1097 source_port=35718 destination_port=5432"
).split()

CHECK = "check that the switch, port or table exists and that the feature is on; see the log of the platform"
MIXED = "the addresses for table flow_key are of both families; give all IPv4 or all IPv6"

# In an hour, at 7,540 packets a second of 1,092 bytes, and at 8,580 of 1,240.
FIRST = """\
Flow 100: 27,144,000 packets, forwarded
  comes in
      tag 2086
      counters 0: 27,144,000 packets, 29,641,248,000 bytes
  is rewritten
      02:10:00:02:00:18 -> 02:10:00:02:00:10, VLAN 204, VNI 0, edits vlanPush vlanSet
  leaves
      port 30, LIF 30, application classic nic
      counters 0: 27,144,000 packets, 29,641,248,000 bytes
"""
INTO_A_TUNNEL = """\
Flow 101: 30,888,000 packets, forwarded
  comes in
      tag 2090
      connection 1: source in state 4 from sequence #, destination in state 4 from sequence #
      counters 1: 30,888,000 packets, 38,301,120,000 bytes, TCP flags SYN ACK
  is rewritten
      02:10:00:02:00:1c -> 02:40:00:0a:00:c0, VLAN 0, VNI 69632
  enters tunnel 17
      172.16.0.1 -> 172.16.0.2, TTL 64, 02:10:00:02:00:00 -> 02:30:00:aa:00:01, VLAN 300
  leaves
      port 8, LIF 8, application default
      uplink 0, logical port 8
      connection 1: source in state 4 from sequence #, destination in state 4 from sequence #
      counters 1: 30,888,000 packets, 38,301,120,000 bytes, TCP flags SYN ACK
"""


@pytest.fixture(scope="module")
def path(printed):
    """The lines of a flow's path, whose sequence numbers are left out."""

    def path(*arguments):
        return re.sub(r"sequence \d+", "sequence #", printed("follow_flow.py", *arguments))

    return path


def test_the_first_flow(path):
    assert path() == FIRST


@pytest.mark.parametrize("arguments", [["101"], ["--key", *KEY]], ids=["index", "key"])
def test_a_flow_into_a_tunnel(path, arguments):
    assert path(*arguments) == INTO_A_TUNNEL


def test_a_flow_out_of_a_tunnel(path):
    lines = [line.strip() for line in path("103").splitlines()]
    assert lines[1:4] == ["comes in", "tag 2057, out of a tunnel", "uplink 1, logical port 9"]
    assert "port 30, LIF 30, application classic nic" in lines


def test_an_ipv6_flow_by_its_key(path):
    lines = path("--key", *IPV6_KEY).splitlines()
    assert lines[0].startswith("Flow 102: ")
    assert any("fd00:0:0:1::1 -> fd00:0:0:1::2, TTL 64" in line and "VLAN 301" in line for line in lines)
    assert any("VNI 5000" in line for line in lines)


def test_a_mirrored_flow(path):
    mirrored = [line.strip() for line in path("105").splitlines() if "mirrored" in line]
    assert mirrored == ["mirrored by session 1 to port 8, VLAN 400"] + [
        f"mirrored by session {session} to port 9, VLAN 401" for session in range(3)
    ]


def test_a_dropped_flow(path):
    lines = path("123").splitlines()
    assert lines[0] == "Flow 123: 2,592,000 packets, dropped"
    assert [line.strip() for line in lines if not line.startswith("      ")][1:] == ["comes in", "is rewritten"]


@pytest.mark.parametrize("index", [100, 101, 103, 105, 123])
def test_json_has_the_answers_of_the_methods(frozen, rows, index):
    array = rows("follow_flow.py", str(index))
    for row in array:
        assert list(row)[:4] == ["step", "method", "arguments", "entry"]
        assert row["entry"] == getattr(_libqdp, row["method"])(*row["arguments"])
    assert array[0]["arguments"] == [index]
    info = array[0]["entry"]
    leaves = [(row["method"], row["arguments"]) for row in array if row["step"] == "leaves"]
    assert (("TableOutputGet", [info["dstPort"]]) in leaves) == (not info["drop"])


def test_json_of_a_path_in_order(rows):
    assert [(row["step"], row["method"], row["arguments"]) for row in rows("follow_flow.py", "101")] == [
        ("comes in", "TableFlowInfoGet", [101]),
        ("comes in", "TableCTStateGet", [1, 0]),
        ("comes in", "TableIPFixGet", [1, 0]),
        ("is rewritten", "TableFlowRewriteGet", [101]),
        ("enters tunnel 17", "TableTunnelRewriteGet", [17]),
        ("leaves", "TableOutputGet", [8]),
        ("leaves", "TableUplinkMapGet", []),
        ("leaves", "TableCTStateGet", [1, 1]),
        ("leaves", "TableIPFixGet", [1, 1]),
    ]


@pytest.mark.parametrize(
    "arguments, said",
    [
        (["4000"], 'the pipeline has no flow 4000; offloaded flows have "hwFlowIdx" among their actions'),
        (
            ["--key", "vlan=104"],
            "TableFlowKeyGet(104, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0): Failed to get table data; " + CHECK,
        ),
        (["--key", "source_ip=::2", "destination_ip=0.0.0.1"], MIXED),
    ],
)
def test_a_flow_that_there_is_not(run, arguments, said):
    done = run("follow_flow.py", *arguments)
    assert (done.returncode, done.stdout, done.stderr) == (2, "", f"follow_flow.py: {said}\n")
    assert run("follow_flow.py", *arguments, "--json").stdout == "[]\n"


@pytest.mark.parametrize(
    "arguments, said",
    [
        (["--key", "colour=red"], "argument --key: 'colour=red' is not PART=VALUE with a PART of vlan, source, "),
        (["--key", "source"], "argument --key: 'source' is not PART=VALUE with a PART of vlan, source, "),
        (["--key", "protocol=256"], "argument --key: '256' is not an integer from 0 to 255"),
        (["--key", "source=02:1b"], "argument --key: '02:1b' is not a MAC address such as 02:20:00:00:03:01"),
        (["--key", "source_ip=10.2"], "argument --key: '10.2' is not an IP address such as 10.0.0.1 or 2001:db8::1"),
        (["--key"], "argument --key: expected at least one argument"),
        (["one"], "argument index: 'one' is not an integer from 0 to 4194303"),
        (["4194304"], "argument index: '4194304' is not an integer from 0 to 4194303"),
        (["100", "--key", "vlan=0"], "argument --key: not allowed with argument index"),
    ],
)
def test_wrong_usage(run, arguments, said):
    done = run("follow_flow.py", *arguments)
    assert (done.returncode, done.stdout) == (1, "")
    assert f"\nfollow_flow.py: error: {said}" in done.stderr


def test_an_entry_on_the_way_that_is_refused(run, refused):
    done = run("follow_flow.py", "101", prepare="host.fail('Qdp_P4_Cmd', nth=5)")  # the tunnel's
    assert done.returncode == 2
    assert done.stderr == refused("follow_flow.py", "TableTunnelRewriteGet(17)", "Failed to get table data")
    assert "enters tunnel" not in done.stdout and "  leaves\n" in done.stdout


def test_a_pipeline_without_flows(run):
    prepare = """
import _libqdp
empty = {key: 0 for key in _libqdp.TableFlowInfoGet(0)}
_libqdp.TableFlowInfoGet = lambda index: empty
"""
    done = run("follow_flow.py", prepare=prepare)
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr == (
        "follow_flow.py: none of the first 4096 entries holds a flow; "
        'offloaded flows have "hwFlowIdx" among their actions\n'
    )
