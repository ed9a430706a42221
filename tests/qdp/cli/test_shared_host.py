"""Commands that share one host, each in a process of its own."""

import json
import subprocess
import sys

import pytest

import qdp_host


@pytest.fixture
def shared(build, monkeypatch):
    monkeypatch.setenv("QDP_HOST_LIBRARIES", str(build / "host"))
    monkeypatch.delenv(qdp_host.VARIABLE, raising=False)
    with qdp_host.serving() as host:
        yield host


@pytest.fixture
def qdp(shared, root):
    def qdp(*arguments):
        done = subprocess.run(
            [sys.executable, str(root / "script" / "qdp_command.py"), *arguments], env=shared.environment(),
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=120,
        )  # fmt: skip
        return done.returncode, done.stdout, done.stderr

    return qdp


def test_one_command_shows_what_another_one_set(qdp):
    change = "setting                    before  after\ndvs-production/burst-size  32      64\n"
    assert qdp("setting", "set", "dvs-production/burst-size", "64", "--yes") == (0, change, "")
    status, out, _ = qdp("setting", "show", "dvs-production/burst-size", "-j")
    assert (status, json.loads(out)[0]["value"]) == (0, 64)
    assert qdp("setting", "set", "dvs-production/burst-size", "64", "--yes")[0] == 0


def test_rates_are_those_of_one_clock(qdp, shared):
    shared.freeze()
    counters = []
    for _ in range(2):
        status, out, _ = qdp("port", "stats", "0", "-j")
        assert status == 0
        counters.append(json.loads(out)[0]["rxPkts"])
        shared.advance(10)
    assert counters[1] - counters[0] == 15000  # 1,500 packets a second


def test_failures_of_the_host_are_those_of_the_command(qdp, shared):
    shared.fail("Qdp_Get_Port_List", status=7, times=0)
    status, out, error = qdp("port", "show", "0")
    assert status != 0 and "Failed to retrieve list of ports." in error
    assert shared.unreleased_values() == 0
