"""A host whose state stays in a file between runs: `qdp-host run --keep FILE`."""

import json
import os
import signal
import stat
import subprocess
import sys
import time

import pytest

from host.command import environment
from host.command import qdp_host as command

NO_HOST = 2
SHOW = "import _libqdp; print(_libqdp.GetFlowTimeout())"


@pytest.fixture
def kept(build, tmp_path):
    path = tmp_path / "host.kept"

    def run(code, *options, **settings):
        return command(build, "run", "--keep", path, *options, "-c", code, **settings)

    run.path = path
    return run


def test_next_run_has_what_the_last_one_set(kept):
    assert kept("import _libqdp; _libqdp.SetFlowTimeout(77)") == (0, "", "")
    assert kept(SHOW) == (0, "77\n", "")
    assert list(kept.path.parent.iterdir()) == [kept.path]


def test_counters_go_on(kept):
    code = "import _libqdp; print(_libqdp.GetPortStats(0, 0)['rxPkts'])"
    first = int(kept(code)[1])
    second = int(kept(code)[1])
    assert first < second < first + 1500 * 60  # at 1,500 packets a second


def test_processes_that_the_script_starts_have_the_same_host(kept):
    code = (
        "import subprocess, sys, _libqdp; _libqdp.SetFlowTimeout(5); subprocess.run([sys.executable, '-c', %r])" % SHOW
    )
    assert kept(code) == (0, "5\n", "")


def test_scenario_is_that_of_a_new_file(kept):
    code = "import _libqdp; print(len(_libqdp.ListSwitches()))"
    assert kept(code, "--scenario", "mux") == (0, "1\n", "")
    assert kept(code, "--scenario", "default") == (0, "1\n", "")


def test_settings_of_every_kind_are_kept(kept, build):
    """What the layer can set is the same in the next run."""
    setting = """
import qdp
for path, value in (("flow-timeout", 33), ("dvs-production/burst-size", 64), ("dvs-production/port/3/lro", True),
                    ("offload-icmp-echo", True), ("dvs-production/min-flow-layer", 4)):
    try:
        qdp.Host().setting(path).set(value)
    except LookupError:
        pass
"""
    values = """
import qdp
for path, setting in qdp.Host().all_settings():
    try:
        print(path, setting.get())
    except qdp.QdpError:
        print(path, "none")
"""
    done = kept(setting + values)
    assert done[0] == 0 and "flow-timeout 33\n" in done[1] and "dvs-production/burst-size 64\n" in done[1]
    assert kept(values) == done


def test_state_is_kept_when_the_script_fails(kept):
    code = "import os, signal, _libqdp; _libqdp.SetFlowTimeout({}); {}"
    assert kept(code.format(5, "raise SystemExit(3)"))[0] == 3
    assert kept(SHOW)[1] == "5\n"
    assert kept(code.format(6, "os._exit(4)"))[0] == 4
    assert kept(SHOW)[1] == "6\n"
    assert kept(code.format(7, "os.kill(os.getpid(), signal.SIGKILL)"))[0] == -signal.SIGKILL
    assert kept(SHOW)[1] == "7\n"


def test_signals_reach_the_script(kept, build):
    code = (
        "import signal, time; signal.signal(signal.SIGTERM, lambda *_: exit(9)); print('on', flush=True); "
        "time.sleep(60)"
    )
    line = [sys.executable, "-m", "qdp_host", "run", "--keep", kept.path, "-c", code]
    running = subprocess.Popen(line, env=environment(build), stdout=subprocess.PIPE, text=True)
    assert running.stdout.readline() == "on\n"
    running.send_signal(signal.SIGTERM)
    assert running.wait(30) == 9
    running.stdout.close()


def test_runs_follow_each_other(kept, build):
    """No setting of one is lost to another."""
    code = "import time, _libqdp; value = _libqdp.GetFlowTimeout(); time.sleep(0.3); _libqdp.SetFlowTimeout(value + 1)"
    line = [sys.executable, "-m", "qdp_host", "run", "--keep", kept.path, "-c", code]
    runs = [
        subprocess.Popen(line, env=environment(build), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        for _ in range(4)
    ]
    errors = [run.communicate(timeout=120)[1] for run in runs]
    assert [run.returncode for run in runs] == [0] * 4
    assert kept(SHOW) == (0, "14\n", "")
    waiting = f"qdp-host: {kept.path}: waiting for the run that uses it\n"
    assert set(errors) <= {"", waiting} and waiting in errors


def test_run_that_is_killed_leaves_the_file_as_it_was(kept, build):
    kept("import _libqdp; _libqdp.SetFlowTimeout(5)")
    before = kept.path.read_text()
    code = "import os, time, _libqdp; _libqdp.SetFlowTimeout(6); print('on', flush=True); time.sleep(5)"
    line = [sys.executable, "-m", "qdp_host", "run", "--keep", kept.path, "-c", code]
    running = subprocess.Popen(line, env=environment(build), stdout=subprocess.PIPE, text=True)
    assert running.stdout.readline() == "on\n"
    running.kill()
    running.wait()
    running.stdout.close()
    assert kept.path.read_text() == before
    begin = time.monotonic()
    assert kept(SHOW) == (0, "5\n", "")
    assert time.monotonic() - begin < 60


def test_mode_of_the_file_stays(kept):
    kept("")
    os.chmod(kept.path, 0o600)
    kept("")
    assert stat.S_IMODE(os.stat(kept.path).st_mode) == 0o600


@pytest.mark.parametrize(
    "content", ["nonsense", "{}", "[]", '{"uptime": "x", "scenario": {}}', '{"uptime": 1, "scenario": 5}']
)
def test_file_that_keeps_no_host(kept, content):
    kept.path.write_text(content)
    status, out, error = kept("print('started')")
    assert (status, out) == (NO_HOST, "")
    assert error.startswith(f"qdp-host: {kept.path}: keeps no host: ") and error.endswith("; name another file\n")
    assert kept.path.read_text() == content


def test_scenario_in_the_file_that_is_not_valid(kept):
    kept.path.write_text(json.dumps({"uptime": 4000, "scenario": {"switches": 5}}))
    status, out, error = kept("print('started')")
    assert (status, out) == (NO_HOST, "") and "/switches" in error


@pytest.mark.parametrize("option", [["--replay", "x"], ["--real"]])
def test_options_that_exclude_it(kept, option):
    done = kept("", *option)
    assert done[:2] == (1, "") and done[2].endswith("error: --keep excludes --replay and --real\n")
