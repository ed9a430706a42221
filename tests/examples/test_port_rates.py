"""The example that prints the rates of ports."""

import json
import os
import pty
import re
import signal
import struct

import _libqdp

HOUR = 3600
PORTS = 8  # of switch 1


def traffic(number):
    """Packets a second and bytes a packet that a port of the embedded host sends, and receives."""
    return (1000 + 37 * number, 64 + 17 * number), (1500 + 53 * number, 64 + 23 * number)


def grown(packets, start, end, share):
    """How much a counter grows that counts one of so many packets."""
    return packets * end // share - packets * start // share


def expected_rates(number, start, end):
    """The rates of a port between two times of the host's clock. The slow path counts a hundredth of the packets again.
    None is dropped on this switch."""
    rates = []
    for packets, size in traffic(number):
        sent = grown(packets, start, end, 1) + grown(packets, start, end, 100)
        rates += [sent / (end - start), sent * size * 8 / (end - start)]
    keys = ["txPktsPerSecond", "txBitsPerSecond", "rxPktsPerSecond", "rxBitsPerSecond", "dropsPerSecond"]
    return dict(zip(keys, rates + [0]))


def expected_ports(start, end):
    clients = {0: "UPLINK", 1: "UPLINK", 6: "VNIC.PT"}
    return [
        {"swID": 1, "portID": n, "clientType": clients.get(n, "VNIC"), **expected_rates(n, start, end)}
        for n in range(PORTS)
    ]


def test_json(rows):
    assert rows("port_rates.py", "--switch", "1", "--interval", "2", "--count", "3") == [
        {"sample": 1 + i, "ports": expected_ports(HOUR + 2 * i, HOUR + 2 * i + 2)} for i in range(3)
    ]


def test_json_has_the_answers_of_the_methods(frozen, rows):
    before = [_libqdp.GetPortStats(0, port) for port in range(36)]
    frozen.advance(1)
    after = [_libqdp.GetPortStats(0, port) for port in range(36)]
    (sample,) = rows("port_rates.py", "--switch", "0")
    for port, old, new in zip(sample["ports"], before, after):
        grown = {key: new[key] - old[key] for key in new}
        assert port["txPktsPerSecond"] == grown["txPkts"] + grown["spTxPkts"]
        assert port["rxBitsPerSecond"] == 8 * (grown["rxBytes"] + grown["spRxBytes"])
        assert port["dropsPerSecond"] == sum(grown[key] for key in ("txDrops", "rxDrops", "spTxDrops", "spRxDrops"))
    assert len(sample["ports"]) == 36
    dropping = {port["portID"]: port["dropsPerSecond"] for port in sample["ports"] if port["dropsPerSecond"]}
    assert list(dropping) == [9, 20]
    assert all(
        rate in (per_second, per_second + 1, per_second + 2) for rate, per_second in zip(dropping.values(), (120, 150))
    )


def test_text(printed):
    first, second = printed("port_rates.py", "--switch", "1", "--count", "2").split("\n\n")
    for sample, lines in enumerate([first.splitlines(), second.splitlines()]):
        assert lines[0] == f"Rates over 1 s, sample {sample + 1}"
        assert lines[1] == "  switch  port  client   TX pkts/s  TX Mbit/s  RX pkts/s  RX Mbit/s  drops/s"
        expected = sorted(
            expected_ports(HOUR + sample, HOUR + sample + 1),
            key=lambda port: port["txBitsPerSecond"] + port["rxBitsPerSecond"],
            reverse=True,
        )
        assert [line.split() for line in lines[2:]] == [
            ["1", str(port["portID"]), port["clientType"]]
            + [f"{port['txPktsPerSecond']:,.1f}", f"{port['txBitsPerSecond'] / 1e6:.1f}"]
            + [f"{port['rxPktsPerSecond']:,.1f}", f"{port['rxBitsPerSecond'] / 1e6:.1f}"]
            + [f"{port['dropsPerSecond']:.1f}"]
            for port in expected
        ]
        assert {len(line) for line in lines[1:]} == {len(lines[1])}
        assert len(lines[1]) <= 80  # of a terminal that nobody made wider
    # Counted by hand: 1,259 + (3,601 * 1,259 // 100 - 3,600 * 1,259 // 100) = 1,259 + 12, of 183 bytes.
    assert first.splitlines()[2].split()[:5] == ["1", "7", "VNIC", "1,271.0", "1.9"]


def counters(tx_bytes):
    """A record in which one counter has counted something."""
    return struct.pack("<16Q", tx_bytes, *[0] * 15)


def answers(*values):
    """Code that makes the port counters of the first reads these, and the slow path's zero."""
    return "".join(
        f"host.script('Qdp_Get_Port_Stats{path}', outputs=[{counters(value if not path else 0)!r}])\n"
        for value in values
        for path in ("", "_Slowpath")
    )


def test_a_counter_that_wraps_and_one_that_is_set_back(rows):
    """The first port's wraps at 2^64, the second one's is set to zero, the third one's sign turns."""
    first = [2**64 - 100, 5000, 2**63 - 10, *[0] * (PORTS - 3)]
    second = [150, 0, 2**63 + 30, *[0] * (PORTS - 3)]
    (sample,) = rows("port_rates.py", "--switch", "1", prepare=answers(*first, *second))
    found = {port["portID"]: port["txBitsPerSecond"] for port in sample["ports"]}
    assert found == {0: 8 * 250, 2: 8 * 40, **{port: 0 for port in range(3, PORTS)}}


def test_a_port_that_goes_away(run, refused):
    done = run("port_rates.py", "--switch", "1", "--json", prepare=f"host.fail('Qdp_Get_Port_Stats', nth={PORTS} + 4)")
    assert done.returncode == 2
    assert done.stderr == refused("port_rates.py", "GetPortStats(1, 3)", "Failed to retrieve port stats")
    assert [port["portID"] for port in json.loads(done.stdout)[0]["ports"]] == [0, 1, 2, 4, 5, 6, 7]


# Ctrl-C comes in the third wait.
CTRL_C = f"""
import signal
waits, pass_time = [], time.sleep
def sleep(seconds):
    waits.append(seconds)
    if len(waits) == 3:
        os.kill(os.getpid(), {int(signal.SIGINT)})
    pass_time(seconds)
time.sleep = sleep
"""


def test_ctrl_c_ends_the_samples(run):
    done = run("port_rates.py", "--switch", "1", "--json", "--count", "100", prepare=CTRL_C)
    assert (done.returncode, done.stderr) == (0, "")
    assert [sample["sample"] for sample in json.loads(done.stdout)] == [1, 2]


def test_json_is_printed_as_it_goes(run, tmp_path):
    """Each wait finds the samples before it in the output."""
    output = tmp_path / "samples.json"
    prepare = f"""
pass_time = time.sleep
def sleep(seconds):
    print(open({str(output)!r}).read().count('"sample"'), file=sys.stderr)
    pass_time(seconds)
time.sleep = sleep
"""
    with output.open("w") as stdout:
        done = run("port_rates.py", "--switch", "1", "--json", "--count", "4", prepare=prepare, stdout=stdout)
    assert (done.returncode, done.stderr) == (0, "0\n1\n2\n3\n")
    assert [sample["sample"] for sample in json.loads(output.read_text())] == [1, 2, 3, 4]


def test_a_terminal_that_is_narrow_shows_no_more_lines_than_it_has(on_a_terminal):
    shown = on_a_terminal("port_rates.py", "--count", "1", columns=40, lines=12)
    assert len(shown) == 11 and max(map(len, shown)) - len("\x1b[H\x1b[J") <= 40
    assert shown[-1] == f"  ... and {36 + 8 + 35 - 8} more"


def test_intervals_do_not_drift(run):
    """What the reading itself takes, here half a second, is not waited for again."""
    prepare = """
import _libqdp
waits, pass_time, list_switches = [], time.sleep, _libqdp.ListSwitches
def slow():
    pass_time(0.5)
    return list_switches()
def sleep(seconds):
    waits.append(round(seconds, 6))
    pass_time(seconds)
_libqdp.ListSwitches, time.sleep = slow, sleep
import atexit
atexit.register(lambda: print(waits, file=sys.stderr))
"""
    done = run("port_rates.py", "--switch", "1", "--json", "--interval", "3", "--count", "3", prepare=prepare)
    assert (done.returncode, done.stderr) == (0, "[2.5, 2.5, 2.5]\n")


def test_a_terminal_is_drawn_anew_until_ctrl_c(run):
    terminal, end = pty.openpty()
    done = run("port_rates.py", prepare=CTRL_C, stdout=end)
    os.close(end)
    shown = b""
    while b"sample 2" not in shown or not shown.endswith(b"more\r\n"):
        shown += os.read(terminal, 4096)
    os.close(terminal)
    assert (done.returncode, done.stderr) == (0, "")
    nothing, *samples = re.split(r"\x1b\[H\x1b\[J", shown.decode())
    assert nothing == "" and len(samples) == 2
    for number, sample in enumerate(samples, 1):
        lines = sample.splitlines()
        assert lines[0] == f"Rates over 1 s, sample {number}"
        assert len(lines) == 23  # of 24 of the terminal: the last is the cursor's
        assert lines[-1] == f"  ... and {36 + 8 + 35 - 20} more"
