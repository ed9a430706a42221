"""The example that prints the balancer's load as bars."""

import fcntl
import os
import pty
import re
import struct
import subprocess
import termios
from collections import Counter

import _libqdp
import pytest


def loads_of_switch_1():
    """The count loads of its four lcores: of every port, its packets a second by its queues, which are on lcores in
    turn. Of its two uplinks only what they receive counts."""
    loads = Counter()
    for port in range(8):
        tx_queues, rx_queues = (0, 8) if port < 2 else (1 + (port - 2) % 4, 1 + (port - 2) % 8)
        for queue in range(tx_queues):
            loads[(port + queue) % 4] += (1000 + 37 * port) // tx_queues
        for queue in range(rx_queues):
            loads[(port + 2 * queue) % 4] += (1500 + 53 * port) // rx_queues
    return [loads[lcore] for lcore in range(4)]


def bars(lines):
    """(lcore, queues, load, length of the bar) of each line."""
    found = [re.fullmatch(r"  lcore +(\d+), +(\d+) queues +([\d,]+)(?:  (#+))?", line) for line in lines]
    return [
        (int(lcore), int(queues), int(load.replace(",", "")), len(bar or ""))
        for lcore, queues, load, bar in (each.groups() for each in found)
    ]


def test_text(printed):
    title, *lines, summary = printed("balancer_load.py", "--switch", "1").splitlines()
    assert title == "Load of switch 1, dvs-storage, by count load"
    # Queues: 16 of the uplinks, 1 + 2 + 3 + 4 + 1 + 2 to send and 1 + 2 + 3 + 4 + 5 + 6 to receive.
    assert sum(queues for _, queues, _, _ in bars(lines)) == 16 + 13 + 21
    loads = loads_of_switch_1()
    assert [(lcore, load) for lcore, _, load, _ in bars(lines)] == list(enumerate(loads))
    assert summary == f"  The busiest carries {max(loads) / (sum(loads) / 4):.2f} times the mean."


@pytest.mark.parametrize("columns", [45, 100, 173])
def test_bars_are_as_long_as_the_loads_are_high(printed, columns):
    prepare = f"os.environ['COLUMNS'] = '{columns}'"
    _, *lines, _ = printed("balancer_load.py", "--switch", "1", prepare=prepare).splitlines()
    longest, most = max(length for *_, length in bars(lines)), max(load for _, _, load, _ in bars(lines))
    assert max(map(len, lines)) == columns
    assert all(0 <= length - load * longest / most < 1 for _, _, load, length in bars(lines))
    assert len({line.index("#") for line in lines}) == 1


def test_a_narrow_terminal_leaves_room_for_bars(printed):
    _, *lines, _ = printed("balancer_load.py", "--switch", "1", prepare="os.environ['COLUMNS'] = '5'").splitlines()
    assert max(length for *_, length in bars(lines)) == 10


def test_the_width_is_the_terminals(command):
    line, environment = command("balancer_load.py", "--switch", "1", prepare="")
    del environment["COLUMNS"], environment["LINES"]
    terminal, end = pty.openpty()
    fcntl.ioctl(end, termios.TIOCSWINSZ, struct.pack("HHHH", 50, 62, 0, 0))
    done = subprocess.run(line, env=environment, stdout=end, timeout=120)
    os.close(end)
    shown = b""
    while b"mean." not in shown:
        shown += os.read(terminal, 4096)
    os.close(terminal)
    assert done.returncode == 0
    assert max(len(line) for line in shown.decode().splitlines() if "#" in line) == 62


@pytest.mark.parametrize("measure, key", [("cpu", "raw CPU"), ("packets", "pkts"), ("bytes", "bytes")])
def test_other_measures(frozen, printed, measure, key):
    _, _, contexts = _libqdp.DumpLBStats(0, 0, 16384, 0, 64)
    title, *lines, _ = printed("balancer_load.py", "--switch", "0", "--by", measure).splitlines()
    assert title == f"Load of switch 0, portset-0, by {key}"
    assert [load for _, _, load, _ in bars(lines)] == [context[key] for context in contexts]


def test_lcores_without_load(printed):
    """An idle switch has no bars, and no busiest lcore."""
    entry = struct.pack("<IIiIIQQI", 2, 0, -1, 0, 0, 0, 0, 0)
    chunk = struct.pack("<III12x", 0xFFFFFFFF, 0xFFFFFFFF, 1) + entry
    prepare = f"host.script('Qdp_DumpLBStats', outputs=[{chunk!r}])"
    assert printed("balancer_load.py", "--switch", "1", prepare=prepare).splitlines() == [
        "Load of switch 1, dvs-storage, by count load",
        "  lcore  0,   0 queues  0",
    ]


def test_json(frozen, rows):
    expected = []
    for switch in _libqdp.ListSwitches():
        ports, uplinks, contexts = _libqdp.DumpLBStats(switch["swID"], 0, 16384, 0, 64)
        for context in contexts:
            items = [
                item
                for owner, groups in [(ports, ["vnicRxQ", "vnicTxQ"]), (uplinks, ["uplinkRx"])]
                for each in owner
                for group in groups
                for item in each[group]
                if item["ctx ID"] == context["ctx ID"]
            ]
            place = {"swID": switch["swID"], "name": switch["name"], "queues": len(items)}
            expected.append({**context, **place, "count load": sum(item["count load"] for item in items)})
    assert len(expected) == 8 + 4 + 4
    assert rows("balancer_load.py") == expected


def test_a_switch_that_is_refused_is_left_out(run, refused):
    done = run("balancer_load.py", prepare="host.fail('Qdp_DumpLBStats', nth=2)")
    assert done.returncode == 2
    # The first switch takes several answers, of which the second is refused.
    call = "DumpLBStats(0, 0, 16384, 0, 64)"
    assert done.stderr == refused("balancer_load.py", call, "Failed to dump LB stats. Please see hostcore.log")
    assert re.findall("Load of switch (.)", done.stdout) == ["1", "2"]
