"""Uses of qdp_host as a test of a script makes them. Type checkers read this; it is never run."""

import pathlib
from typing import Dict, Iterator, List, Optional

import pytest

import _libqdp
import qdp_host
from qdp_host import Call, Capacity, EmbeddedHost, HostError, NullBuffer, Snapshot


def test_two_processes() -> None:
    with qdp_host.serving("mux") as host:
        host.delay("Qdp_Get_Port_List", 0.5)
        environment: Dict[str, str] = host.environment()
        assert environment[qdp_host.VARIABLE] == host.socket and host.uptime() > 3600


@pytest.fixture
def stopped(qdp_host: EmbeddedHost) -> Iterator[EmbeddedHost]:
    qdp_host.freeze()
    yield qdp_host


def test_a_minute(stopped: EmbeddedHost) -> None:
    before: Snapshot = stopped.snapshot()
    stopped.advance(seconds=60)
    stopped.advance(0.5)
    stopped.restore(before)


def test_failures_and_delays(stopped: EmbeddedHost) -> None:
    stopped.fail("Qdp_Get_Port_List", status=7, nth=2, times=0)
    stopped.delay("Qdp_Get_Port_List", 0.001)
    assert _libqdp.ListPorts(0) is None


def test_scripted_answers(stopped: EmbeddedHost) -> None:
    records: List[bytes] = [bytes(128)]
    reported: Dict[int, int] = {0: 4}
    stopped.script("Qdp_Get_Port_Stats", outputs=records, sizes=reported)
    stopped.script("Qdp_Get_Port_Stats", 3, [None, bytearray(4)])
    stopped.script("DVSData_Name", text=b"mtu")


def sizes(host: EmbeddedHost) -> Iterator[int]:
    """The room that the callers gave."""
    with host.recording() as calls:
        _libqdp.GetPortStats(0, 5)
    for call in calls:
        for argument in call.arguments:
            if isinstance(argument, (Capacity, NullBuffer)):
                yield argument.size


def first_answer(calls: List[Call]) -> Optional[bytes]:
    name: str = calls[0].operation
    return calls[0].outputs[0] if name.startswith("Qdp_") and calls[0].result == 0 else None


def other_hosts(capture: pathlib.Path) -> List[str]:
    try:
        with qdp_host.running({"switches": [{"alias": "edge"}]}) as host:
            host.load("mux")
            host.load(capture.with_suffix(".json"))
            host.replay(capture)
            host.replay(None)
            aliases = [str(switch["alias"]) for switch in host.scenario()["switches"]]
            return aliases + host.operations() + [host.version(), str(host.summary()["switches"])]
    except HostError as error:
        return [str(error)]


def keys_of_flows(lcore: int) -> List[str]:
    page = _libqdp.DumpFlowTable(0, lcore, 0, 0, 0, "", 0, "", 4, "10.0.0.1", 0, "", 0, 0, 0, 0, 0)
    return [flow["key"] for flow in page["list"]] if page is not None else []
