"""Tests of `qdp snapshot`, `bundle`, `diff`, `check` and `--from`, as processes: a snapshot answers for a whole
process."""

import functools
import json
import os
import re
import shutil
import subprocess

import pytest

from qdp.snapshot.read import Snapshot


@pytest.fixture(scope="module")
def run_in(process, root):
    """Runs a command line in a folder: (exit code, standard output, standard error)."""

    def run_in(folder, *arguments, **variables):
        path = os.pathsep.join([variables.pop("PYTHONPATH", ""), str(root / "host" / "python")])
        command, environment = process(*arguments, **variables)
        environment["PYTHONPATH"] += os.pathsep + path.strip(os.pathsep)
        done = subprocess.run(
            command, env=environment, cwd=str(folder), stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120
        )
        return done.returncode, done.stdout.decode(), done.stderr.decode()

    return run_in


@pytest.fixture
def run(run_in, tmp_path):
    """Runs a command line in the test's own folder."""
    return functools.partial(run_in, tmp_path)


@pytest.fixture(scope="module")
def written(run_in, tmp_path_factory):
    folder = tmp_path_factory.mktemp("snapshot")
    assert run_in(folder, "snapshot", "host.qdp") == (0, "", "")
    return folder / "host.qdp"


@pytest.fixture
def file(written, tmp_path):
    """A snapshot of the default host in the test's own folder."""
    shutil.copy(written, tmp_path)
    return "host.qdp"


def rows(result):
    code, out, err = result
    assert (code, err) == (0, ""), err
    return json.loads(out)


# What every object shows of a host; each has to be shown of a snapshot alike.
READING = [
    ["switch", "show"],
    ["port", "show"],
    ["port", "conf", "dvs-production", "3"],
    ["port", "queues", "0", "0"],
    ["uplink", "show"],
    ["uplink", "queue", "0", "0"],
    ["uplink", "offload"],
    ["mac", "show", "dvs-storage"],
    ["lcore", "show", "--columns", "switch,lcore"],
    ["slowpath", "show"],
    ["mirror", "show"],
    ["nic", "show"],
    ["nic", "lif"],
    ["nic", "vlan"],
    ["nic", "port"],
    ["nic", "pf"],
    ["nic", "mux"],
    ["table", "list"],
    ["setting", "show"],
]


def without_counters(row):
    """A row without what changes between two processes."""
    return {key: value for key, value in row.items() if type(value) is not int or value < 100000}


@pytest.mark.parametrize("words", READING, ids=" ".join)
def test_snapshot_shows_what_the_host_shows(run, file, words):
    live, kept = rows(run(*words, "-j")), rows(run("--from", file, *words, "-j"))
    assert len(kept) == len(live) and [list(row) for row in kept] == [list(row) for row in live]
    if words[0] in ("switch", "mac", "setting", "table") or words[:2] in (
        ["port", "show"],
        ["port", "conf"],
        ["nic", "lif"],
    ):
        assert kept == live


def test_snapshot_needs_no_platform(file, process, build, tmp_path):
    """On a laptop there are neither the platform's libraries nor the embedded host."""
    command, environment = process("--from", file, "port", "show", "dvs-production", "-j")
    environment.pop("LD_LIBRARY_PATH")
    done = subprocess.run(command, env=environment, cwd=str(tmp_path), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert (done.returncode, done.stderr) == (0, b"")
    assert len(json.loads(done.stdout.decode())) == 36


def test_command_without_platform_says_what_to_do(process, tmp_path):
    command, environment = process("switch", "show")
    environment.pop("LD_LIBRARY_PATH")
    done = subprocess.run(command, env=environment, cwd=str(tmp_path), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    assert (done.returncode, done.stdout) == (2, b"")
    assert done.stderr.startswith(
        b"qdp: ListSwitches(): _libqdp cannot be loaded: libqdp.so: cannot open shared object"
    )
    assert done.stderr.endswith(b"run this on a host, or by `qdp-host run`\n")


@pytest.mark.parametrize(
    "words", [["port", "reset", "0", "3"], ["exporter"], ["setting", "set", "flow-timeout", "5"], ["bundle", "x"]]
)
def test_snapshot_cannot_be_changed(run, file, words):
    code, out, err = run("--from", file, *words)
    assert (code, out) == (1, "")
    assert err.endswith("needs a host; a snapshot can only be read\n") and err.count("\n") == 1


def test_watching_a_snapshot_is_refused(run, file):
    assert run("--from", file, "port", "show", "-w")[0] == 1


@pytest.mark.parametrize(
    "words, message",
    [
        (["--from"], "--from takes the file of a snapshot"),
        (["--from", "x.qdp"], "--from takes the file of a snapshot"),
        (["--from", "none.qdp", "switch"], "none.qdp: No such file or directory"),
        (["--from", ".", "switch"], ".: "),
        (["snapshot"], "the following arguments are required: FILE"),
        (["snapshot", "/nowhere/x.qdp"], "cannot write /nowhere/x.qdp: No such file or directory"),
        (["snapshot", "x", "--key-file", "k"], "--key-file goes with --anonymize"),
        (["snapshot", "x", "--of", "y"], "--of goes with --anonymize"),
        (["diff", "none.qdp", "now"], "none.qdp: No such file or directory"),
        (["diff", "none.qdp", "now", "--only", "x"], "none.qdp"),
    ],
)
def test_errors_are_one_line(run, words, message):
    code, out, err = run(*words)
    assert code in (1, 2) and out == ""
    assert err.startswith("qdp: " + message) and err.count("\n") == 1


def test_written_file_as_json(run, tmp_path):
    (about,) = rows(run("snapshot", "x.qdp", "-j"))
    assert about == {"file": "x.qdp", "bytes": (tmp_path / "x.qdp").stat().st_size}
    code, out, err = run("snapshot", "/nowhere/x.qdp", "-j")
    assert (code, out) == (2, "[]\n")
    assert json.loads(err)["error"]["text"] == "cannot write /nowhere/x.qdp: No such file or directory"


def test_diff_of_settings(run, file, tmp_path):
    plain = (tmp_path / file).read_text()
    assert rows(run("diff", file, file, "-j")) == []
    changed = [
        line.replace('"value": 32}', '"value": 64}') if '"setting": "dvs-production/burst-size"' in line else line
        for line in plain.splitlines(True)[:-1]
    ]
    import hashlib

    text = "".join(changed).encode()
    end = json.dumps({"sha256": hashlib.sha256(text).hexdigest(), "lines": len(changed)}).encode() + b"\n"
    (tmp_path / "other.qdp").write_bytes(text + end)
    code, out, err = run("diff", file, "other.qdp", "--only", "settings,inventory", "-j")
    assert (code, err) == (3, "")
    assert json.loads(out) == [
        {
            "kind": "setting",
            "path": "dvs-production/burst-size",
            "before": 32,
            "after": 64,
            "growth": None,
            "rate": None,
        }
    ]


def test_diff_with_now(run, file):
    assert run("diff", file, "now", "--only", "settings,inventory", "-j") == (0, "[]\n", "")


def test_bundle(run, tmp_path):
    code, out, err = run("bundle", "b.qdp", "--interval", "1s", "--flows", "1")
    assert (code, out, err) == (0, "", "")
    bundle = Snapshot(str(tmp_path / "b.qdp"))
    assert {name for reading, name, how in bundle.sections if reading == 1} >= {"balancer", "tables", "ports"}
    assert {how for _, _, how in bundle.sections} == {"read"}
    code, out, err = run("diff", "b.qdp", "--only", "counters", "-j")
    assert code == 3 and json.loads(out)
    assert rows(run("--from", "b.qdp", "balancer", "show", "-j"))
    assert "8 lcores, 36 ports" in rows(run("--from", "b.qdp", "balancer", "debug", "0", "-j"))[0]["text"]
    assert len(rows(run("--from", "b.qdp", "table", "dump", "0", "-j"))) == 1024
    assert rows(run("--from", "b.qdp", "table", "get", "input", "64", "-j"))[0]["lifId"] == 64
    (tmp_path / "wanted.json").write_text('{"flow-timeout": 33}')
    (change,) = rows(run("--from", "b.qdp", "setting", "plan", "wanted.json", "-j"))
    assert (change["path"], change["before"], change["after"]) == ("flow-timeout", 10, 33)
    code, out, err = run("--from", "b.qdp", "flow", "show", "-j")
    assert code == 2 and "does not hold DumpFlowTable" in err  # one page of each lcore alone
    flows = json.loads(out)
    indexes = [found[1] for found in (re.search(r"hwFlowIdx: (\d+)", flow["actions"]) for flow in flows) if found]
    steps = rows(run("--from", "b.qdp", "flow", "trace", indexes[0], "-j"))
    assert steps[0]["entry"]["flowIdx"] == int(indexes[0]) and len(steps) > 2
    assert run("--from", "b.qdp", "check")[0] in (0, 3)


def test_anonymized_snapshot(run, file, tmp_path):
    assert run("snapshot", "a.qdp", "--anonymize", "--key-file", "key", "--of", file) == (0, "", "")
    text = (tmp_path / "a.qdp").read_text()
    assert "dvs-production" not in text and "02:10:00" not in text
    assert len(rows(run("--from", "a.qdp", "port", "show", "-j"))) == 79
    assert run("snapshot", "b.qdp", "--anonymize", "--key-file", "key") == (0, "", "")
    names = [[row["name"] for row in rows(run("--from", name, "switch", "show", "-j"))] for name in ("a.qdp", "b.qdp")]
    assert names[0] == names[1]


def test_capture_of_a_snapshot_runs_on_the_embedded_host(run, file, tmp_path):
    assert run("snapshot", "capture", "--capture-of", file) == (0, "", "")
    switches = rows(run("switch", "show", "-j", QDP_HOST_REPLAY=str(tmp_path / "capture")))
    assert [switch["name"] for switch in switches] == ["portset-0", "dvs-storage", "switch-smartnic"]


def test_check_names_what_has_trouble_on_the_default_host(run):
    code, out, err = run("check", "--interval", "2s", "-j")
    assert (code, err) == (3, "")
    assert [(row["condition"], row["labels"]) for row in json.loads(out)] == [
        ("QdpPortDrops", {"switch": "0", "port": "9", "direction": "rx"}),
        ("QdpPortDrops", {"switch": "0", "port": "20", "direction": "tx"}),
        ("QdpFlowCacheFailures", {"switch": "0", "lcore": "5", "kind": "action_alloc"}),
    ]


def test_check_finds_what_holds(run, tmp_path, process):
    """A host of which the SmartNIC's counters are refused once they have been read."""
    code, out, err = run("check", "--interval", "1s", "-j")
    assert code == (3 if json.loads(out) else 0) and err == ""
    for row in json.loads(out):
        assert row["summary"] and row["meaning"] and row["action"] and "{{" not in row["summary"]
