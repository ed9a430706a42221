"""The example that follows a flow, as an operator would run it."""

import os
import re
import subprocess

import pytest

KEY = (
    "vlan=102 source=02:1b:21:02:00:02 destination=02:50:56:0a:00:01 port=2 vni=5102 protocol=6 "
    "source_ip=10.1.0.2 destination_ip=10.2.0.5 source_port=40001 destination_port=443"
).split()
IPV6_KEY = (
    "vlan=100 source=02:1b:21:02:00:04 destination=02:50:56:0a:00:03 port=4 vni=5100 protocol=6 "
    "source_ip=fd00:0:0:aa::4 destination_ip=fd00:0:0:bb::9 source_port=40003 destination_port=22"
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
    "Flow 3: # packets, forwarded",
    "comes in",
    "tag 258",
    "connection 1: source in state 4 from sequence #, destination in state 4 from sequence #",
    "counters 1: # packets, # bytes, TCP flags SYN ACK",
    "is rewritten",
    "02:1b:21:02:00:02 -> 02:50:56:0a:00:01, VLAN 102",
    "edits: vlanPush, route",
    "enters tunnel 17",
    "172.16.0.1 -> 172.16.0.2, VNI 5102, VLAN 300, TTL 64",
    "02:1b:21:02:00:00 -> 00:1b:21:aa:00:01",
    "leaves",
    "port 0, LIF 64, application default, uplink 0, logical port 0",
    "counters 1: # packets, # bytes, TCP flags SYN ACK",
]


@pytest.mark.parametrize("arguments", [[], ["3"], ["--key", *KEY]], ids=["first", "index", "key"])
def test_a_flow_into_a_tunnel(follow, arguments):
    assert lines(follow(*arguments)) == FIRST


def test_its_counters_are_those_of_an_hour(follow):
    packets, total = re.search(r"counters 1: ([\d,]+) packets, ([\d,]+) bytes", follow().stdout).groups()
    packets, total = int(packets.replace(",", "")), int(total.replace(",", ""))
    assert packets >= 3600 * 900 and total == packets * 1400


def test_a_reply_out_of_a_tunnel(follow):
    path = lines(follow("10"))
    assert path[:4] == ["Flow 10: # packets, forwarded", "comes in", "tag 256, uplink 0, logical port 0", "out of a tunnel"]
    assert "port 2, LIF 66, application classic nic" in path


def test_an_ipv6_flow_by_its_key(follow):
    path = lines(follow("--key", *IPV6_KEY))
    assert path[0] == "Flow 31: # packets, forwarded"
    assert "fd00:0:0:1::1 -> fd00:0:0:1::2, VNI 5100, VLAN 301, TTL 64" in path


def test_a_mirrored_flow(follow):
    assert "mirrored by session 0 to port 0, VLAN 400" in lines(follow("45"))


def test_a_dropped_flow(follow):
    path = lines(follow("59"))
    assert (path[0], path[-1]) == ("Flow 59: # packets, dropped", "is dropped")
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
