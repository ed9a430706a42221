"""A host that several processes share: one state, one clock, and calls that are as those within a process."""

import os
import pathlib
import signal
import stat
import subprocess
import sys
import time

import pytest

import qdp_host
from host.command import PACKAGES, environment, started
from host.command import qdp_host as command

SWEEP = pathlib.Path(__file__).with_name("sweep.py")
NO_HOST = 2


@pytest.fixture
def shared(build, monkeypatch):
    """A host in a process of its own."""
    monkeypatch.setenv("QDP_HOST_LIBRARIES", str(build / "host"))
    monkeypatch.delenv("QDP_HOST", raising=False)
    with qdp_host.serving() as host:
        yield host


def run(host, code, *arguments, **variables):
    """What a process prints that the host answers."""
    done = subprocess.run(
        [sys.executable, "-c", code, *arguments], env=dict(host.environment(), **variables), stdout=subprocess.PIPE,
        stderr=subprocess.PIPE, text=True, timeout=60,
    )  # fmt: skip
    assert (done.returncode, done.stderr) == (0, ""), done.stderr
    return done.stdout


class Server:
    """The command `qdp-host serve` at a socket."""

    def __init__(self, build, path, *options):
        line = [sys.executable, "-m", "qdp_host", "serve", *options, str(path)]
        self.path = path
        self.process = subprocess.Popen(
            line, env=environment(build), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
        )
        self.line = self.process.stdout.readline()

    def end(self, number=signal.SIGTERM):
        self.process.send_signal(number)
        out, err = self.process.communicate(timeout=30)
        return self.process.returncode, out, err


@pytest.fixture
def serve(build, tmp_path):
    servers = []

    def start(*options, path=tmp_path / "socket"):
        servers.append(Server(build, path, *options))
        return servers[-1]

    yield start
    for server in servers:
        if server.process.poll() is None:
            server.end(signal.SIGKILL)


class TestOneState:
    def test_what_one_process_sets_the_next_one_gets(self, shared):
        assert run(shared, "import _libqdp; _libqdp.SetFlowTimeout(77)") == ""
        assert run(shared, "import _libqdp; print(_libqdp.GetFlowTimeout())") == "77\n"

    def test_a_running_process_sees_it_at_once(self, shared):
        code = "import sys, _libqdp\nfor _ in sys.stdin: print(_libqdp.GetFlowTimeout(), flush=True)"
        line = [sys.executable, "-c", code]
        with subprocess.Popen(
            line, env=shared.environment(), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True
        ) as reader:
            seen = []
            for value in (5, 6):
                run(shared, f"import _libqdp; _libqdp.SetFlowTimeout({value})")
                reader.stdin.write("\n")
                reader.stdin.flush()
                seen.append(reader.stdout.readline())
            reader.stdin.close()
        assert seen == ["5\n", "6\n"]

    def test_counters_are_those_of_one_clock(self, shared):
        code = "import _libqdp; print(_libqdp.GetPortStats(0, 0)['rxPkts'])"
        shared.freeze()
        first = int(run(shared, code))
        assert int(run(shared, code)) == first
        shared.advance(60)
        assert int(run(shared, code)) - first == 90000  # 1,500 packets a second

    def test_every_method_answers_as_within_the_process(self, build, shared):
        """Results, texts and the order of both, with the clock at the second at which a process of its own stops it."""
        shared.load("default")
        shared.freeze()
        line = [sys.executable, str(SWEEP)]
        own = {name: value for name, value in shared.environment().items() if name != "QDP_HOST"}
        outputs = []
        for variables in (own, shared.environment()):
            outputs.append(
                subprocess.run(
                    line, env=variables, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=120
                )
            )
        assert outputs[0].returncode == outputs[1].returncode == 0
        assert outputs[0].stdout == outputs[1].stdout
        assert outputs[0].stdout.count("\n") > 147

    def test_switches_are_known_by_alias_in_each_process(self, shared):
        """The library's snapshot is the process's own, as on a real host."""
        code = """
import ctypes, _libqdp
before = _libqdp.GetSwitchBurstSize("dvs-production")
assert ctypes.PyDLL(_libqdp.__file__).LibraryInit() == 0
print(before, _libqdp.SetSwitchBurstSize("dvs-production", 64), _libqdp.GetSwitchBurstSize("dvs-production"))
"""
        line = [sys.executable, "-c", code]
        for _ in range(2):
            done = subprocess.run(line, env=shared.environment(), capture_output=True, text=True, timeout=60)
            assert done.stdout == "None None 64\n", done.stderr
            assert done.stderr == "Failed to find dvs ID for dvs alias dvs-production.\n"

    def test_the_host_that_is_loaded_is_that_of_all(self, shared):
        code = "import _libqdp; print([each['name'] for each in _libqdp.ListSwitches()])"
        shared.load({"switches": [{"alias": "edge", "ports": [{}]}]})
        assert run(shared, code) == "['edge']\n"
        shared.reset()
        assert run(shared, code) == "['portset-0', 'dvs-storage', 'switch-smartnic']\n"

    def test_child_of_a_fork_knows_what_its_parent_knew(self, shared):
        code = """
import ctypes, os, _libqdp
assert ctypes.PyDLL(_libqdp.__file__).LibraryInit() == 0
for _ in range(3):
    child = os.fork()
    if child == 0:
        size = _libqdp.GetSwitchBurstSize("dvs-production")
        os._exit(size != 32 or _libqdp.GetSwitchBurstSize("dvs-storage") is None)
    assert os.waitpid(child, 0)[1] == 0
    assert _libqdp.GetSwitchBurstSize("dvs-production") == 32
"""
        assert run(shared, code) == ""

    def test_threads_share_a_connection(self, shared):
        code = """
import ctypes, threading
libqdp = ctypes.CDLL("libqdp.so")     # calls without the interpreter lock
wrong = []
def read():
    for _ in range(300):
        value, size = ctypes.c_uint32(), ctypes.c_uint32(65536)
        wrong.append(libqdp.Qdp_Get_Flow_Timeout(ctypes.byref(value)) != 0 or value.value != 10)
        wrong.append(libqdp.Qdp_Get_Port_List(0, ctypes.create_string_buffer(65536), ctypes.byref(size)) != 0)
threads = [threading.Thread(target=read) for _ in range(8)]
for thread in threads: thread.start()
for thread in threads: thread.join()
print(len(wrong), sum(wrong))
"""
        assert run(shared, code) == "4800 0\n"

    def test_process_that_closes_all_files_connects_anew(self, shared, tmp_path):
        """A daemon does; its calls do not go into the file that has the number of its connection."""
        code = f"""
import os, _libqdp
_libqdp.GetFlowTimeout()
os.closerange(3, 100)
files = [open({str(tmp_path / "file")!r}, "w+") for _ in range(20)]
print(_libqdp.GetFlowTimeout(), [file.read() for file in files] == [""] * 20)
"""
        assert run(shared, code) == "10 True\n"


class TestControl:
    def test_failures_and_delays_meet_whichever_process_calls(self, shared):
        code = "import _libqdp, time; begin = time.time(); print(_libqdp.GetFlowTimeout(), time.time() - begin > 0.3)"
        shared.fail("Qdp_Get_Flow_Timeout", 7, nth=2)
        results = []
        for _ in range(3):
            done = subprocess.run(
                [sys.executable, "-c", code], env=shared.environment(), capture_output=True, text=True
            )
            results.append(done.stdout)
        assert results == ["10 False\n", "None False\n", "10 False\n"]
        shared.delay("Qdp_Get_Flow_Timeout", 0.4)
        assert run(shared, code) == "10 True\n"

    def test_delayed_call_holds_up_no_other_process(self, shared):
        shared.delay("Qdp_Get_Flow_Timeout", 20)
        slow = subprocess.Popen(
            [sys.executable, "-c", "import _libqdp; _libqdp.GetFlowTimeout()"], env=shared.environment()
        )
        try:
            time.sleep(1)
            begin = time.monotonic()
            assert run(shared, "import _libqdp; print(_libqdp.GetFlowTimeout())") == "10\n"
            assert time.monotonic() - begin < 15
        finally:
            slow.kill()
            slow.wait()

    def test_scripted_answers(self, shared):
        shared.script("Qdp_Get_Flow_Timeout", outputs=[(99).to_bytes(4, "little")])
        shared.script("DVS_SwitchId", text=b"another switch")
        assert run(shared, "import _libqdp; print(_libqdp.GetFlowTimeout(), _libqdp.GetFlowTimeout())") == "99 10\n"

    def test_recording_has_the_calls_of_all_processes(self, shared):
        with shared.recording() as calls:
            run(shared, "import _libqdp; _libqdp.SetFlowTimeout(3)")
            run(shared, "import _libqdp; _libqdp.GetFlowTimeout()")
        assert [(call.operation, call.arguments) for call in calls] == [
            ("Qdp_Set_Flow_Timeout", [3]), ("Qdp_Get_Flow_Timeout", [qdp_host.Capacity(4)]),
        ]  # fmt: skip
        assert calls[1].outputs == [(3).to_bytes(4, "little")]

    def test_second_recorder_is_refused(self, shared):
        with shared.recording():
            second = qdp_host.SharedHost(shared.socket)
            with pytest.raises(qdp_host.HostError, match="another process records the calls of this host"):
                with second.recording():
                    pass
            second.close()

    def test_snapshots_and_recordings_end_with_their_process(self, shared):
        other = qdp_host.SharedHost(shared.socket)
        run(shared, "import _libqdp; _libqdp.SetFlowTimeout(3)")
        snapshot = other.snapshot()
        with pytest.raises(qdp_host.HostError):
            shared.restore(snapshot)  # of another process
        run(shared, "import _libqdp; _libqdp.SetFlowTimeout(4)")
        other.restore(snapshot)
        assert run(shared, "import _libqdp; print(_libqdp.GetFlowTimeout())") == "3\n"
        other._control.qdp_host_record(1)
        other.close()
        deadline = time.monotonic() + 10
        while True:
            try:
                with shared.recording() as calls:
                    run(shared, "import _libqdp; print(_libqdp.GetFlowTimeout())")
                break
            except qdp_host.HostError:
                assert time.monotonic() < deadline
                time.sleep(0.05)
        assert len(calls) == 1

    def test_many_snapshots_are_refused(self, shared):
        kept = [shared.snapshot() for _ in range(16)]
        with pytest.raises(qdp_host.HostError, match="a process keeps at most 16 snapshots of a shared host"):
            shared.snapshot()
        del kept
        shared.snapshot()

    def test_replay_answers_all(self, shared, tmp_path):
        (tmp_path / "capture").write_text(
            '{"capture": 1}\n{"operation": "Qdp_Get_Flow_Timeout", "in": [], "out": [{"bytes": "2a000000"}], '
            '"result": 0}\n'
        )
        shared.replay(tmp_path / "capture")
        assert run(shared, "import _libqdp; print(_libqdp.GetFlowTimeout())") == "42\n"

    def test_errors_of_the_host_reach_its_control(self, shared):
        with pytest.raises(qdp_host.HostError, match="scenario: /switches: "):
            shared.load({"switches": 5})
        with pytest.raises(LookupError, match="the platform has no operation 'Qdp_Nothing'"):
            shared.fail("Qdp_Nothing")


class TestWhatAProcessHolds:
    CODE = """
import ctypes, sys
library = ctypes.CDLL("libqmtPublic.so")
value, length = ctypes.c_void_p(), ctypes.c_uint32()
state = ctypes.c_void_p()
library.DVSHCK_StateGet(ctypes.byref(state), ctypes.byref(length))
library.DVSState_ConfigDeserialize(state, length)
library.DVSState_SwitchFindByAlias.restype = library.DVS_SwitchId.restype = ctypes.c_void_p
handle = library.DVSState_SwitchFindByAlias(b"dvs-production")
identity = library.DVS_SwitchId(ctypes.c_void_p(handle))
key = b"com.tarnix.common.host.portset"
for _ in range(5):
    assert library.DVSHCK_HostPropGet(ctypes.c_void_p(identity), key, ctypes.byref(value), ctypes.byref(length)) == 0
library.DVSHCK_DataFree(value)
print(length.value, flush=True)
sys.stdin.read()
"""

    def test_is_released_when_it_ends(self, shared):
        line = [sys.executable, "-c", self.CODE]
        holder = subprocess.Popen(
            line, env=shared.environment(), stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True
        )
        assert int(holder.stdout.readline()) > 0
        assert shared.unreleased_values() == 4
        holder.kill()
        holder.wait()
        deadline = time.monotonic() + 10
        while shared.unreleased_values() and time.monotonic() < deadline:
            time.sleep(0.02)
        assert shared.unreleased_values() == 0

    def test_module_releases_all(self, shared):
        code = "import ctypes, _libqdp; ctypes.PyDLL(_libqdp.__file__).LibraryInit()"
        run(shared, code + "; _libqdp.GetLBMetric('dvs-production'); _libqdp.GetSwitchMetaFlow('dvs-production')")
        assert shared.unreleased_values() == 0

    def test_value_that_is_no_value_ends_its_process_alone(self, shared):
        code = "import ctypes; ctypes.CDLL('libqmtPublic.so').DVSHCK_DataFree(ctypes.c_void_p(4096))"
        done = subprocess.run([sys.executable, "-c", code], env=shared.environment(), capture_output=True, text=True)
        assert done.returncode == -signal.SIGABRT
        assert done.stderr == "qdp-host: DVSHCK_DataFree: 0x1000 is no value of this library, or was released before\n"
        assert run(shared, "import _libqdp; print(_libqdp.GetFlowTimeout())") == "10\n"


class TestServe:
    def test_socket_is_its_owners_alone(self, serve):
        server = serve()
        assert server.line == f"serving at {server.path}\n"
        mode = os.stat(server.path).st_mode
        assert stat.S_ISSOCK(mode) and stat.S_IMODE(mode) == 0o600

    @pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
    def test_signal_ends_it_without_a_socket(self, serve, number):
        server = serve()
        client = qdp_host.SharedHost(server.path)
        assert server.end(number) == (0, "", "")
        assert not os.path.exists(server.path)
        with pytest.raises(qdp_host.HostError, match="the host has ended"):
            client.uptime()

    def test_signal_ends_it_during_a_call(self, serve, build):
        server = serve()
        client = qdp_host.SharedHost(server.path)
        client.delay("Qdp_Get_Flow_Timeout", 60)
        line = [sys.executable, "-c", "import _libqdp; print(_libqdp.GetFlowTimeout())"]
        slow = subprocess.Popen(
            line, env=client.environment(), stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
        )
        time.sleep(1)
        begin = time.monotonic()
        assert server.end() == (0, "", "")
        assert time.monotonic() - begin < 15
        out, err = slow.communicate(timeout=30)
        assert out == "None\n"
        assert err.startswith(f"qdp-host: {server.path}: the host ended during a call\n")

    def test_scenario(self, serve):
        server = serve("--scenario", "mux")
        client = qdp_host.SharedHost(server.path)
        assert [switch["alias"] for switch in client.scenario()["switches"]] == ["dvs-mux"]
        client.load()
        client.reset()  # goes back to what the host began as
        assert [switch["alias"] for switch in client.scenario()["switches"]] == ["dvs-mux"]

    def test_scenario_that_is_wrong(self, build, tmp_path):
        (tmp_path / "broken.json").write_text('{"switches": 5}')
        done = command(build, "serve", "--scenario", tmp_path / "broken.json", tmp_path / "socket")
        assert done[0] == NO_HOST and done[2].startswith(f"qdp-host: {tmp_path}/broken.json: /switches: ")
        assert not (tmp_path / "socket").exists()

    def test_two_hosts_at_one_socket(self, serve, build):
        server = serve()
        expected = f"qdp-host: {server.path}: another host serves there; name another socket\n"
        assert command(build, "serve", server.path) == (NO_HOST, "", expected)
        qdp_host.SharedHost(server.path).close()

    def test_socket_of_a_host_that_was_killed(self, serve):
        server = serve()
        server.end(signal.SIGKILL)
        assert os.path.exists(server.path)
        again = serve()
        assert again.line == f"serving at {server.path}\n"
        assert again.end()[0] == 0

    def test_socket_of_another_host_stays(self, serve, tmp_path):
        server = serve()
        os.unlink(server.path)
        serve()
        assert server.end()[0] == 0
        assert os.path.exists(server.path)

    def test_paths_that_cannot_be_sockets(self, build, tmp_path):
        (tmp_path / "file").write_text("content")
        done = command(build, "serve", tmp_path / "file")
        message = "a file that is no socket is there; name another one"
        assert done == (NO_HOST, "", f"qdp-host: {tmp_path}/file: {message}\n")
        assert (tmp_path / "file").read_text() == "content"
        done = command(build, "serve", tmp_path / "nowhere" / "socket")
        assert done == (NO_HOST, "", f"qdp-host: {tmp_path}/nowhere/socket: No such file or directory\n")
        long = tmp_path / ("x" * 120)
        done = command(build, "serve", long)
        assert done == (
            NO_HOST,
            "",
            f"qdp-host: {long}: the path of a socket has at most 107 bytes; name a shorter one\n",
        )

    def test_process_goes_on_with_the_next_host(self, serve):
        """One at the same socket."""
        code = "import sys, _libqdp\nfor _ in sys.stdin: print(_libqdp.GetFlowTimeout(), flush=True)"
        first = serve()
        variables = qdp_host.SharedHost(first.path).environment()
        with subprocess.Popen(
            [sys.executable, "-c", code], env=variables, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, text=True,
        ) as reader:  # fmt: skip
            answers = []

            def ask():
                reader.stdin.write("\n")
                reader.stdin.flush()
                answers.append(reader.stdout.readline())

            ask()
            first.end()
            ask()
            serve()
            ask()
            reader.stdin.close()
            errors = reader.stderr.read().splitlines()
        assert answers == ["10\n", "None\n", "10\n"]
        assert errors[0] == f"qdp-host: {first.path}: no host serves there"


class TestAttach:
    def test_option_and_variable(self, build, serve, tmp_path):
        server = serve()
        code = "import _libqdp; _libqdp.SetFlowTimeout(_libqdp.GetFlowTimeout() + 1); print(_libqdp.GetFlowTimeout())"
        assert command(build, "run", "--attach", server.path, "-c", code) == (0, "11\n", "")
        assert command(build, "run", "--attach", "socket", "-c", code, cwd=tmp_path) == (0, "12\n", "")
        assert command(build, "run", "-c", code, variables={"QDP_HOST": str(server.path)}) == (0, "13\n", "")
        assert command(build, "run", "-c", code) == (0, "11\n", "")  # a host of its own

    def test_command_line_replaces_the_environment(self, build, serve):
        server = serve()
        code = "import _libqdp; _libqdp.SetFlowTimeout(5); print(len(_libqdp.ListSwitches()))"
        variables = {"QDP_HOST": str(server.path)}
        assert command(build, "run", "--scenario", "mux", "-c", code, variables=variables) == (0, "1\n", "")
        assert (
            command(build, "run", "-c", "import _libqdp; print(_libqdp.GetFlowTimeout())", variables=variables)[1]
            == "10\n"
        )

    def test_no_host_there(self, build, tmp_path):
        message = f"qdp-host: {tmp_path}/socket: no host serves there; qdp-host serve starts one\n"
        assert command(build, "run", "--attach", tmp_path / "socket", "-c", "") == (NO_HOST, "", message)

    def test_no_host_there_for_a_process_without_the_command(self, build, tmp_path):
        code = "import _libqdp; print(_libqdp.GetFlowTimeout(), _libqdp.GetFlowTimeout(), _libqdp.ListSwitches())"
        variables = {
            "QDP_HOST": str(tmp_path / "socket"),
            "LD_LIBRARY_PATH": str(build / "host"),
            "PYTHONPATH": f"{build}:{PACKAGES}",
        }
        done = started([sys.executable, "-c", code], build, variables=variables)
        assert done.stdout == "None None None\n"
        lines = done.stderr.splitlines()
        assert [line for line in lines if "no host serves there" in line] == [
            f"qdp-host: {tmp_path}/socket: no host serves there"
        ]

    @pytest.mark.parametrize("option", [["--scenario", "mux"], ["--replay", "x"], ["--real"], ["--keep", "x"]])
    def test_options_that_exclude_it(self, build, option):
        done = command(build, "run", "--attach", "socket", *option, "-c", "")
        assert (done[0], done[1]) == (1, "")
        assert done[2].endswith("error: --attach excludes --scenario, --replay, --real and --keep\n")

    def test_host_of_a_process_of_its_own_is_refused(self, shared):
        code = (
            "import qdp_host\ntry:\n    with qdp_host.running(): pass\nexcept qdp_host.HostError as error: print(error)"
        )
        expected = "QDP_HOST attaches this process to a shared host; unset it for a host of the process's own\n"
        assert run(shared, code) == expected

    def test_capture_of_a_shared_host(self, build, serve, tmp_path):
        server = serve()
        code = "import _libqdp; print(_libqdp.GetFlowTimeout())"
        line = ["run", "--attach", server.path, "--capture", tmp_path / "capture", "-c", code]
        assert command(build, *line) == (0, "10\n", "")
        assert command(build, "run", "--replay", tmp_path / "capture", "-c", code) == (0, "10\n", "")


class TestCtl:
    @pytest.fixture
    def ctl(self, build, shared):
        return lambda *arguments: command(build, "ctl", shared.socket, *arguments)

    TIMEOUT = "import _libqdp; print(_libqdp.GetFlowTimeout())"

    def test_plans_for_calls(self, ctl, shared):
        assert ctl("fail", "Qdp_Get_Port_List", "--status", "0x7", "--nth", "2", "--times", "0") == (0, "", "")
        code = "import _libqdp; print([_libqdp.ListPorts(1) is None for _ in range(3)])"
        done = subprocess.run([sys.executable, "-c", code], env=shared.environment(), capture_output=True, text=True)
        assert done.stdout == "[False, True, True]\n"
        assert ctl("reset") == (0, "", "")
        assert run(shared, code) == "[False, False, False]\n"
        assert ctl("delay", "Qdp_Get_Flow_Timeout", "0.5") == (0, "", "")
        begin = time.monotonic()
        assert run(shared, self.TIMEOUT) == "10\n"
        assert time.monotonic() - begin >= 0.5

    def test_clock(self, ctl, shared):
        assert ctl("freeze") == (0, "", "")
        before = shared.uptime()
        assert ctl("advance", "90.5") == (0, "", "")
        assert shared.uptime() - before == 90.5

    def test_load_and_show(self, ctl, build):
        assert ctl("load", "mux") == (0, "", "")
        assert ctl("show") == command(build, "show", "mux")
        code, out, _ = ctl("show", "--json")
        assert code == 0 and out.startswith("{") and '"dvs-mux"' in out

    def test_operations(self, ctl):
        code, out, _ = ctl("operations")
        assert (code, "Qdp_Get_Port_Stats" in out.splitlines()) == (0, True)

    @pytest.mark.parametrize(
        "arguments, message",
        [
            (
                ["fail", "Qdp_Nothing"],
                "the platform has no operation 'Qdp_Nothing'; `qdp-host ctl SOCKET operations` lists them, and so does "
                "EmbeddedHost.operations()",
            ),
            (
                ["fail", "Qdp_Get_Port_List", "--status", "0"],
                "status is the status of a failure: 1 to 4294967295, not 0",
            ),
            (["advance", "-1"], "-1.0 seconds: time goes on only, and for less than 292 years"),
            (["load", "nothing"], "there is no scenario 'nothing'; name a file, or one of: default, large, mux"),
        ],
    )
    def test_what_is_wrong(self, ctl, arguments, message):
        assert ctl(*arguments) == (NO_HOST, "", f"qdp-host: {message}\n")

    def test_no_host_there(self, build, tmp_path):
        message = f"qdp-host: {tmp_path}/socket: no host serves there; qdp-host serve starts one\n"
        assert command(build, "ctl", tmp_path / "socket", "show") == (NO_HOST, "", message)


class TestServing:
    def test_host_ends_with_its_block(self, shared, build):
        with qdp_host.serving() as other:
            path = other.socket
            assert os.path.exists(path)
            assert path != shared.socket
        assert not os.path.exists(os.path.dirname(path))

    def test_scenarios(self, shared):
        for scenario, expected in (("mux", "1"), ({"switches": [{"alias": "a"}, {"alias": "b"}]}, "2")):
            with qdp_host.serving(scenario) as host:
                assert run(host, "import _libqdp; print(len(_libqdp.ListSwitches()))") == expected + "\n"

    def test_host_ends_with_a_process_that_is_killed(self, shared, tmp_path):
        code = """
import os, signal, qdp_host
with qdp_host.serving() as host:
    print(host.socket, flush=True)
    os.kill(os.getpid(), signal.SIGKILL)
"""
        variables = {name: value for name, value in shared.environment().items() if name != "QDP_HOST"}
        done = subprocess.run(
            [sys.executable, "-c", code], env=variables, stdout=subprocess.PIPE, text=True, timeout=60
        )
        assert done.returncode == -signal.SIGKILL
        deadline = time.monotonic() + 10
        while os.path.exists(done.stdout.strip()) and time.monotonic() < deadline:
            time.sleep(0.05)
        assert not os.path.exists(done.stdout.strip())
        os.rmdir(os.path.dirname(done.stdout.strip()))

    def test_host_that_cannot_be_started(self, shared, monkeypatch, tmp_path):
        monkeypatch.setenv("QDP_HOST_SCENARIO", str(tmp_path / "nothing.json"))
        with pytest.raises(qdp_host.HostError, match="the host could not be started"):
            with qdp_host.serving():
                pass
