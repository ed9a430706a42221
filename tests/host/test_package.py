"""The package qdp_host: the context manager, the pytest fixture, and control of time, failures and state."""

import ctypes
import glob
import json
import os
import shutil
import sys
import threading
import time

import pytest

import qdp_host
from host.command import PACKAGES, started


def code_of(build, code, **variables):
    """(exit code, standard output, last line of standard error) of a piece of code in a process of its own."""
    done = started([sys.executable, "-c", code], build, variables=variables)
    return done.returncode, done.stdout, done.stderr.strip().split("\n")[-1]


class TestRunning:
    def test_the_module_finds_the_stand_ins(self, build):
        code = """
import qdp_host
with qdp_host.running() as host:
    import _libqdp
    print(len(_libqdp.ListSwitches()))
    host.fail("Qdp_Get_Switch_List", times=0)
    print(_libqdp.ListSwitches())
with qdp_host.running() as again:
    print(again is host, len(_libqdp.ListSwitches()))
"""
        assert code_of(build, code)[:2] == (0, "3\nNone\nTrue 3\n")

    def test_it_begins_and_ends_with_a_reset(self, build):
        code = """
import qdp_host
with qdp_host.running() as host:
    flow_timeout = host.libqdp.Qdp_Set_Flow_Timeout
    host.fail("Qdp_Set_Flow_Timeout", 7, times=0)
    print(flow_timeout(1))
print(flow_timeout(1))
host.fail("Qdp_Set_Flow_Timeout", 7, times=0)
with qdp_host.running():
    print(flow_timeout(1))
    host.fail("Qdp_Set_Flow_Timeout", 7, times=0)
    1 / 0
"""
        assert code_of(build, code) == (1, "7\n0\n0\n", "ZeroDivisionError: division by zero")

    def test_it_replays(self, build, tmp_path):
        capture = tmp_path / "capture"
        capture.write_text('{"capture": 1}\n{"operation": "Qdp_Set_Flow_Timeout", "in": [1], "out": [], "result": 5}\n')
        code = f"""
import qdp_host
with qdp_host.running(replay={str(capture)!r}) as host:
    print(host.libqdp.Qdp_Set_Flow_Timeout(1))
print(host.libqdp.Qdp_Set_Flow_Timeout(1))
"""
        assert code_of(build, code)[:2] == (0, "5\n0\n")

    def test_other_libraries_are_loaded_already(self, build, tmp_path):
        other = tmp_path / "libqmtPublic.so"
        shutil.copy(build / "host" / "libqmtPublic.so", other)
        code = f"""
import ctypes, qdp_host
ctypes.CDLL({str(build / "host" / "libqdphost.so")!r})
ctypes.CDLL({str(other)!r})
with qdp_host.running():
    pass
"""
        message = f"{other} is loaded already; the embedded host has to be there before _libqdp is imported"
        assert code_of(build, code) == (1, "", f"qdp_host._places.HostError: {message}")

    def test_no_stand_ins(self, build, tmp_path):
        code = "import qdp_host\nwith qdp_host.running(): pass"
        message = (
            f"the embedded host has no libqdphost.so in {tmp_path}; script/build builds it, "
            "QDP_HOST_LIBRARIES names another folder"
        )
        assert code_of(build, code, QDP_HOST_LIBRARIES=str(tmp_path))[2] == f"qdp_host._places.HostError: {message}"

    def test_stand_ins_that_cannot_be_loaded(self, build, tmp_path):
        (tmp_path / "libqdphost.so").write_text("nonsense")
        code = "import qdp_host\nwith qdp_host.running(): pass"
        message = f"qdp_host._places.HostError: {tmp_path}/libqdphost.so cannot be loaded: "
        assert code_of(build, code, QDP_HOST_LIBRARIES=str(tmp_path))[2].startswith(message)

    def test_the_installed_stand_ins_come_first(self, build, tmp_path):
        shutil.copytree(PACKAGES / "qdp_host", tmp_path / "qdp_host")
        shutil.copytree(build / "host", tmp_path / "qdp_host" / "stand_ins")
        code = "import qdp_host\nwith qdp_host.running() as host: print(host.libqdp._name)"
        done = code_of(build, code, PYTHONPATH=str(tmp_path), QDP_HOST_LIBRARIES="nowhere")
        assert done == (0, f"{tmp_path}/qdp_host/stand_ins/libqdp.so\n", "")


class TestAnotherInterpreter:
    @pytest.fixture
    def site(self, build, root, tmp_path):
        """What an installation has in its folder, and a package of somebody else beside it."""
        site = tmp_path / "site"
        shutil.copytree(PACKAGES / "qdp_host", site / "qdp_host")
        shutil.copytree(build / "host", site / "qdp_host" / "stand_ins")
        shutil.copytree(root / "host" / "scenarios", site / "qdp_host" / "scenarios")
        shutil.copy(build / "_libqdp.abi3.so", site)
        (site / "others.py").write_text("")
        return site

    # Those of a pyenv, where there is one.
    @pytest.mark.parametrize("interpreter", sorted(glob.glob(os.path.expanduser("~/.pyenv/versions/*/bin/python3"))))
    def test_it_finds_the_installed_packages_alone(self, build, site, tmp_path, interpreter):
        code = (
            "import sys, _libqdp, qdp_host, importlib.util as u\n"
            "print(len(_libqdp.ListSwitches()), _libqdp.__file__, qdp_host.__file__, u.find_spec('others'))"
        )
        arguments = ["run", "--interpreter", interpreter, "-c", code]
        start = (
            f"import sys; sys.path.insert(0, {str(site)!r}); from qdp_host.__main__ import main; main({arguments!r})"
        )
        variables = {"PYTHONPATH": "", "QDP_HOST_LIBRARIES": ""}
        done = started([sys.executable, "-c", start], build, cwd=tmp_path, variables=variables)
        path = f"{site}/_libqdp.abi3.so {site}/qdp_host/__init__.py"
        assert (done.returncode, done.stdout) == (0, f"3 {path} None\n"), done.stderr


BUSY = {"switches": [{"alias": "edge", "mtu": 1600, "ports": [{}, {}]}]}


@pytest.fixture
def busy(tmp_path):
    path = tmp_path / "busy.json"
    path.write_text(json.dumps(BUSY))
    return path


class TestScenarios:
    def aliases(self, host):
        return [switch["alias"] for switch in host.scenario()["switches"]]

    def test_by_file(self, host, qdp, busy):
        host.load(busy)
        assert [(switch["name"], switch["mtu"], switch["numPorts"]) for switch in qdp.result("ListSwitches")] == [
            ("edge", 1600, 2)
        ]

    def test_by_name(self, host, root):
        host.load("mux")
        by_name = host.scenario()
        host.load(root / "host" / "scenarios" / "mux.json")
        assert host.scenario() == by_name

    def test_the_default_one(self, host, busy):
        default = self.aliases(host)
        host.load(busy)
        host.load()
        assert self.aliases(host) == default and len(default) > 1
        host.load("default")
        assert self.aliases(host) == default

    def test_a_reset_goes_back_to_the_first_one(self, build, busy):
        code = """
from qdp_host import EmbeddedHost
host = EmbeddedHost()
aliases = lambda: [switch["alias"] for switch in host.scenario()["switches"]]
print(aliases())
host.load("mux")
print(aliases() == ["edge"])
host.reset()
print(aliases())
"""
        done = code_of(build, code, QDP_HOST_SCENARIO=str(busy))
        assert done == (0, "['edge']\nFalse\n['edge']\n", "")

    def test_running(self, build, busy):
        code = f"""
import qdp_host
with qdp_host.running(scenario={str(busy)!r}) as host:
    print(len(host.scenario()["switches"]))
print(len(host.scenario()["switches"]))
"""
        assert code_of(build, code) == (0, "1\n4\n", "")

    def test_what_is_written_is_what_was_loaded(self, host, qdp, busy, tmp_path):
        host.load(busy)
        qdp.result("SetFlowTimeout", 77)
        (tmp_path / "written.json").write_text(json.dumps(host.scenario()))
        host.reset()
        host.load(tmp_path / "written.json")
        assert (self.aliases(host), qdp.result("GetFlowTimeout")) == (["edge"], 77)

    def test_no_such_name(self, host):
        with pytest.raises(qdp_host.HostError) as raised:
            host.load("nothing")
        assert str(raised.value) == "there is no scenario 'nothing'; name a file, or one of: default, large, mux"

    def test_one_that_is_not_valid(self, host, qdp, busy):
        busy.write_text('{"switches": 5}')
        with pytest.raises(qdp_host.HostError) as raised:
            host.load(busy)
        assert str(raised.value) == f"{busy}: /switches: expected a list, found 5"
        assert qdp.call("ListSwitches").result is None
        for refused in (host.scenario, host.snapshot):
            with pytest.raises(qdp_host.HostError):
                refused()
        host.reset()
        assert qdp.result("ListSwitches")

    def test_from_the_environment(self, build, busy):
        """Every operation fails, and one message says why."""
        busy.write_text('{"switches": 5}')
        code = """
from qdp_host import EmbeddedHost
host = EmbeddedHost()
print([hex(host.libqdp.Qdp_Set_Flow_Timeout(1) & 0xFFFFFFFF) for _ in range(3)])
print(host.libqmtPublic.DVSState_SwitchFindByAlias(b"dvs-production"))
"""
        done = started([sys.executable, "-c", code], build, variables={"QDP_HOST_SCENARIO": str(busy)})
        assert done.stdout == "['0xbad0001', '0xbad0001', '0xbad0001']\n0\n"
        assert done.stderr == f"qdp-host: {busy}: /switches: expected a list, found 5\n"


class TestDelays:
    PAUSE = 0.2

    def seconds(self, call):
        start = time.monotonic()
        call()
        return time.monotonic() - start

    def test_the_nth_call(self, host):
        host.delay("Qdp_Set_Flow_Timeout", self.PAUSE, nth=2, times=2)
        taken = [self.seconds(lambda: host.libqdp.Qdp_Set_Flow_Timeout(1)) >= self.PAUSE for _ in range(5)]
        assert taken == [False, True, True, False, False]

    def test_a_delay_ends_with_a_reset(self, host):
        host.delay("Qdp_Set_Flow_Timeout", 60, times=0)
        host.reset()
        assert self.seconds(lambda: host.libqdp.Qdp_Set_Flow_Timeout(1)) < 30

    def test_a_frozen_clock_stays(self, host, qdp):
        host.freeze()
        before = qdp.result("GetPortStats", 0, 0)
        host.delay("Qdp_Get_Port_Stats", self.PAUSE)
        assert qdp.result("GetPortStats", 0, 0) == before

    def test_a_delayed_call_answers_as_ever(self, host, qdp):
        host.delay("Qdp_Get_Flow_Timeout", 0.01, times=0)
        host.fail("Qdp_Get_Flow_Timeout")
        assert qdp.call("GetFlowTimeout").result is None
        assert qdp.result("GetFlowTimeout") == 10

    def test_other_threads_of_the_platform_go_on(self, build, host):
        """Calls that do not hold the interpreter lock; the module's do."""
        library = ctypes.CDLL(str(build / "host" / "libqdp.so"))
        host.delay("Qdp_Set_Flow_Timeout", 2)
        slow = threading.Thread(target=library.Qdp_Set_Flow_Timeout, args=(1,))
        taken = self.seconds(slow.start) + self.seconds(lambda: library.Qdp_Set_Offload_ICMP_Echo(1))
        is_waiting = slow.is_alive()
        slow.join()
        assert taken < 2 and is_waiting

    def test_an_unknown_operation(self, host):
        with pytest.raises(LookupError, match="Qdp_Nothing"):
            host.delay("Qdp_Nothing", 1)


class TestWhatCannotBe:
    """It is refused where the test says it, and nothing changes."""

    @pytest.mark.parametrize("seconds", [-1, -1e-9, 2**63, 1e12, float("nan"), float("inf")])
    def test_times(self, host, qdp, seconds):
        host.freeze()
        before = qdp.result("GetPortStats", 0, 0)
        for refused in (lambda: host.advance(seconds), lambda: host.delay("Qdp_Get_Port_Stats", seconds)):
            with pytest.raises((ValueError, OverflowError)):
                refused()
        assert qdp.result("GetPortStats", 0, 0) == before

    @pytest.mark.parametrize("calls", [{"nth": 0}, {"nth": -1}, {"times": -1}])
    def test_chosen_calls(self, host, calls):
        for refused in (
            lambda: host.fail("Qdp_Set_Flow_Timeout", **calls),
            lambda: host.delay("Qdp_Set_Flow_Timeout", 60, **calls),
        ):
            with pytest.raises(ValueError, match="nth counts from 1"):
                refused()
        assert host.libqdp.Qdp_Set_Flow_Timeout(1) == 0


class TestSnapshots:
    def test_the_state_comes_back_as_often_as_wanted(self, host, qdp):
        snapshot, macs = host.snapshot(), qdp.result("ListPortMACTable", 0, 3)
        for timeout in (7, 8):
            qdp.result("SetFlowTimeout", timeout)
            qdp.result("ClearPortMACTable", 0, 3)
            assert qdp.result("GetFlowTimeout") == timeout
            assert qdp.result("ListPortMACTable", 0, 3) != macs
            host.restore(snapshot)
            assert qdp.result("GetFlowTimeout") == 10
            assert qdp.result("ListPortMACTable", 0, 3) == macs

    def test_what_is_restored_can_be_changed_again(self, host, qdp):
        snapshot = host.snapshot()
        host.restore(snapshot)
        qdp.result("SetFlowTimeout", 7)
        host.restore(snapshot)
        assert qdp.result("GetFlowTimeout") == 10

    def test_the_clock_comes_back(self, host, qdp):
        host.freeze()
        snapshot, before = host.snapshot(), qdp.result("GetPortStats", 0, 0)
        host.advance(100)
        assert qdp.result("GetPortStats", 0, 0) != before
        host.restore(snapshot)
        assert qdp.result("GetPortStats", 0, 0) == before

    def test_a_clock_that_was_stopped_meanwhile_runs_again(self, host, qdp):
        snapshot = host.snapshot()
        host.freeze()
        host.restore(snapshot)
        before = qdp.result("GetPortStats", 0, 0)["rxPkts"]
        time.sleep(0.1)
        assert qdp.result("GetPortStats", 0, 0)["rxPkts"] > before

    def test_loaded_switches_come_back(self, configured, qdp):
        """The switch state library's own snapshot is part of the state."""
        snapshot = configured.snapshot()
        configured.reset()
        configured.restore(snapshot)
        assert qdp.result("GetSwitchNUMATeam", "dvs-production") is True

    def test_failures_are_not_part_of_it(self, host, qdp):
        snapshot = host.snapshot()
        host.fail("Qdp_Get_Flow_Timeout")
        host.restore(snapshot)
        assert qdp.call("GetFlowTimeout").result is None

    def test_several(self, host, qdp):
        snapshots = []
        for timeout in (5, 6, 7):
            qdp.result("SetFlowTimeout", timeout)
            snapshots.append((timeout, host.snapshot()))
        for timeout, snapshot in snapshots:
            host.restore(snapshot)
            assert qdp.result("GetFlowTimeout") == timeout

    def test_it_is_forgotten_with_its_object(self, host):
        snapshot = host.snapshot()
        number, restore = snapshot.number, host._control.qdp_host_restore
        assert restore(number) == 0
        del snapshot
        assert restore(number) == -1


TESTS = """
import _libqdp  # at the top, before any fixture
import pytest

def test_fresh(qdp_host):
    assert _libqdp.GetFlowTimeout() == 10
    qdp_host.fail("Qdp_Get_Flow_Timeout", times=0)
    assert _libqdp.GetFlowTimeout() is None

def test_fresh_again(qdp_host):
    assert _libqdp.GetFlowTimeout() == 10
"""


MARKED = """
import _libqdp
import pytest

@pytest.mark.scenario({busy!r})
def test_a_file(qdp_host):
    assert [switch["name"] for switch in _libqdp.ListSwitches()] == ["edge"]

def test_the_default_one(qdp_host):
    assert len(_libqdp.ListSwitches()) == 3

@pytest.mark.scenario("mux")
class TestAName:
    def test_of_a_class(self, qdp_host):
        assert qdp_host.scenario()["smartnic"]["muxSwitches"]
"""


class TestFixture:
    def pytest(self, build, folder, *arguments):
        command = [sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider", "-p", "qdp_host.pytest_plugin"]
        return started([*command, *arguments], build, cwd=folder)

    def test_each_test_has_a_fresh_host(self, build, tmp_path):
        (tmp_path / "test_script.py").write_text(TESTS)
        done = self.pytest(build, tmp_path)
        assert (done.returncode, done.stderr) == (0, "") and "2 passed" in done.stdout

    def test_a_marker_chooses_the_scenario(self, build, tmp_path, busy):
        (tmp_path / "test_script.py").write_text(MARKED.format(busy=str(busy)))
        done = self.pytest(build, tmp_path)
        assert (done.returncode, done.stderr) == (0, "") and "3 passed" in done.stdout

    def test_it_loads_the_stand_ins_for_files_that_use_the_fixture(self, build, tmp_path):
        """In every other file the module finds what libraries the machine has."""
        for named_in in ("test_script.py", "conftest.py", "README"):
            folder = tmp_path / named_in.replace(".", "_")
            folder.mkdir()
            (folder / "test_script.py").write_text("import _libqdp\n\ndef test(): pass\n")
            with open(folder / named_in, "a") as file:
                file.write("# with qdp_host\n")
            done = self.pytest(build, folder)
            if named_in != "README":
                assert "1 passed" in done.stdout
        assert done.returncode == 2 and "No module named '_libqdp'" in done.stdout

    def test_an_installed_plugin_may_be_named_too(self, build, root, tmp_path):
        """A setting that a checkout needs does no harm where the plugin is installed."""
        metadata = tmp_path / "libqdp-1.dist-info"
        metadata.mkdir()
        (metadata / "METADATA").write_text("Metadata-Version: 2.1\nName: libqdp\nVersion: 1\n")
        shutil.copy(root / "package" / "debian" / "host" / "entry_points.txt", metadata)
        (tmp_path / "test_script.py").write_text(TESTS)
        path = f"{tmp_path}:{PACKAGES}:{build}"
        for named in (["-p", "qdp_host.pytest_plugin"], []):
            command = [sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider", *named, "test_script.py"]
            done = started(command, build, cwd=tmp_path, variables={"PYTHONPATH": path})
            assert (done.returncode, done.stderr) == (0, "") and "2 passed" in done.stdout, done.stdout
        assert '"qdp_host.pytest_plugin" = "qdp_host.pytest_plugin"' in (root / "pyproject.toml").read_text()

    def test_without_the_plugin_the_module_has_no_libraries(self, build, tmp_path):
        (tmp_path / "test_script.py").write_text(TESTS)
        done = started([sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider"], build, cwd=tmp_path)
        assert done.returncode == 2 and "Error" in done.stdout

    def test_the_marker_is_known(self, build, tmp_path):
        done = self.pytest(build, tmp_path, "--markers")
        assert "@pytest.mark.scenario(name): the scenario, by file or by name" in done.stdout

    def test_the_worked_example(self, build, root):
        done = self.pytest(build, root, "examples/testing")
        assert (done.returncode, done.stderr) == (0, "") and "6 passed" in done.stdout


def test_names():
    assert all(hasattr(qdp_host, name) for name in qdp_host.__all__)
