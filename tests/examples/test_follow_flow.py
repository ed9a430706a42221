"""The example that follows a flow, as an operator would run it."""

import os
import re
import subprocess

import pytest

KEY = (
    "source=02:1b:21:02:00:1c destination=02:50:56:0a:00:c0 port=42 protocol=6 "
    "source_ip=10.2.3.199 destination_ip=10.2.17.137 source_port=35456 destination_port=443"
).split()
IPV6_KEY = (
    "vlan=0 source=02:1b:21:02:00:1e destination=02:50:56:0a:00:c2 port=44 vni=0 protocol=6 "
    "source_ip=2001:db8:2::10c9 destination_ip=2001:db8:2:10::1097 source_port=35718 destination_port=5432"
).split()


@pytest.fixture
def follow(root, build):
    def run(*arguments):
        return subprocess.run(
            ["/usr/bin/python3", str(root / "examples" / "follow_flow.py"), *arguments],
            env={**os.environ, "LD_LIBRARY_PATH": str(build / "host"), "PYTHONPATH": str(build)},
            capture_output=True,
            text=True,
            timeout=60,
        )

    return run


def lines(done):
    """The path of a flow, whose counters and sequence numbers are left out."""
    assert (done.returncode, done.stderr) == (0, "")
    text = re.sub(r"[\d,]+ (packets|bytes)", r"# \1", done.stdout)
    return [line.strip() for line in re.sub(r"sequence \d+", "sequence #", text).splitlines()]


FIRST = [
    "Flow 100: # packets, forwarded",
    "comes in",
    "tag 2086",
    "counters 0: # packets, # bytes",
    "is rewritten",
    "02:1b:21:02:00:18 -> 02:1b:21:02:00:10, VLAN 204",
    "edits: vlanPush, vlanSet",
    "leaves",
    "port 30, LIF 30, application classic nic",
    "counters 0: # packets, # bytes",
]
INTO_A_TUNNEL = [
    "Flow 101: # packets, forwarded",
    "comes in",
    "tag 2090",
    "connection 1: source in state 4 from sequence #, destination in state 4 from sequence #",
    "counters 1: # packets, # bytes, TCP flags SYN ACK",
    "is rewritten",
    "02:1b:21:02:00:1c -> 02:50:56:0a:00:c0, VLAN 0",
    "enters tunnel 17",
    "172.16.0.1 -> 172.16.0.2, VNI 69632, VLAN 300, TTL 64",
    "02:1b:21:02:00:00 -> 00:1b:21:aa:00:01",
    "leaves",
    "port 8, LIF 8, application default, uplink 0, logical port 8",
    "connection 1: source in state 4 from sequence #, destination in state 4 from sequence #",
    "counters 1: # packets, # bytes, TCP flags SYN ACK",
]


def test_the_first_flow(follow):
    assert lines(follow()) == FIRST


@pytest.mark.parametrize("arguments", [["101"], ["--key", *KEY]], ids=["index", "key"])
def test_a_flow_into_a_tunnel(follow, arguments):
    assert lines(follow(*arguments)) == INTO_A_TUNNEL


def test_its_counters_are_those_of_an_hour(follow):
    packets, total = re.search(r"counters 1: ([\d,]+) packets, ([\d,]+) bytes", follow("101").stdout).groups()
    packets, total = int(packets.replace(",", "")), int(total.replace(",", ""))
    assert packets >= 3600 * 8580 and total == packets * 1240


def test_a_flow_out_of_a_tunnel(follow):
    path = lines(follow("103"))
    assert path[:4] == ["Flow 103: # packets, forwarded", "comes in", "tag 2057, uplink 1, logical port 9", "out of a tunnel"]
    assert "port 30, LIF 30, application classic nic" in path


def test_an_ipv6_flow_by_its_key(follow):
    path = lines(follow("--key", *IPV6_KEY))
    assert path[0] == "Flow 102: # packets, forwarded"
    assert "fd00:0:0:1::1 -> fd00:0:0:1::2, VNI 5000, VLAN 301, TTL 64" in path


def test_a_mirrored_flow(follow):
    path = lines(follow("105"))
    mirrored = [line for line in path if line.startswith("mirrored")]
    assert mirrored == ["mirrored by session 1 to port 8, VLAN 400"] + [
        f"mirrored by session {session} to port 9, VLAN 401" for session in range(3)
    ]


def test_a_dropped_flow(follow):
    path = lines(follow("123"))
    assert (path[0], path[-1]) == ("Flow 123: # packets, dropped", "is dropped")
    assert "leaves" not in path


@pytest.mark.parametrize(
    "arguments, printed",
    [
        (["4000"], "The pipeline has no flow 4000\n"),
        (["--key", "vlan=104"], "Failed to get table data\nThe pipeline knows no such flow\n"),
        (["--key", "colour=red"], "A flow's key has no part 'colour'"),
        (["--key", "source=02:1b"], "source=02:1b: a MAC address has six bytes\n"),
        (["--key", "source_ip=::1"], "Both addresses of a flow are of one family\n"),
        (["one"], "Follows one flow"),
        (["4194304"], "Follows one flow"),
    ],
)
def test_what_cannot_be_followed(follow, arguments, printed):
    done = follow(*arguments)
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.startswith(printed)
