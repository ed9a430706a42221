"""The command qdp-host: what it runs, its messages, and its exit codes."""

import json
import os
import resource
import signal
import subprocess
import sys

import pytest

from host.command import PACKAGES, environment, qdp_host

USAGE, NO_HOST = 1, 2


def script(tmp_path, code):
    path = tmp_path / "script.py"
    path.write_text(code)
    return path


class TestRun:
    def test_the_script_runs_as_it_is(self, build, tmp_path):
        path = script(tmp_path, "import sys, _libqdp\nprint(sys.argv, __name__, len(_libqdp.ListSwitches()))\n")
        expected = f"{[str(path), '--json', '-x', '--', 'a b', '']} __main__ 3\n"
        assert qdp_host(build, "run", path, "--json", "-x", "--", "a b", "") == (0, expected, "")

    @pytest.mark.parametrize("code", [0, 1, 2, 3, 255])
    def test_its_exit_code_passes_through(self, build, tmp_path, code):
        assert qdp_host(build, "run", script(tmp_path, f"raise SystemExit({code})")) == (code, "", "")

    def test_a_signal_that_ends_it_passes_through(self, build, tmp_path):
        path = script(tmp_path, "import os, signal\nos.kill(os.getpid(), signal.SIGTERM)\nprint('still here')")
        assert qdp_host(build, "run", path) == (-signal.SIGTERM, "", "")

    def test_it_is_the_process_itself(self, build, tmp_path):
        path = script(tmp_path, "import os, sys\nprint(os.getpid(), sys.stdin.read())")
        running = subprocess.Popen(
            [sys.executable, "-m", "qdp_host", "run", str(path)],
            env=environment(build),
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )
        assert running.communicate("typed")[0] == f"{running.pid} typed\n"

    def test_a_module(self, build, tmp_path):
        script(tmp_path, "import sys\nprint(sys.argv[1:])")
        assert qdp_host(build, "run", "-m", "script", "-m", "1", cwd=tmp_path) == (0, "['-m', '1']\n", "")

    def test_another_interpreter(self, build, tmp_path):
        interpreter = tmp_path / "python"
        interpreter.write_text('#!/bin/sh\necho "$@"\n')
        interpreter.chmod(0o755)
        path = script(tmp_path, "")
        done = qdp_host(build, "run", "--interpreter", interpreter, path, "-v")
        assert done == (0, f"{path} -v\n", "")

    def test_the_environment(self, build, tmp_path):
        names = ["LD_LIBRARY_PATH", "PYTHONPATH", "QDP_HOST_SCENARIO", "QDP_HOST_REPLAY", "QDP_HOST_CAPTURE"]
        path = script(tmp_path, f"import os\nfor name in {names}: print(name, os.environ.get(name))")
        variables = {"LD_LIBRARY_PATH": "/own/libraries", "PYTHONPATH": f"{PACKAGES}:/own/packages"}
        expected = [
            f"LD_LIBRARY_PATH {build / 'host'}:/own/libraries",
            f"PYTHONPATH {build}:{PACKAGES}:{PACKAGES}:/own/packages",
            "QDP_HOST_SCENARIO None",
            "QDP_HOST_REPLAY None",
            "QDP_HOST_CAPTURE None",
        ]
        assert qdp_host(build, "run", path, variables=variables)[1].splitlines() == expected

    def test_the_machines_own_libraries(self, build, tmp_path):
        path = script(tmp_path, "import os\nprint(os.environ.get('LD_LIBRARY_PATH'), os.environ['PYTHONPATH'])")
        assert qdp_host(build, "run", "--real", path) == (0, f"None {PACKAGES}\n", "")

    def test_a_capture_of_the_machines_own_libraries(self, build, tmp_path):
        """With the stand-ins in the place of a host's libraries, which the loader finds by itself."""
        path = script(tmp_path, "import _libqdp\nprint(_libqdp.GetFlowTimeout())")
        variables = {"LD_LIBRARY_PATH": str(build / "host"), "PYTHONPATH": f"{PACKAGES}:{build}"}
        done = qdp_host(build, "run", "--real", "--capture", tmp_path / "capture", path, variables=variables)
        assert done == (0, "10\n", "")
        assert json.loads((tmp_path / "capture").read_text().splitlines()[1])["operation"] == "Qdp_Get_Flow_Timeout"
        assert qdp_host(build, "run", "--replay", tmp_path / "capture", path) == (0, "10\n", "")

    def test_a_capture_replaces_another_one_only_when_told(self, build, tmp_path):
        path = script(tmp_path, "import _libqdp\n_libqdp.GetFlowTimeout()")
        (tmp_path / "capture").write_text("an older one")
        message = "qdp-host: capture is there already; give --overwrite, or another name\n"
        assert qdp_host(build, "run", "--capture", "capture", path, cwd=tmp_path) == (NO_HOST, "", message)
        assert (tmp_path / "capture").read_text() == "an older one"
        for _ in range(2):
            assert qdp_host(build, "run", "--capture", "capture", "--overwrite", path, cwd=tmp_path) == (0, "", "")
        assert len((tmp_path / "capture").read_text().splitlines()) == 2


class TestPythonsCommandLine:
    """What follows the options of `run` is Python's own command line."""

    def test_code(self, build):
        code = "import sys, _libqdp; print(sys.argv, len(_libqdp.ListSwitches()))"
        done = qdp_host(build, "run", "--scenario", "mux", "-c", code, "--json", "--", "-c")
        assert done == (0, "['-c', '--json', '--', '-c'] 1\n", "")

    def test_a_module(self, build, tmp_path):
        script(tmp_path, "import sys\nprint(sys.argv[1:], __name__)")
        assert qdp_host(build, "run", "-m", "script", "--", "x", cwd=tmp_path) == (0, "['--', 'x'] __main__\n", "")

    @pytest.mark.parametrize("arguments", [["--", "a"], ["a", "--"], ["--", "--"], ["--scenario", "mux"]])
    def test_arguments_reach_the_script(self, build, tmp_path, arguments):
        path = script(tmp_path, "import sys\nprint(sys.argv[1:])")
        for separator in ([], ["--"]):
            assert qdp_host(build, "run", *separator, path, *arguments) == (0, f"{arguments}\n", "")

    @pytest.mark.parametrize("arguments, banner", [(["-"], False), (["-i"], True), (["-i", "-c", "n = 3"], True)])
    def test_standard_input(self, build, arguments, banner):
        running = subprocess.run(
            [sys.executable, "-m", "qdp_host", "run", *arguments],
            env=environment(build),
            input="import _libqdp\nprint(len(_libqdp.ListSwitches()))\n",
            capture_output=True,
            text=True,
            timeout=60,
        )
        assert (running.returncode, running.stdout) == (0, "3\n")
        assert (">>>" in running.stderr) == banner

    def test_options_of_python(self, build):
        assert qdp_host(build, "run", "-O", "-c", "print(__debug__)") == (0, "False\n", "")


def test_the_version(build, root):
    cmake = (root / "CMakeLists.txt").read_text()
    version = cmake.split("project(libqdp VERSION ")[1].split()[0]
    assert qdp_host(build, "--version") == (0, f"qdp-host {version}\n", "")


class TestOutputThatCannotBeWritten:
    COMMANDS = [["show"], ["show", "--json"], ["check", "mux", "default"], ["--help"], ["--version"]]

    def run_into(self, build, arguments, redirection):
        command = 'exec "$0" -m qdp_host "$@" ' + redirection
        return subprocess.run(
            ["/bin/sh", "-c", command, sys.executable, *arguments],
            env=environment(build),
            capture_output=True,
            timeout=60,
        )

    @pytest.mark.parametrize("arguments", COMMANDS)
    def test_a_full_disk(self, build, arguments):
        done = self.run_into(build, arguments, "> /dev/full")
        assert (done.returncode, done.stderr) == (NO_HOST, b"qdp-host: standard output: No space left on device\n")

    @pytest.mark.parametrize("arguments", COMMANDS)
    def test_closed_from_the_start(self, build, arguments):
        done = self.run_into(build, arguments, ">&-")
        assert (done.returncode, done.stdout, done.stderr) == (0, b"", b"")


BUSY = {
    "switches": [
        {
            "alias": "edge",
            "lcores": [4, 5],
            "ports": [{"client": "UPLINK"}, {}, {}],
            "macTable": {"macs": [{"port": 1, "mac": "02:00:00:00:00:01"}]},
        }
    ],
    "flows": [{"lcore": 5}, {"lcore": 4}, {"lcore": 5}],
}
COUNTING = "import _libqdp\nprint([switch['name'] for switch in _libqdp.ListSwitches()])"


@pytest.fixture
def busy(tmp_path):
    path = tmp_path / "busy.json"
    path.write_text(json.dumps(BUSY))
    return path


@pytest.fixture
def broken(tmp_path):
    path = tmp_path / "broken.json"
    path.write_text('{"switches": 5}')
    return path


class TestScenarios:
    def test_by_file(self, build, tmp_path, busy):
        done = qdp_host(build, "run", "--scenario", "busy.json", script(tmp_path, COUNTING), cwd=tmp_path)
        assert done == (0, "['edge']\n", "")

    @pytest.mark.parametrize("name", ["default", "mux"])
    def test_by_name(self, build, tmp_path, root, name):
        path = script(tmp_path, COUNTING)
        by_file = qdp_host(build, "run", "--scenario", root / "host" / "scenarios" / f"{name}.json", path)
        assert qdp_host(build, "run", "--scenario", name, path) == by_file
        assert by_file[0] == 0 and by_file[1] != "[]\n"

    def test_the_command_line_replaces_the_environment(self, build, tmp_path, busy):
        path = script(tmp_path, COUNTING)
        variables = {"QDP_HOST_SCENARIO": str(busy)}
        assert qdp_host(build, "run", path, variables=variables)[1] == "['edge']\n"
        assert qdp_host(build, "run", "--scenario", "default", path, variables=variables)[1] != "['edge']\n"
        variables = {"QDP_HOST_REPLAY": "nowhere"}
        assert qdp_host(build, "run", "--scenario", busy, path, variables=variables)[1] == "['edge']\n"

    def test_variables_that_are_empty_are_not_set(self, build, tmp_path):
        variables = {"QDP_HOST_SCENARIO": "", "QDP_HOST_REPLAY": ""}
        path = script(tmp_path, COUNTING)
        assert qdp_host(build, "run", path, variables=variables) == qdp_host(build, "run", path)
        assert qdp_host(build, "show", variables=variables) == qdp_host(build, "show")

    @pytest.mark.parametrize("by", ["option", "environment"])
    def test_one_that_is_not_valid(self, build, tmp_path, broken, by):
        path = script(tmp_path, "print('started')")
        arguments = ["--scenario", broken] if by == "option" else []
        variables = {"QDP_HOST_SCENARIO": str(broken)} if by == "environment" else {}
        done = qdp_host(build, "run", *arguments, path, variables=variables)
        assert done == (NO_HOST, "", f"qdp-host: {broken}: /switches: expected a list, found 5\n")

    def test_the_environment_takes_a_name(self, build, tmp_path):
        variables = {"QDP_HOST_SCENARIO": "mux"}
        assert qdp_host(build, "run", script(tmp_path, COUNTING), variables=variables) == (0, "['dvs-mux']\n", "")
        assert qdp_host(build, "show", variables=variables) == qdp_host(build, "show", "mux")

    def test_no_such_name(self, build, tmp_path):
        done = qdp_host(build, "run", "--scenario", "nothing", script(tmp_path, ""))
        message = "qdp-host: there is no scenario 'nothing'; name a file, or one of: default, large, mux\n"
        assert done == (NO_HOST, "", message)


class TestCheck:
    def test_valid(self, build, busy):
        done = qdp_host(build, "check", "busy.json", "mux", "default", cwd=busy.parent)
        assert done == (0, "busy.json: ok\nmux: ok\ndefault: ok\n", "")

    def test_not_valid(self, build, busy, broken, tmp_path):
        """All are looked at."""
        done = qdp_host(build, "check", broken, busy, tmp_path / "nothing.json")
        assert done == (
            NO_HOST,
            f"{busy}: ok\n",
            f"qdp-host: {broken}: /switches: expected a list, found 5\n"
            f"qdp-host: {tmp_path / 'nothing.json'}: expected a scenario file, found No such file or directory\n",
        )


@pytest.mark.usefixtures("release_only")
class TestTheLargeOne:
    @pytest.mark.long
    def test_run(self, build, tmp_path):
        expected = [f"dvs-{number:02}" for number in range(16)]
        assert qdp_host(build, "run", "--scenario", "large", script(tmp_path, COUNTING)) == (0, f"{expected}\n", "")

    def limited(self, build, *arguments):
        """Standard output; the memory at most 200 MB, and the processor's time at most 10 s."""
        done = subprocess.run(
            [sys.executable, "-m", "qdp_host", *arguments], env=environment(build), stdout=subprocess.PIPE, check=True,
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CPU, (10, 10)),
        )  # fmt: skip
        assert resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss < 200 * 1024
        return done.stdout

    @pytest.mark.long
    def test_all_of_it(self, build, tmp_path):
        """In a process of its own, whose children are these alone."""
        code = (
            "import sys, pathlib; sys.path[:0] = [{tests!r}]\n"
            "from host.test_cli import TestTheLargeOne\n"
            "build, one = pathlib.Path({build!r}), TestTheLargeOne()\n"
            "text = one.limited(build, 'show', '--json', 'large')\n"
            "pathlib.Path({path!r}).write_bytes(text)\n"
            "assert one.limited(build, 'check', 'large') == b'large: ok\\n'\n"
        ).format(tests=str(PACKAGES.parent.parent / "tests"), build=str(build), path=str(tmp_path / "all.json"))
        subprocess.run([sys.executable, "-c", code], env=environment(build), check=True)
        assert qdp_host(build, "check", tmp_path / "all.json")[0] == 0
        shown = json.loads((tmp_path / "all.json").read_text())
        large = json.loads((PACKAGES.parent / "scenarios" / "large.json").read_text())
        assert shown["flows"] == large["flows"]
        assert shown["switches"][0]["ports"] == large["switches"][0]["ports"]

    def test_show(self, build):
        code, printed, error = qdp_host(build, "show", "large")
        assert (code, error) == (0, "")
        headings, *rows = [line.split() for line in printed.splitlines()[1:18]]
        switches = [dict(zip(headings, row)) for row in rows]
        assert len(switches) == 16
        assert (switches[0]["ports"], switches[0]["MACs"]) == ("16384", "65536")
        assert sum(int(switch["flows"]) for switch in switches) == 1_000_000


class TestShow:
    def test_a_summary(self, build, busy):
        assert qdp_host(build, "show", busy) == (
            0,
            "Switches\n"
            "  number  alias   MTU  lcores  ports  uplinks  MACs  flows\n"
            "       0  edge   1500       2      3        1     1      3\n"
            "No SmartNIC\n"
            "Elsewhere\n"
            "  1 devices, 0 L3 SPAN records\n",
            "",
        )

    def test_a_summary_of_a_smartnic(self, build, tmp_path):
        """Of the repeated entries all are counted."""
        scenario = {
            "switches": [
                {"alias": "old", "datapath": False},
                {
                    "alias": "nic",
                    "number": 7,
                    "lcores": [1],
                    "ports": [{"client": "UPLINK"}, {"repeat": 2}],
                    "macTable": {"macs": [{"repeat": 10, "port": 1, "mac": {"from": "02:00:00:00:00:10"}}]},
                },
            ],
            "devices": [],
            "l3span": [
                {
                    "switch": 7,
                    "address": "10.0.0.1",
                    "gre": {
                        **{"sourceMac": "02:00:00:00:00:01", "destinationMac": "02:00:00:00:00:02"},
                        **{"source": "10.0.0.2", "destination": "10.0.0.3"},
                    },
                }
            ],
            "smartnic": {
                "switch": 7,
                "hostPfs": [1, 2],
                "lifs": [{"repeat": 4, "lif": {"from": 20}}],
                "muxSwitches": [{"switch": 7}],
            },
            "flows": [{"repeat": 5, "lcore": 1, "offloaded": True}, {"repeat": 6, "lcore": 1}],
            "clearedLcores": [1],
            "pipeline": {"tables": [{"table": 0, "entryBytes": 4, "entries": 9}]},
        }
        (tmp_path / "nic.json").write_text(json.dumps(scenario))
        assert qdp_host(build, "show", tmp_path / "nic.json") == (
            0,
            "Switches\n"
            "  number  alias   MTU  lcores  ports  uplinks  MACs  flows\n"
            "       -  old       -       -      -        -     -      -\n"
            "       7  nic    1500       1      3        1    10     11\n"
            "SmartNIC\n"
            "  behind the uplinks of switch 7\n"
            "  2 host PFs, 4 LIFs, 0 VLAN ports, 1 switches in mux mode\n"
            "  5 offloaded flows, 0 tunnels, 0 mirror sessions, 0 port mirrors, 1 hardware tables\n"
            "Elsewhere\n"
            "  0 devices, 1 L3 SPAN records\n",
            "",
        )

    def test_a_host_without_anything(self, build, tmp_path):
        (tmp_path / "empty.json").write_text("{}")
        printed = "No switches\nNo SmartNIC\nElsewhere\n  0 devices, 0 L3 SPAN records\n"
        assert qdp_host(build, "show", tmp_path / "empty.json") == (0, printed, "")

    def test_the_default_one(self, build):
        code, printed, error = qdp_host(build, "show")
        assert (code, error) == (0, "")
        assert [line.split()[1] for line in printed.splitlines()[2:6]] == [
            "dvs-production",
            "dvs-storage",
            "dvs-smartnic",
            "legacy-network",
        ]
        assert "\nSmartNIC\n  behind the uplinks of switch 2\n" in printed

    def test_a_pager_that_is_closed_early(self, build):
        running = subprocess.Popen(
            [sys.executable, "-m", "qdp_host", "show", "--json"],
            env=environment(build),
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
        )
        running.stdout.close()
        assert running.communicate()[1] == b""

    def test_all_of_it_is_a_scenario(self, build, busy, tmp_path):
        code, printed, error = qdp_host(build, "show", "--json", busy)
        assert (code, error) == (0, "") and json.loads(printed)["switches"][0]["alias"] == "edge"
        (tmp_path / "shown.json").write_text(printed)
        assert qdp_host(build, "show", "--json", tmp_path / "shown.json") == (0, printed, "")

    def test_not_valid(self, build, broken):
        message = f"qdp-host: {broken}: /switches: expected a list, found 5\n"
        assert qdp_host(build, "show", broken) == (NO_HOST, "", message)

    def test_from_the_environment(self, build, busy, broken):
        assert qdp_host(build, "show", variables={"QDP_HOST_SCENARIO": str(busy)}) == qdp_host(build, "show", busy)
        message = f"qdp-host: {broken}: /switches: expected a list, found 5\n"
        assert qdp_host(build, "show", variables={"QDP_HOST_SCENARIO": str(broken)}) == (NO_HOST, "", message)


class TestUsage:
    @pytest.mark.parametrize(
        "arguments, message",
        [
            ([], "qdp-host: error: the following arguments are required: "),
            (["fly"], "qdp-host: error: argument run|check|show|serve|ctl: invalid choice: 'fly'"),
            (["run"], "qdp-host run: error: the following arguments are required: SCRIPT"),
            (["run", "--fly", "x.py"], "qdp-host: error: unrecognized arguments: --fly\n"),
            (["run", "nothing.py"], "qdp-host run: error: there is no script nothing.py\n"),
            (["run", "--scenario"], "qdp-host run: error: argument --scenario: expected one argument\n"),
            (
                ["run", "--scenario", "a", "--replay", "b", "x.py"],
                "qdp-host run: error: --scenario and --replay exclude each other\n",
            ),
            (
                ["run", "--real", "--scenario", "a", "x.py"],
                "qdp-host run: error: --real excludes --scenario and --replay\n",
            ),
            (["check"], "qdp-host check: error: the following arguments are required: FILE\n"),
            (["show", "a", "b"], "qdp-host: error: unrecognized arguments: b\n"),
        ],
    )
    def test_a_wrong_command_line(self, build, arguments, message):
        code, printed, error = qdp_host(build, *arguments)
        assert (code, printed) == (USAGE, "")
        assert error.startswith("usage: qdp-host") and message in error

    @pytest.mark.parametrize("command", [[], ["run"], ["check"], ["show"]])
    def test_help_says_the_exit_codes(self, build, command):
        code, printed, error = qdp_host(build, *command, "--help")
        assert (code, error) == (0, "") and "Exit codes: 0; 1 for" in printed


class TestAHostThatCannotBeSetUp:
    """The script never starts."""

    def refused(self, build, tmp_path, *options, **more):
        path = script(tmp_path, "print('started')")
        code, printed, error = qdp_host(build, "run", *options, path, **more)
        assert (code, printed) == (NO_HOST, "")
        return error

    def test_no_interpreter(self, build, tmp_path):
        error = self.refused(build, tmp_path, "--interpreter", "python9")
        assert error == "qdp-host: there is no interpreter python9 that can be run\n"

    def test_an_interpreter_that_is_none(self, build, tmp_path):
        interpreter = tmp_path / "python"
        interpreter.write_bytes(b"\x7fELF")
        interpreter.chmod(0o755)
        error = self.refused(build, tmp_path, "--interpreter", interpreter)
        assert error == f"qdp-host: {interpreter} cannot be run: Exec format error\n"

    def test_no_stand_ins(self, build, tmp_path):
        error = self.refused(build, tmp_path, variables={"QDP_HOST_LIBRARIES": str(tmp_path)})
        assert error == (
            f"qdp-host: the embedded host has no libqdphost.so in {tmp_path}; script/build builds it, "
            "QDP_HOST_LIBRARIES names another folder\n"
        )

    def test_no_recorder(self, build, tmp_path):
        for name in ("libqdp.so", "libqmtPublic.so", "libqdphost.so"):
            os.symlink(build / "host" / name, tmp_path / name)
        capture = tmp_path / "capture"
        variables = {"QDP_HOST_LIBRARIES": str(tmp_path)}
        error = self.refused(build, tmp_path, "--capture", capture, variables=variables)
        assert error.startswith(f"qdp-host: the embedded host has no libqdpcapture.so in {tmp_path}; ")
        assert not capture.exists()

    def test_a_capture_that_cannot_be_written(self, build, tmp_path):
        error = self.refused(build, tmp_path, "--capture", tmp_path / "nowhere" / "capture")
        assert error == f"qdp-host: {tmp_path / 'nowhere' / 'capture'}: No such file or directory\n"

    @pytest.mark.parametrize("variables", [False, True])
    def test_a_capture_that_cannot_be_replayed(self, build, tmp_path, variables):
        capture = tmp_path / "capture"
        capture.write_text('{"capture": 1}\n{"operation": "Qdp_Nothing", "in": [], "out": [], "result": 0}\n')
        if variables:
            error = self.refused(build, tmp_path, variables={"QDP_HOST_REPLAY": str(capture)})
        else:
            error = self.refused(build, tmp_path, "--replay", "capture", cwd=tmp_path)
        assert error == f'qdp-host: {capture}: line 2: the platform has no operation "Qdp_Nothing"\n'
