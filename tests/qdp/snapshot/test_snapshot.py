"""Tests of writing and reading snapshots: what they hold, and what becomes of damaged ones and of hosts that hang."""

import hashlib
import json
import os
import random
import resource
import stat
import subprocess
import sys
import time

import pytest

import _libqdp
from qdp.errors import NotFound, Refused
from qdp.snapshot import lines, sweep, write
from qdp.snapshot.read import Snapshot, SnapshotError


def test_holds_all_sections_and_no_failure(written):
    snapshot = Snapshot(written)
    names = [name for name, _ in sweep.SECTIONS]
    assert snapshot.readings == 2
    assert snapshot.sections == [(reading, name, "read") for reading in (1, 2) for name in names]
    assert [key for key, answer in snapshot.calls() if "error" in answer] == []


def test_head_says_where_and_when(written):
    head = Snapshot(written).head
    assert abs(head["time"] - time.time()) < 3600
    assert head["machine"]["name"] == os.uname().nodename
    assert (head["version"], head["qdp-snapshot"]) == ("1.0.0", 1)


def test_answers_are_those_of_the_module(written, host):
    """What does not change with time is as on a fresh host; tuples are tuples."""
    snapshot = Snapshot(written)
    for method, arguments in [
        ("ListSwitches", ()),
        ("ListPorts", (1,)),
        ("GetPortConf", (0, 3)),
        ("ListLCoreIDs", (0,)),
        ("LifPortList", (0,)),
        ("ListSwitchMACTable", (1,)),
    ]:
        assert snapshot.call(method, arguments, 1) == getattr(_libqdp, method)(*arguments)
    assert type(snapshot.call("ListLCoreIDs", (0,))) is tuple
    counters = snapshot.call("GetUplinkStats", (0, 0))["uplinkStats"]
    assert all(type(pair) is tuple for pair in counters)


def test_aliases_and_settings(written, configured):
    snapshot = Snapshot(written)
    assert snapshot.aliases["portset-0"] == "dvs-production"
    assert snapshot.settings()["dvs-production/burst-size"] == _libqdp.GetSwitchBurstSize("dvs-production")
    assert snapshot.settings()["flow-timeout"] == _libqdp.GetFlowTimeout()


def test_second_reading_is_later(written):
    snapshot = Snapshot(written)
    first, second = (snapshot.call("GetPortStats", (0, 0), reading)["rxPkts"] for reading in (1, 2))
    assert second > first
    assert 0.9 <= snapshot.clocks[2] - snapshot.clocks[1] < 60
    assert snapshot.call("GetPortStats", (0, 0))["rxPkts"] == second  # the last one, unless another is asked for


def test_call_that_is_not_there(written):
    with pytest.raises(SnapshotError) as failure:
        Snapshot(written).call("GetPortStats", (7, 7))
    assert str(failure.value) == written + " does not hold GetPortStats(7, 7)"


def test_sweep_reads_and_never_writes(host):
    before_time = host.freeze()
    before = host.scenario()
    asker = sweep.Asker(lambda line: None)
    for _, section in sweep.SECTIONS + sweep.MORE_SECTIONS:
        section(asker)
    assert before_time is None and host.scenario() == before


def test_nothing_is_asked_for_twice(host):
    """Settings stand by the answers that are in the file, and the aliases are looked up once."""
    host.freeze()
    asked = []
    asker = sweep.Asker(lambda line: asked.append(line) if line.startswith(lines.CALL) else None)
    with host.recording() as calls:
        sweep.switches(asker)
        sweep.settings(asker)
    keys = [json.dumps(json.loads(line.decode())["call"]) for line in asked]
    assert len(keys) == len(set(keys)) > 200
    timeouts = [call for call in calls if call.operation in ("Qdp_Get_Flow_Timeout", "Qdp_GetAgingInterval")]
    assert sorted(call.operation for call in timeouts) == ["Qdp_GetAgingInterval", "Qdp_Get_Flow_Timeout"]


def test_setting_whose_getter_fails_is_left_out(host):
    host.fail("Qdp_Get_Flow_Timeout", times=0)
    found = []
    sweep.settings(sweep.Asker(found.append))
    written = [json.loads(line.decode()) for line in found]
    paths = {each["setting"] for each in written if "setting" in each}
    assert "flow-timeout" not in paths and "fpo-reval-enabled" in paths
    assert [each["error"]["class"] for each in written if each.get("call") == ["GetFlowTimeout", []]] == ["Refused"]


def test_failed_calls_are_kept_as_failures(host, tmp_path):
    host.fail("Qdp_Get_Port_Conf", times=0)
    found = []
    sweep.ports(sweep.Asker(found.append))
    path = file_of(tmp_path, [began("ports")] + found)
    with pytest.raises(Refused) as failure:
        Snapshot(path).call("GetPortConf", (0, 3))
    assert (failure.value.method, failure.value.arguments) == ("GetPortConf", (0, 3))
    assert failure.value.text == "Failed to retrieve port conf.\n"
    assert failure.value.hint


def began(section, reading=1):
    return lines.dumped({"reading": reading, "section": section, "time": 0.0, "clock": 0.0})


def file_of(folder, content, head=None):
    """The path of a file with these lines and a right checksum."""
    path = str(folder / "made.qdp")
    with write.replacing(path) as sink:
        sink.write(lines.dumped(head or write.head(write.Options(names=["ports"]))))
        for line in content:
            sink.write(line)
    return path


def test_none_and_not_found_come_back(tmp_path):
    content = [
        began("switches"),
        lines.call_line("GetRepPortStats", (), None, 3),
        lines.error_line("GetLBMetric", ("x",), NotFound("cannot find dvs alias.", "GetLBMetric", ("x",)), 4),
    ]
    snapshot = Snapshot(file_of(tmp_path, content))
    assert snapshot.call("GetRepPortStats", ()) is None
    with pytest.raises(NotFound):
        snapshot.call("GetLBMetric", ("x",))


# --- Writing: as a whole or not at all ---


def test_hanging_section_is_given_up_and_the_rest_is_read(on_embedded_host, monkeypatch, tmp_path):
    monkeypatch.setattr(
        write,
        "_PROGRAM",
        "import sys; del sys.path[0]; import qdp_host; host = qdp_host.EmbeddedHost();"
        "host.delay('Qdp_Get_Flow_Stats', 60, times=0);"
        "from qdp.snapshot.reading import main; main(*sys.argv[1:])",
    )
    path = str(tmp_path / "hung.qdp")
    said = []
    start = time.monotonic()
    write.write(path, write.Options(names=["switches", "lcores", "uplinks"], seconds=10.0), said.append)
    assert time.monotonic() - start < 50
    snapshot = Snapshot(path)
    assert snapshot.sections == [
        (1, "switches", "read"),
        (1, "lcores", "killed after 10 seconds without an answer"),
        (1, "uplinks", "read"),
    ]
    assert "lcores: killed after 10 seconds without an answer" in said
    assert snapshot.call("GetUplinkStats", (0, 0))


def test_snapshot_costs_little_beside_a_start_of_the_interpreter(release_only, reading_environment, root, tmp_path):
    """Processor time of both processes, with compiled files as an installation keeps them; script/bench has the
    figures."""
    environment = {**reading_environment, "PYTHONPYCACHEPREFIX": str(tmp_path), "PYTHONDONTWRITEBYTECODE": ""}
    environment["PYTHONPATH"] = environment["PYTHONPATH"].partition(os.pathsep)[0]  # without the recorder
    commands = [
        ["-c", "import argparse"],
        [str(root / "script" / "qdp_command.py"), "snapshot", str(tmp_path / "x.qdp")],
    ]
    times = [[], []]
    for _ in range(8):  # in turns; the least counts
        for line, found in zip(commands, times):
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            subprocess.run([sys.executable, *line], env=environment, cwd="/", check=True)
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            found.append(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
    start, snapshot = map(min, times)
    assert snapshot < 8 * start


WRITES_MUCH = """
import sys; del sys.path[0]
from qdp.snapshot import reading, sweep
def much(asker):
    for i in range(128):
        asker.write(setting="many", value="x" * (1 << 19))
sweep.BY_NAME["lcores"] = much
reading.main(*sys.argv[1:])
"""
MEASURES = """
import resource, sys
from qdp.snapshot import write
write._PROGRAM = sys.argv[2]
peak = lambda: resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
before = peak()
write.write(sys.argv[1], write.Options(names=["switches", "lcores"]))
print(peak() - before)
"""


def test_writer_holds_lines_and_not_the_file(on_embedded_host, tmp_path):
    """A file of 64 MB takes a few megabytes of memory."""
    path = str(tmp_path / "large.qdp")
    done = subprocess.run(
        [sys.executable, "-c", MEASURES, path, WRITES_MUCH], cwd="/", stdout=subprocess.PIPE, check=True, timeout=120
    )
    assert os.path.getsize(path) > 64 << 20
    assert int(done.stdout.decode()) * 1024 < 24 << 20
    assert Snapshot(path).sections == [(1, "switches", "read"), (1, "lcores", "read")]


def test_dying_reading_process_is_noted(on_embedded_host, monkeypatch, tmp_path):
    monkeypatch.setattr(
        write,
        "_PROGRAM",
        "import sys, os; del sys.path[0]; from qdp.snapshot import reading, sweep;"
        "sweep.BY_NAME['lcores'] = lambda asker: os._exit(9); reading.main(*sys.argv[1:])",
    )
    path = str(tmp_path / "died.qdp")
    write.write(path, write.Options(names=["lcores", "uplinks"]))
    assert Snapshot(path).sections == [
        (1, "lcores", "the reading process ended with status 9"),
        (1, "uplinks", "read"),
    ]


def test_full_disk_leaves_the_old_file(tmp_path):
    path = tmp_path / "kept.qdp"
    path.write_text("old")
    with pytest.raises(OSError):
        with write.replacing(str(path)) as sink:
            sink.write(b"x" * 100)
            raise OSError(28, "No space left on device")
    assert path.read_text() == "old"
    assert [each.name for each in tmp_path.iterdir()] == ["kept.qdp"]


def test_what_is_no_regular_file_is_not_replaced(tmp_path):
    os.mkfifo(str(tmp_path / "fifo"))
    for path in (tmp_path, tmp_path / "fifo"):
        with pytest.raises(OSError) as failure:
            with write.replacing(str(path)) as sink:
                sink.write(b"x\n")
        assert (failure.value.filename, failure.value.strerror) == (str(path), "it is no regular file")
    assert stat.S_ISFIFO((tmp_path / "fifo").stat().st_mode)
    assert [each.name for each in tmp_path.iterdir()] == ["fifo"]


def test_link_to_nothing_and_to_a_file(tmp_path):
    """A link is replaced, as by any program that writes beside and renames; what it leads to stays."""
    (tmp_path / "old").write_text("old")
    (tmp_path / "link").symlink_to(tmp_path / "old")
    (tmp_path / "dangling").symlink_to(tmp_path / "nothing")
    for name in ("link", "dangling"):
        with write.replacing(str(tmp_path / name)) as sink:
            sink.write(b"x\n")
        assert not (tmp_path / name).is_symlink()
    assert (tmp_path / "old").read_text() == "old"


def test_file_is_the_owner_s_alone(tmp_path):
    path = file_of(tmp_path, [began("ports")])
    assert os.stat(path).st_mode & 0o777 == 0o600


# --- Reading: damaged files ---


@pytest.mark.parametrize(
    "content, message",
    [
        (b"", "it is no snapshot"),
        (b"\x7fELF\x02\x01\x01", "it is no snapshot"),
        (b'{"capture": 1}\n', "it is no snapshot"),
        (b'{"qdp-snapshot": 99, "time": 1}\n', "it is of a newer form (99); update qdp"),
        (b'{"qdp-snapshot": x}\n', "it is damaged: its form has no number"),
        (b'{"qdp-snapshot": 1}\n', "it is cut off"),
        (b'{"qdp-snapshot": 1}\n{"sha256": "00", "lines": 1}\n', "it is damaged: its checksum is wrong"),
    ],
)
def test_file_that_is_no_snapshot(tmp_path, content, message):
    path = tmp_path / "file"
    path.write_bytes(content)
    with pytest.raises(SnapshotError) as failure:
        Snapshot(path)
    assert str(failure.value) == "{}: {}".format(path, message)


def test_other_things_than_files(tmp_path):
    os.mkfifo(str(tmp_path / "fifo"))
    for path in (tmp_path, tmp_path / "fifo", "/dev/zero"):
        with pytest.raises(SnapshotError) as failure:
            Snapshot(path)
        assert str(failure.value) in (
            "{}: it is no regular file".format(path),
            "{}: Is a directory".format(path),
        )
    with pytest.raises(SnapshotError) as failure:
        Snapshot(tmp_path / "nothing")
    assert str(failure.value) == "{}: No such file or directory".format(tmp_path / "nothing")


@pytest.mark.parametrize(
    "line",
    [
        b"[" * 100000 + b"\n",
        b"{}\n",
        b"not json\n",
        b'{"call": 5}\n',
        b'{"call": ["ListPorts", [0]]}\n',
        b'{"section": "x", "reading": "y"}\n',
        b'{"section": "x", "reading": -1, "clock": 0}\n',
        b'{"alias": 5}\n',
        b'{"ended": 1}\n',
        b"\xff\xfe\n",
        b"\n",
    ],
)
def test_lines_that_no_writer_writes(tmp_path, line):
    """With a right checksum: a message, or a snapshot that can be asked."""
    for content in ([line, began("ports")], [began("ports"), line]):
        try:
            snapshot = Snapshot(file_of(tmp_path, content))
            for _ in snapshot.calls():
                pass
            with pytest.raises(SnapshotError):
                snapshot.call("GetLBMetric", ())
        except SnapshotError as error:
            assert "\n" not in str(error)


READS = """
import resource, sys
from qdp.snapshot.read import Snapshot, SnapshotError
peak = lambda: resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
before = peak()
try:
    list(Snapshot(sys.argv[1]).capture())
    print(peak() - before, "read")
except SnapshotError as error:
    print(peak() - before, error)
"""


@pytest.mark.parametrize(
    "line, end, what",
    [
        (b'{"call": ["ListPorts", [0]], "result": "%s", "us": 1}\n', 0, "read"),
        (b'{"setting": "x", "value": "%s"}\n', 0, "it is damaged: ValueError"),
        (b'{"call": ["%s"]}\n', 0, "it is damaged: JSONDecodeError"),
        (b'{"capture": "%s"}\n', 0, "read"),
        (b'{"call": ["ListPorts", [0]], "result": "%s", "us": 1}\n', 100, "it is cut off"),
    ],
)
def test_huge_line_takes_no_more_than_twice_the_file(tmp_path, line, end, what):
    path = file_of(tmp_path, [began("ports"), line % (b"x" * (32 << 20))])
    os.truncate(path, os.path.getsize(path) - end)
    environment = dict(os.environ, PYTHONPATH=os.pathsep.join(filter(None, sys.path)))
    done = subprocess.run(
        [sys.executable, "-c", READS, path], cwd="/", env=environment, stdout=subprocess.PIPE, check=True
    )
    grown, _, said = done.stdout.decode().strip().partition(" ")
    assert said.endswith(what)
    assert int(grown) * 1024 <= 2 * os.path.getsize(path) + (4 << 20)


def mutated(content, rng):
    """A damaged copy."""
    data = bytearray(content)
    way = rng.randrange(4)
    if way == 0:
        del data[rng.randrange(len(data)) :]
    elif way == 1:
        for _ in range(rng.randrange(1, 20)):
            data[rng.randrange(len(data))] = rng.randrange(256)
    elif way == 2:
        start = rng.randrange(len(data))
        del data[start : start + rng.randrange(1, 5000)]
    else:
        start = rng.randrange(len(data))
        data[start:start] = data[: rng.randrange(1, 5000)]
    if rng.randrange(2):  # with a checksum that is right again, so that the lines are looked at
        end = data.rfind(lines.END)
        if end > 0:
            data[end:] = lines.dumped({"sha256": hashlib.sha256(data[:end]).hexdigest(), "lines": 1})
    return bytes(data)


def tried(content, count, folder):
    seed = int.from_bytes(os.urandom(4), "little")
    rng = random.Random(seed)
    for i in range(count):
        path = folder / "mutated.qdp"
        path.write_bytes(mutated(content, rng))
        try:
            snapshot = Snapshot(path)
            for _ in snapshot.calls():
                pass
        except SnapshotError as error:
            assert "\n" not in str(error), (seed, i)
        except (ValueError, KeyError, TypeError, RecursionError) as error:
            raise AssertionError("seed {}, number {}".format(seed, i)) from error


def small(written):
    """The lines of a snapshot without its capture and with few of its calls."""
    with open(written, "rb") as file:
        kept = [line for line in file if not line.startswith((lines.CAPTURE, lines.END))][:150]
    data = b"".join(kept)
    return data + lines.dumped({"sha256": hashlib.sha256(data).hexdigest(), "lines": len(kept)})


def test_mutated_files(written, tmp_path):
    tried(small(written), 200, tmp_path)


@pytest.mark.long
def test_many_mutated_files(written, tmp_path):
    content = small(written)
    before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    tried(content, 10000, tmp_path)
    assert (resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before) * 1024 <= max(2 * len(content), 32 << 20)


def test_capture_answers_on_the_embedded_host(written, host, tmp_path):
    """What the module asks is answered as it was when the snapshot was written."""
    snapshot = Snapshot(written)
    capture = tmp_path / "capture"
    capture.write_bytes(b"".join(snapshot.capture()))
    host.replay(str(capture))
    assert _libqdp.GetPortStats(0, 3) == snapshot.call("GetPortStats", (0, 3), 1)
    assert _libqdp.ListPorts(1) == snapshot.call("ListPorts", (1,), 1)


def test_lines_are_json(written):
    with open(written) as file:
        assert all(isinstance(json.loads(line), dict) for line in file)
