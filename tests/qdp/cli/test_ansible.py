"""The Ansible modules, run by Debian's ansible-core against an embedded host in each module's process."""

import functools
import json
import os
import shutil
import subprocess

import pytest

import qdp_host

pytestmark = pytest.mark.skipif(shutil.which("ansible-playbook") is None, reason="ansible-core is not installed")


@pytest.fixture(scope="module")
def play_in(root, build):
    """Runs tasks on this machine, in a folder; the result of each, by its name."""

    def play_in(folder, *tasks, options=(), variables=()):
        results = folder / "results"
        registered = [dict(each, register="result_{}".format(i), ignore_errors=True) for i, each in enumerate(tasks)]
        content = "{{ [" + ", ".join(each["register"] for each in registered) + "] | to_json }}"
        keep = {"name": "keep", "copy": {"content": content, "dest": str(results)}, "check_mode": False}
        playbook = folder / "play.yml"  # JSON is YAML
        playbook.write_text(json.dumps([{"hosts": "localhost", "gather_facts": False, "tasks": registered + [keep]}]))
        environment = {
            **os.environ,
            "ANSIBLE_LIBRARY": str(root / "ansible"),
            "ANSIBLE_LOCAL_TEMP": str(folder / "local"),
            "ANSIBLE_REMOTE_TEMP": str(folder / "remote"),
            "LC_ALL": "C.UTF-8",
            "LD_LIBRARY_PATH": str(build / "host"),
            "PYTHONPATH": str(build),
            **dict(variables),
        }
        line = ["ansible-playbook", "-i", "localhost,", "-c", "local"]
        line += ["-e", "ansible_python_interpreter=/usr/bin/python3"]
        done = subprocess.run(
            [*line, *options, str(playbook)], env=environment, cwd=folder, text=True, timeout=300,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        )  # fmt: skip
        assert results.exists(), done.stdout
        found = json.loads(results.read_text())
        return {task["name"]: result for task, result in zip(tasks, found)}

    return play_in


@pytest.fixture
def play(play_in, tmp_path):
    """Runs tasks in the test's own folder."""
    return functools.partial(play_in, tmp_path)


def task(name, module, **options):
    return {"name": name, module: options}


CHANGE = [{"path": "flow-timeout", "before": 10, "after": 30}]


# Tasks that fail: their settings, and what is said.
WRONG = {
    "no such setting": ({"nosuch": 1}, "a host has no setting 'nosuch'; it has "),
    "out of range": (
        {"flow-timeout": -1}, "flow-timeout is 0 to 4294967295, not -1; give 0 to 4294967295; nothing was changed"
    ),
}  # fmt: skip


@pytest.fixture(scope="module")
def results(play_in, tmp_path_factory):
    """Of one play, in which each task has a host as it begins."""
    return play_in(
        tmp_path_factory.mktemp("play"),
        task("differs", "qdp_settings", settings={"flow-timeout": 30, "dvs-production/port/3/lro": True}),
        task("is as wanted", "qdp_settings", settings={"flow-timeout": 10}),
        task("as text", "qdp_settings", settings={"flow-timeout": "30", "offload-icmp-echo": "off"}),
        *(task(name, "qdp_settings", settings=settings) for name, (settings, _) in WRONG.items()),
        task("facts", "qdp_facts"),
    )


def test_settings_are_set_and_changes_are_true(results):
    assert (results["differs"]["changed"], results["differs"]["changes"]) == (True, CHANGE)
    assert (results["is as wanted"]["changed"], results["is as wanted"]["changes"]) == (False, [])
    assert results["as text"]["changes"][0] == CHANGE[0]


def test_second_run_on_one_host_changes_nothing(play, build, monkeypatch):
    """Each task is a process of its own; they share a host, as the tasks of a playbook share a machine."""
    monkeypatch.setenv("QDP_HOST_LIBRARIES", str(build / "host"))
    monkeypatch.delenv("QDP_HOST", raising=False)
    wanted = {"flow-timeout": 30, "dvs-production/burst-size": 64, "dvs-production/port/3/lro": False}
    with qdp_host.serving() as host:
        variables = {"QDP_HOST": host.environment()["QDP_HOST"]}
        checked = play(task("checked", "qdp_settings", settings=wanted), options=["--check"], variables=variables)
        results = play(
            task("first", "qdp_settings", settings=wanted),
            task("again", "qdp_settings", settings=wanted),
            task("back", "qdp_settings", settings={"flow-timeout": 10}),
            task("refused", "qdp_settings", settings={"dvs-production/burst-size": 128, "flow-timeout": -1}),
            task("facts", "qdp_facts"),
            variables=variables,
        )
    paths = ["flow-timeout", "dvs-production/burst-size", "dvs-production/port/3/lro"]
    assert checked["checked"]["changed"] and [each["path"] for each in checked["checked"]["changes"]] == paths
    assert results["first"]["changes"] == checked["checked"]["changes"]  # a check changes nothing
    assert (results["again"]["changed"], results["again"]["changes"]) == (False, [])
    assert results["back"]["changes"] == [{"path": "flow-timeout", "before": 30, "after": 10}]
    assert results["refused"]["failed"]
    settings = results["facts"]["ansible_facts"]["qdp"]["settings"]
    assert {path: settings[path] for path in wanted} == {**wanted, "flow-timeout": 10}


def test_check_mode_and_diff(play):
    results = play(
        task("checked", "qdp_settings", settings={"flow-timeout": 30}), options=["--check", "--diff"]
    )
    checked = results["checked"]
    assert (checked["changed"], checked["changes"]) == (True, CHANGE)
    assert checked["diff"] == {"before": {"flow-timeout": 10}, "after": {"flow-timeout": 30}}


@pytest.mark.parametrize("name", WRONG)
def test_failure_says_what_is_wrong(results, name):
    assert results[name]["failed"] and results[name]["msg"].startswith(WRONG[name][1])


def test_facts(results, host):
    import _libqdp

    assert results["facts"]["changed"] is False
    facts = results["facts"]["ansible_facts"]["qdp"]
    assert [switch["name"] for switch in facts["switches"]] == [each["name"] for each in _libqdp.ListSwitches()]
    assert [len(switch["ports"]) for switch in facts["switches"]] == [len(_libqdp.ListPorts(each)) for each in range(3)]
    assert facts["switches"][0]["lcores"] == "0xff" and facts["switches"][0]["alias"] == "dvs-production"
    assert facts["settings"]["flow-timeout"] == _libqdp.GetFlowTimeout()
