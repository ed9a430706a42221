"""The example that prints the SmartNIC's port model and counters, as an operator would run it."""

import ast
import fcntl
import json
import os
import pty
import re
import signal
import struct
import subprocess
import sys
import termios
import time
from collections import Counter

import pytest

TITLES = {
    "pfs": "Host PFs",
    "lifs": "LIFs",
    "vlan-ports": "Mux VLAN ports",
    "ports": "Output ports",
    "mux": "Mux mode of the switches",
    "lif-counters": "LIFs with traffic",
    "port-counters": "Ports with traffic",
    "pipeline": "Totals of the pipeline",
    "drops": "Drops and errors, the highest counts first",
    "latency": "Latency of table programming",
}
TABLES = [name for name in TITLES if name != "latency"]

# The embedded host's model.
NUM_LIFS = 4 + 2 + 180
NUM_VLAN_PORTS = 180
NUM_LIFS_UP = NUM_LIFS - 11  # every sixteenth is down: 31, 47 and so on until 191; only what is up has traffic
NUM_PORTS_UP = NUM_LIFS_UP + NUM_VLAN_PORTS
HOUR = 3600  # seconds that the embedded host has been up for when it starts

BOUNDS = [*range(100, 501, 100), *range(700, 1501, 200), *range(2000, 4001, 500), *range(5000, 9001, 1000)]

# Runs the example in a process whose embedded host has been prepared: the host's folder, what to do with the host,
# the example and its options are the arguments.
PREPARED = """
import os, runpy, sys
from qdp_host import EmbeddedHost
_, folder, preparation, *sys.argv = sys.argv
host = EmbeddedHost(folder)
host.freeze()
exec(preparation)
sys.path.insert(0, os.path.dirname(sys.argv[0]))
runpy.run_path(sys.argv[0], run_name="__main__")
"""
AN_HOUR_OF_TRAFFIC = ""  # the host as it starts, with its clock frozen

# Latencies of ten seconds.
LATENCIES = """
import _libqdp
_libqdp.P4UKLatencySet(1)
host.advance(10)
_libqdp.P4UKLatencySet(0)
"""


@pytest.fixture
def command(root, build):
    """The command line of the example, and its environment."""
    example = str(root / "examples" / "smartnic.py")
    environment = {
        **os.environ,
        "LD_LIBRARY_PATH": str(build / "host"),
        "PYTHONPATH": f"{build}{os.pathsep}{root / 'host' / 'python'}",
        "COLUMNS": "100",
    }

    def command(*options, prepare=None):
        start = [example] if prepare is None else ["-c", PREPARED, str(build / "host"), prepare, example]
        return [sys.executable, *start, *options], environment

    return command


@pytest.fixture
def run(command):
    def run(*options, prepare=None):
        line, environment = command(*options, prepare=prepare)
        pipe = subprocess.PIPE
        return subprocess.run(line, env=environment, stdout=pipe, stderr=pipe, text=True, timeout=120)

    return run


def printed(done):
    assert (done.returncode, done.stderr) == (0, "")
    return done.stdout


def sections(text):
    """{title: lines} of what was printed."""
    blocks = [block.splitlines() for block in text.strip("\n").split("\n\n")]
    return {title: lines for title, *lines in blocks}


def cells(line):
    return re.split(" {2,}", line.strip())


def rows_of(lines):
    """The rows of a section's table as dicts, without the line about further rows."""
    headings, *rows = [line for line in lines if not line.startswith("  ...")]
    return [dict(zip(cells(headings), cells(row))) for row in rows]


def number(text):
    return int(text.replace(",", ""))


# --- Text ---


def test_all_sections_in_order(run):
    assert list(sections(printed(run()))) == list(TITLES.values())


@pytest.mark.parametrize("name", TITLES)
def test_one_section(run, name):
    assert list(sections(printed(run("--section", name)))) == [TITLES[name]]


def test_sections_come_in_their_own_order_and_once(run):
    chosen = sections(printed(run("--section", "mux", "--section", "pfs", "--section", "mux")))
    assert list(chosen) == [TITLES["pfs"], TITLES["mux"]]


def test_small_tables(run):
    chosen = sections(printed(run("--section", "pfs", "--section", "mux")))
    assert chosen[TITLES["pfs"]] == ["  slot  pf", "     0   1", "     1   2", "     2   3", "     3   4"]
    assert rows_of(chosen[TITLES["mux"]]) == [
        {"swID": "0", "name": "DvsPortset-0", "enabled": "0"},
        {"swID": "1", "name": "dvs-storage", "enabled": "0"},
        {"swID": "2", "name": "50 2e 8a 10 6b 61 3f 4c-a1 9d 22 7e 05 b8 c4 03", "enabled": "1"},
    ]


@pytest.mark.parametrize(
    "name, headings, numbers",
    [
        (
            "lifs",
            "lifID srcPort repPort flowKeyType lifType isMuxPF fwdMode status",
            [1, 2, 3, 4, 8, 9, *range(16, 196)],
        ),
        ("vlan-ports", "muxVLAN pfLif0 pfLif1 srcPort repPort flowKeyType status", range(100, 280)),
        (
            "ports",
            "dstPort lifID defaultVLAN muxVLAN lifType status tag",
            [1, 2, 3, 4, 8, 9, *range(16, 196), *range(256, 436)],
        ),
    ],
)
def test_lists_of_several_pages(run, name, headings, numbers):
    (lines,) = sections(printed(run("--section", name, "--all"))).values()
    first, *rows = map(cells, lines)
    assert first == headings.split()
    assert [int(row[0]) for row in rows] == list(numbers)


def test_rows_of_lists(run):
    chosen = sections(printed(run("--section", "lifs", "--section", "vlan-ports", "--section", "ports")))
    assert cells(chosen["LIFs"][8]) == "17 17 529 2 3 0 1 1".split()
    assert cells(chosen["Mux VLAN ports"][2]) == "101 3 4 257 769 1 1".split()
    assert cells(chosen["Output ports"][7]) == "16 16 10 0 3 1 2064".split()


@pytest.mark.parametrize(
    "name, rows",
    [
        ("lifs", NUM_LIFS),
        ("vlan-ports", NUM_VLAN_PORTS),
        ("ports", NUM_LIFS + NUM_VLAN_PORTS),
        ("lif-counters", NUM_LIFS_UP),
        ("port-counters", NUM_PORTS_UP),
    ],
)
def test_the_first_rows_and_how_many_more_there_are(run, name, rows):
    (some,) = sections(printed(run("--section", name, prepare=AN_HOUR_OF_TRAFFIC))).values()
    (every,) = sections(printed(run("--section", name, "--all", prepare=AN_HOUR_OF_TRAFFIC))).values()
    assert len(every) == 1 + rows
    assert [cells(line) for line in some[:21]] == [cells(line) for line in every[:21]]
    assert some[21:] == [f"  ... and {rows - 20} more, which --all shows"]


def test_columns_are_aligned(run):
    shown = sections(printed(run("--all", prepare=AN_HOUR_OF_TRAFFIC)))
    for name in TABLES:
        lines = shown[TITLES[name]]
        headings, *rows = [[(*cell.span(), cell[0]) for cell in re.finditer(r"\S+(?: \S+)*", line)] for line in lines]
        assert rows
        for heading, *column in zip(headings, *rows):
            is_numeric = all(re.fullmatch(r"-?[\d,]+", text) for _, _, text in column)
            side = 1 if is_numeric else 0  # numbers end together, texts start together
            assert {cell[side] for cell in column} == {heading[side]}, (name, heading)
        assert all(len(row) == len(headings) for row in rows)


# Counters of zero: for each LIF and each port as often as a section and the drops read them, and for the pipeline.
WITHOUT_TRAFFIC = f"""
for operation, size, reads in [
    ("Qdp_Lif_Stats_Get", 384, 2 * {NUM_LIFS}),
    ("Qdp_Port_Stats_Get", 256, 2 * {NUM_LIFS + NUM_VLAN_PORTS}),
    ("Qdp_P4I_Stats_Get", 64, 1),
    ("Qdp_P4E_Stats_Get", 64, 1),
]:
    for _ in range(reads):
        host.script(operation, outputs=[bytes(size)])
"""


def test_without_traffic(run):
    chosen = ["lif-counters", "port-counters", "drops"]
    options = [word for name in chosen for word in ("--section", name)]
    shown = sections(printed(run(*options, prepare=WITHOUT_TRAFFIC)))
    assert shown == {TITLES[name]: ["  none"] for name in chosen}


# Port 16 receives 400 + 13 * 16 = 608 packets a second and sends 300 + 17 * 16 = 572, and so does LIF 16, whose port
# it is. A packet has 64 + 29 * 16 = 528 bytes. A 50th as many are multicast, a 200th broadcast; a 10,000th is dropped.
@pytest.mark.parametrize("name, key", [("lif-counters", "lifID"), ("port-counters", "dstPort")])
def test_traffic(run, name, key):
    prepare = f"host.advance(1000 * 1000 - {HOUR})"  # which makes it a million seconds
    (lines,) = sections(printed(run("--section", name, prepare=prepare))).values()
    rows = rows_of(lines)
    assert [row[key] for row in rows[:8]] == ["1", "2", "3", "4", "8", "9", "16", "17"]
    row = {key: number(text) for key, text in rows[6].items()}

    def summed(unicast):
        return unicast + unicast // 50 + unicast // 200

    expected = {key: 16}
    for way, rate in [("rx", 608), ("tx", 572)]:
        expected[way + "Pkts"] = summed(rate * 1000 * 1000)
        expected[way + "Bytes"] = summed(rate * 1000 * 1000) * 528
        expected[way + "DropPkts"] = summed(rate * 100)
    assert list(row.items()) == list(expected.items())


# Of 100,000 packets a second from the host, through 10,000 seconds.
def test_totals_of_the_pipeline(run):
    (lines,) = sections(printed(run("--section", "pipeline", prepare=f"host.advance(10_000 - {HOUR})"))).values()
    assert [cells(line) for line in lines[1:]] == [
        ["ingress", "rxFromHost", "1,000,000,000"],
        ["ingress", "rxFromSwitch", "1,500,000,000"],
        ["ingress", "rxFromCpu", "20,000,000"],
        ["ingress", "rxUserCsumErr", "10,000"],
        ["ingress", "rxSubstrateCsumErr", "0"],
        ["ingress", "rxMalformed", "20,000"],
        ["egress", "txToHost", "1,500,000,000"],
        ["egress", "txToSwitch", "1,000,000,000"],
        ["egress", "txToCpu", "20,000,000"],
        ["egress", "flowMiss", "10,000,000"],
        ["egress", "connTrackRedir", "5,000,000"],
        ["egress", "wrongReinject", "0"],
        ["egress", "drop", "20,000"],
    ]


def test_drops_are_those_of_all_places_the_highest_first(run):
    (lines,) = sections(printed(run("--section", "drops", "--all", prepare=AN_HOUR_OF_TRAFFIC))).values()
    rows = [cells(line) for line in lines[1:]]
    counts = [number(count) for _, _, count in rows]
    assert counts == sorted(counts, reverse=True) and counts[-1] > 0
    found = {(where, counter): number(count) for where, counter, count in rows}
    assert len(found) == len(rows)
    assert found["ingress", "rxMalformed"] == found["egress", "drop"] == 2 * HOUR
    assert found["port 16", "rxUcastDropPkts"] == 608 * HOUR // 10_000
    assert found["LIF 16", "rxUcastDropPkts"] == found["LIF 16", "rxQueueEmpty"] == 608 * HOUR // 10_000
    assert found["LIF 16", "txDescFetchError"] == 572 * HOUR // 100_000
    places = [where.split()[0] for where in {where for where, _ in found}]
    assert Counter(places) == {"ingress": 1, "egress": 1, "LIF": NUM_LIFS_UP, "port": NUM_PORTS_UP}
    assert not {counter for _, counter in found} & {"rxFromHost", "flowMiss", "rxUcastPkts", "rxUcastDropBytes"}


# --- The histogram ---


def histogram(lines):
    """(label, count, length of the bar) of each line but the last."""
    found = [re.fullmatch(r"  (.{14})  +([\d,]+)(?:  (#+))?", line) for line in lines[:-1]]
    return [(label.strip(), number(count), len(bar or "")) for label, count, bar in (each.groups() for each in found)]


@pytest.mark.parametrize("columns", [40, 100, 173])
def test_bars_are_as_long_as_the_counts_are_high(run, monkeypatch, columns):
    prepare = f"os.environ['COLUMNS'] = '{columns}'\n{LATENCIES}"
    (lines,) = sections(printed(run("--section", "latency", prepare=prepare))).values()
    bars = histogram(lines)
    labels = [f"{lower} - {upper} us" for lower, upper in zip([0] + BOUNDS, BOUNDS)] + ["> 9000 us"]
    assert [re.sub(" +", " ", label) for label, _, _ in bars] == labels
    counts = [400, 900, 600, 300, 200, 120, 90, 70, 50, 40, 30, 20, 20, 10, 10, 10, 0, 0, 0, 0, 1]
    assert [count for _, count, _ in bars] == counts
    longest = max(length for _, _, length in bars)
    assert max(map(len, lines[:-1])) == columns
    assert all(0 <= length - count * longest / 900 < 1 for _, count, length in bars)
    assert [length for _, count, length in bars if count == 0] == [0] * 4
    assert lines[-1] == "  totalSample 2,871, totalTime 1,293,200, minLatency 62, maxLatency 11,200"


def test_bars_start_where_each_other_start(run):
    (lines,) = sections(printed(run("--section", "latency", prepare=LATENCIES))).values()
    assert {line.index("#") for line in lines if "#" in line} == {2 + 14 + 2 + len("900") + 2}


def test_a_narrow_terminal_leaves_room_for_bars(run):
    prepare = f"os.environ['COLUMNS'] = '5'\n{LATENCIES}"
    (lines,) = sections(printed(run("--section", "latency", prepare=prepare))).values()
    assert max(length for _, _, length in histogram(lines)) == 10


def test_the_width_is_the_terminals(command):
    line, environment = command("--section", "latency", prepare=LATENCIES)
    del environment["COLUMNS"]
    terminal, end = pty.openpty()
    fcntl.ioctl(end, termios.TIOCSWINSZ, struct.pack("HHHH", 50, 62, 0, 0))
    done = subprocess.run(line, env=environment, stdout=end, timeout=120)
    os.close(end)
    shown = b""
    while b"maxLatency" not in shown:
        shown += os.read(terminal, 4096)
    os.close(terminal)
    assert done.returncode == 0
    assert max(len(line) for line in shown.decode().splitlines() if "#" in line) == 62


def test_no_samples(run):
    (lines,) = sections(printed(run("--section", "latency"))).values()
    assert lines == ["  no samples; --collect SECONDS collects some"]


# After the example has ended: has the histogram stopped growing?
REPORT_LATER = """
import atexit, _libqdp
def report():
    before = _libqdp.P4UKLatencyDump(0)
    host.advance(5)
    print("still collecting" if _libqdp.P4UKLatencyDump(0) != before else "collecting no more", file=sys.stderr)
atexit.register(report)
"""
# Sleeping moves the host's clock on, so that seconds are exact, and none is waited for.
SLEEPING = """
import time
def sleep(seconds):
    host.advance(seconds)
    print("slept", seconds, file=sys.stderr)
time.sleep = sleep
"""


def test_collecting(run):
    done = run("--section", "latency", "--collect", "30", prepare=REPORT_LATER + SLEEPING)
    assert (done.returncode, done.stderr) == (0, "slept 30.0\ncollecting no more\n")
    (lines,) = sections(done.stdout).values()
    assert [count for _, count, _ in histogram(lines)][:5] == [1200, 2700, 1800, 900, 600]


def test_collecting_in_real_time(run):
    start = time.monotonic()
    (lines,) = sections(printed(run("--section", "latency", "--collect", "1"))).values()
    assert time.monotonic() - start >= 1
    assert histogram(lines)[0][1] >= 40


@pytest.mark.parametrize("sent", [signal.SIGINT, signal.SIGTERM])
def test_collecting_that_is_interrupted(run, sent):
    interrupted = f"""
import time
def sleep(seconds):
    host.advance(3)
    os.kill(os.getpid(), {int(sent)})
time.sleep = sleep
"""
    done = run("--section", "latency", "--collect", "600", prepare=REPORT_LATER + interrupted)
    assert (done.returncode, done.stderr) == (0, "collecting no more\n")
    (lines,) = sections(done.stdout).values()
    assert histogram(lines)[0][1] == 3 * 40


def test_the_report_is_of_the_end_of_collecting(run):
    done = run("--section", "pipeline", "--section", "latency", "--collect", "30", prepare=SLEEPING)
    assert cells(sections(done.stdout)[TITLES["pipeline"]][1]) == ["ingress", "rxFromHost", f"{100_000 * (HOUR + 30):,}"]


def test_without_collecting_nothing_is_switched(run):
    prepare = "import _libqdp\n_libqdp.P4UKLatencySet(1)\n" + REPORT_LATER
    done = run("--section", "latency", prepare=prepare)
    assert (done.returncode, done.stderr) == (0, "still collecting\n")


def test_the_selector(run):
    prepare = "import struct\nhost.script('Qdp_P4UKLatencyDump', outputs=[struct.pack('<II23Q', 1, 2, *range(23))])"
    with_recording = f"""
{prepare}
import atexit
recording = host.recording()
calls = recording.__enter__()
def report():
    recording.__exit__(None, None, None)
    print([call.arguments[0] for call in calls], file=sys.stderr)
atexit.register(report)
"""
    done = run("--section", "latency", "--selector", "4294967295", prepare=with_recording)
    assert (done.returncode, done.stderr) == (0, "[4294967295]\n")
    (lines,) = sections(done.stdout).values()
    assert [count for _, count, _ in histogram(lines)] == list(range(21))
    assert lines[-1] == "  totalSample 21, totalTime 22, minLatency 1, maxLatency 2"


# --- JSON ---


@pytest.fixture
def both(run):
    """The same in text and in JSON."""
    prepare = AN_HOUR_OF_TRAFFIC + LATENCIES
    return sections(printed(run("--all", prepare=prepare))), json.loads(printed(run("--json", prepare=prepare)))


def test_json_holds_what_the_text_shows(both):
    text, array = both
    assert [list(each) for each in array] == [["section", "title", "complete", "rows"]] * len(TITLES)
    assert {each["section"]: each["title"] for each in array} == TITLES
    assert [each["title"] for each in array] == list(text)
    assert all(each["complete"] is True for each in array)
    for each in array[:-1]:
        headings, *rows = map(cells, text[each["title"]])
        assert [list(row) for row in each["rows"]] == [headings] * len(rows)
        assert [[str(value) for value in row.values()] for row in each["rows"]] == [
            [cell.replace(",", "") for cell in row] for row in rows
        ]
    (dump,) = array[-1]["rows"]
    counts = [count for _, count, _ in histogram(text[TITLES["latency"]])]
    assert counts == [dump[f"{bound}us"] for bound in BOUNDS] + [dump["outOfBucket"]]
    assert (dump["totalSample"], dump["minLatency"], dump["maxLatency"]) == (2871, 62, 11200)


def test_json_has_all_rows_without_being_asked(run):
    (lifs,) = json.loads(printed(run("--json", "--section", "lifs")))
    assert len(lifs["rows"]) == NUM_LIFS
    keys = "lifID srcPort repPort flowKeyType lifType isMuxPF fwdMode status".split()
    assert lifs["rows"][7] == dict(zip(keys, [17, 17, 529, 2, 3, 0, 1, 1]))


# --- Lists end on any library ---


def page(numbers, next_index):
    """Code for an answer with LIFs of these numbers."""
    return f"""
import struct
host.script("Qdp_P4_Cmd", outputs=[struct.pack("<HH", {len(numbers)}, {next_index}) + b"".join(
    struct.pack("<HHHHBBH", lif, lif, lif, 0, 1, 0, 1) for lif in {list(numbers)})])
"""


@pytest.mark.parametrize(
    "pages, shown",
    [
        ([([5, 6], 7), ([7], 8), ([], 8)], [5, 6, 7]),  # complete when empty
        ([([5, 6], 7), ([7], 0)], [5, 6, 7]),  # complete when 0
        ([([5, 6], 7), ([7], 7)], [5, 6, 7]),  # complete when the same again
        ([([5, 6], 7), ([7], 5)], [5, 6, 7]),  # backwards
        ([([5, 6], 7), ([5, 6], 9)], [5, 6]),  # nothing new
        ([([5, 6], 7), ([6, 7], 65535)], [5, 6, 7]),  # an overlap; complete when out of range
        ([([5, 6], 1023), ([7], 1024)], [5, 6, 7]),  # the last index at which a page may start
        ([([], 9)], []),
    ],
)
def test_how_a_list_ends(run, pages, shown):
    # An answer more than are scripted would be of the embedded host's own LIFs, which begin with 1.
    prepare = "".join(page(*each) for each in pages)
    (lifs,) = json.loads(printed(run("--section", "lifs", "--json", prepare=prepare)))
    assert [row["lifID"] for row in lifs["rows"]] == shown


# --- Exit codes ---


@pytest.mark.parametrize(
    "options, message",
    [
        (["--section", "colours"], "error: argument --section: invalid choice: 'colours'"),
        (["--verbose"], "error: unrecognized arguments: --verbose"),
        (["--section"], "error: argument --section: expected one argument"),
        (["--collect", "0"], "error: argument --collect: invalid duration value: '0'"),
        (["--collect", "-1"], "error: argument --collect: invalid duration value: '-1'"),
        (["--collect", "nan"], "error: argument --collect: invalid duration value: 'nan'"),
        (["--collect", "86401"], "error: argument --collect: invalid duration value: '86401'"),
        (["--collect", "5", "--section", "lifs"], "error: --collect is for the section latency"),
        (["--selector", "-1"], "error: --selector is a number of 32 bits"),
        (["--selector", "4294967296"], "error: --selector is a number of 32 bits"),
    ],
)
def test_a_wrong_command_line(run, options, message):
    done = run(*options)
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr.startswith("usage: smartnic.py") and f"smartnic.py: {message}" in done.stderr


def test_help(run):
    shown = printed(run("--help"))
    assert all(name in re.sub(r"-\n +", "-", shown) for name in TITLES)
    assert all(option in shown for option in ("--section", "--all", "--json", "--collect", "--selector"))


@pytest.mark.parametrize(
    "name, operation, said",
    [
        ("pfs", "Qdp_P4_Cmd", "Failed to get host pfs\nsmartnic: the datapath refuses HostPFGet()\n"),
        ("lifs", "Qdp_P4_Cmd", "Failed to get lif port list\nsmartnic: the datapath refuses LifPortList(0)\n"),
        ("vlan-ports", "Qdp_P4_Cmd", "Failed to get lif port list\nsmartnic: the datapath refuses VlanPortList(0)\n"),
        ("ports", "Qdp_P4_Cmd", "Failed to get lif port list\nsmartnic: the datapath refuses PortList(0)\n"),
        ("latency", "Qdp_P4UKLatencyDump", "smartnic: the datapath refuses P4UKLatencyDump(0)\n"),
    ],
)
def test_a_section_that_is_refused(run, name, operation, said):
    prepare = f"host.fail('{operation}')"
    done = run("--section", name, prepare=prepare)
    assert (done.returncode, done.stdout, done.stderr) == (2, TITLES[name] + " (incomplete)\n", said)
    done = run("--section", name, "--json", prepare=prepare)
    assert (done.returncode, done.stderr) == (2, said)
    assert json.loads(done.stdout) == [{"section": name, "title": TITLES[name], "complete": False, "rows": []}]


def test_a_second_page_that_is_refused(run):
    done = run("--section", "lifs", "--all", prepare="host.fail('Qdp_P4_Cmd', nth=2)")
    assert done.returncode == 2
    assert done.stderr == "Failed to get lif port list\nsmartnic: the datapath refuses LifPortList(95)\n"
    [(title, lines)] = sections(done.stdout).items()
    assert title == "LIFs (incomplete)" and len(lines) == 1 + 85


def test_a_lif_whose_counters_are_refused(run):
    prepare = AN_HOUR_OF_TRAFFIC + "\nhost.fail('Qdp_Lif_Stats_Get', nth=2)"
    done = run("--section", "lif-counters", "--section", "pipeline", "--all", prepare=prepare)
    assert done.returncode == 2
    assert done.stderr == "Failed to get lif stats\nsmartnic: the datapath refuses LifStatsGet(2)\n"
    lif_counters, pipeline = sections(done.stdout).items()
    assert lif_counters[0] == "LIFs with traffic (incomplete)"
    assert [row["lifID"] for row in rows_of(lif_counters[1])][:3] == ["1", "3", "4"]
    assert pipeline[0] == TITLES["pipeline"] and len(pipeline[1]) == 1 + 13


def test_a_switch_whose_mux_mode_is_refused(run):
    done = run("--section", "mux", prepare="host.fail('Qdp_Get_Mux_Mode', nth=2)")
    assert done.returncode == 2
    assert done.stderr == "TypeError: Failed to get mux mode.\n\nsmartnic: the datapath refuses GetSwitchMuxMode(1)\n"
    [(title, lines)] = sections(done.stdout).items()
    assert [row["swID"] for row in rows_of(lines)] == ["0", "2"]


def test_collecting_that_is_refused(run):
    done = run("--section", "latency", "--collect", "60", prepare="host.fail('Qdp_P4UKLatencySet')\n" + SLEEPING)
    assert (done.returncode, done.stderr) == (2, "smartnic: the datapath refuses P4UKLatencySet(1)\n")
    assert done.stdout == "Latency of table programming\n  no samples; --collect SECONDS collects some\n"


def test_a_reader_that_has_seen_enough(command):
    line, environment = command("--all")
    process = subprocess.Popen(line, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    process.stdout.close()
    said = process.stderr.read()
    process.stderr.close()
    assert (process.wait(timeout=120), said) == (-signal.SIGPIPE, b"")


# --- What the examples are written in ---


@pytest.mark.parametrize("name", ["display", "flow_table", "follow_flow", "inventory", "smartnic"])
def test_the_examples_are_for_python_3_6(root, name):
    ast.parse((root / "examples" / f"{name}.py").read_text(), feature_version=(3, 6))
