"""A shared host under load: many processes that read and write at once see what a model of one host says."""

import json
import statistics
import subprocess
import sys
import time

import pytest

import qdp_host

# Each worker owns a port, whose MAC entries have to be those that it has added. All share one setting: whatever one
# reads, somebody wrote. Counters are of one clock and never go back.
WORKER = """
import json, random, sys, time
import _libqdp

number, port, seconds, workers = int(sys.argv[1]), int(sys.argv[2]), float(sys.argv[3]), int(sys.argv[4])
chance = random.Random(number)
last_packets = 0
wrong, latencies, macs = [], [], {}


def check(condition, *facts):
    if not condition and len(wrong) < 5:
        wrong.append(repr(facts))


def timed(method, *arguments):
    begin = time.perf_counter_ns()
    result = method(*arguments)
    latencies.append(time.perf_counter_ns() - begin)
    return result


def address(low):
    return int.from_bytes(bytes([2, 0, number, 0, low, 1]), "little")


def own(table):
    head = "02:00:%02x:00:" % number
    return {each["macAddr"]: each["vlanID"] for each in table["MacTableList"] if each["macAddr"].startswith(head)}


sys.stdin.readline()
end = time.monotonic() + seconds
while time.monotonic() < end:
    act = chance.randrange(6)
    if act == 0:
        timed(_libqdp.SetFlowTimeout, 1000 + number)
    elif act == 1:
        value = timed(_libqdp.GetFlowTimeout)
        check(value == 10 or 1000 <= value < 1000 + workers, "flow timeout", value)
    elif act == 2:
        low = chance.randrange(8)
        mac = "02:00:%02x:00:%02x:01" % (number, low)
        if mac in macs:
            timed(_libqdp.DelMACEntry, 0, port, address(low), macs.pop(mac))
        else:
            macs[mac] = chance.randrange(1, 100)
            timed(_libqdp.AddMACEntry, 0, port, address(low), macs[mac])
    elif act == 3:
        found = own(timed(_libqdp.ListPortMACTable, 0, port))
        check(found == macs, "MACs", found, macs)
    elif act == 4:
        packets = timed(_libqdp.GetPortStats, 0, port)["rxPkts"]
        check(packets >= last_packets, "counter", packets, last_packets)
        last_packets = packets
    else:
        names = [each["name"] for each in timed(_libqdp.ListSwitches)]
        check(names == ["edge"], "switches", names)
latencies.sort()
print(json.dumps({"wrong": wrong, "calls": len(latencies), "macs": macs,
                  "median": latencies[len(latencies) // 2] / 1000,
                  "p99": latencies[len(latencies) * 99 // 100] / 1000, "most": latencies[-1] / 1000}))
"""
LEFT = "import _libqdp, json; print(json.dumps(_libqdp.ListSwitchMACTable(0)['MacTableList']))"


def load(build, monkeypatch, num_workers, seconds):
    """Runs the workers, checks what they saw and left, prints the latencies, and returns the number of calls."""
    monkeypatch.setenv("QDP_HOST_LIBRARIES", str(build / "host"))
    monkeypatch.delenv("QDP_HOST", raising=False)
    ports = [{"name": "nic0", "client": "UPLINK"}] + [{"name": "vnic{}".format(i)} for i in range(num_workers)]
    with qdp_host.serving({"switches": [{"alias": "edge", "ports": ports}]}) as host:
        begin = host.uptime(), time.monotonic()
        workers = []
        for number in range(num_workers):
            line = [sys.executable, "-c", WORKER, *map(str, (number, number + 1, seconds, num_workers))]
            workers.append(
                subprocess.Popen(line, env=host.environment(), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
            )
        for worker in workers:  # all at once
            worker.stdin.write("\n")
            worker.stdin.flush()
        results = [json.loads(worker.communicate(timeout=seconds + 300)[0]) for worker in workers]
        assert [worker.returncode for worker in workers] == [0] * num_workers
        elapsed = host.uptime() - begin[0], time.monotonic() - begin[1]
        assert abs(elapsed[0] - elapsed[1]) < 2  # the real clock

        left = subprocess.run([sys.executable, "-c", LEFT], env=host.environment(), stdout=subprocess.PIPE, text=True)
        found = {(each["macAddr"], each["vlanID"]) for each in json.loads(left.stdout)}
        for number, result in enumerate(results):
            own = {each for each in found if each[0].startswith("02:00:%02x:00:" % number)}
            assert own == set(result["macs"].items())
        assert host.unreleased_values() == 0
    assert [result["wrong"] for result in results] == [[]] * num_workers
    calls = sum(result["calls"] for result in results)
    median = statistics.median(result["median"] for result in results)
    worst = [max(result[name] for result in results) for name in ("p99", "most")]
    print(
        "{} processes in {} s: {:.0f} calls a second; microseconds of a call: median {:.0f}, of the slowest process's "
        "99 % {:.0f}, at most {:.0f}".format(num_workers, seconds, calls / seconds, median, *worst)
    )
    return calls


def test_some_processes(build, monkeypatch):
    assert load(build, monkeypatch, 6, 3) > 1000


@pytest.mark.long
def test_64_processes_for_a_minute(build, monkeypatch):
    assert load(build, monkeypatch, 64, 60) > 64 * 60
