"""Tests of the script beside it, on the embedded host. With the package installed, or in a checkout:

    pytest examples/testing
    script/qdp-host run -m pytest -p qdp_host.pytest_plugin examples/testing
"""

import pathlib
import struct
import time
from typing import Any

import pytest

import rx_drops

Host = Any  # qdp_host.EmbeddedHost, which has no type stubs


@pytest.fixture
def host(qdp_host: Host, monkeypatch: pytest.MonkeyPatch) -> Host:
    """The embedded host at a stopped clock, which moves when the script sleeps, and Python's with it."""
    qdp_host.freeze()
    now = 0.0

    def sleep(seconds: float) -> None:
        nonlocal now
        qdp_host.advance(seconds)
        now += seconds

    monkeypatch.setattr(time, "sleep", sleep)
    monkeypatch.setattr(time, "monotonic", lambda: now)
    return qdp_host


@pytest.mark.scenario(pathlib.Path(__file__).with_name("busy.json"))
def test_ports_that_drop_too_much_are_named(host: Host, capsys: pytest.CaptureFixture[str]) -> None:
    """One packet in 10,000 is dropped: of the 2,000,000 a second of the uplink, and of the 1,000 of its neighbour."""
    assert rx_drops.main(["--seconds", "60", "--limit", "1"]) == 1
    assert capsys.readouterr().out == "switch 0, port 0: drops 200.0 packets a second\n"


def test_a_switch_whose_ports_cannot_be_listed_is_told_from_a_quiet_one(
    host: Host, capsys: pytest.CaptureFixture[str]
) -> None:
    host.fail("Qdp_Get_Port_List", status=7, nth=2)
    with host.recording() as calls:
        assert rx_drops.main([]) == 2
    assert capsys.readouterr().err == "rx_drops.py: ListPorts(1): Failed to retrieve list of ports.\n"
    # The ports of the other two switches are looked at none the less, before and after.
    looked_at = [call.arguments[0] for call in calls if call.operation == "Qdp_Get_Port_Stats"]
    assert [looked_at.count(switch) for switch in (0, 1, 2)] == [2 * 36, 8, 2 * 35]


def counters(rx_drops: int) -> bytes:
    """The platform's record of a port's counters: eight words of what it sent, eight of what it received."""
    return struct.pack("<16Q", *[0] * 14, rx_drops, 0)


@pytest.mark.scenario(pathlib.Path(__file__).with_name("busy.json"))
@pytest.mark.parametrize("before, after, code", [(1000, 1060, 0), (1000, 1061, 1), (1000, 60, 0), (1000, 61, 1)])
def test_a_counter_that_begins_anew_is_counted_from_zero(host: Host, before: int, after: int, code: int) -> None:
    """The scenario has two ports; the second one's counter stays as it is."""
    for count in (before, 0, after, 0):
        host.script("Qdp_Get_Port_Stats", outputs=[counters(count)])
    assert rx_drops.main(["--seconds", "60", "--limit", "1"]) == code
