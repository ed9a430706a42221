"""Readings, their growth, and the rates of all ports."""

import struct
import time

import pytest

import qdp
from qdp.rates import LOW_HALVES, Reading, growth

PORTS = 36 + 8 + 35


@pytest.fixture
def layer(host, monkeypatch):
    """Time stands still but while it is slept."""
    host.freeze()
    now = [100.0]

    def sleep(seconds):
        host.advance(seconds)
        now[0] += seconds

    monkeypatch.setattr(time, "sleep", sleep)
    monkeypatch.setattr(time, "monotonic", lambda: now[0])
    return qdp.Host()


@pytest.mark.parametrize(
    "old, new, bits, grown",
    [
        (5, 7, 64, 2),
        (5, 5, 64, 0),
        (2**63 - 1, -(2**63) + 1, 64, 2),  # shown signed
        (-1, 1, 64, 2),  # it wraps
        (2**64 - 1, 1, 64, 2),  # shown unsigned
        (5, 4, 64, None),
        (10**12, 0, 64, None),  # it was set to zero
        (0xFFFFFFFF, 3, 32, 4),
        (0xFFFFFFFF, 3, 64, None),
        (3, 2, 32, None),
        (0, 2**31 - 1, 32, 2**31 - 1),
        (0, 2**31, 32, None),
    ],
)
def test_growth(old, new, bits, grown):
    assert growth(old, new, bits) == grown


def readings(monkeypatch, *timed):
    made = []
    for moment, values in timed:
        monkeypatch.setattr(time, "monotonic", lambda moment=moment: moment)
        made.append(Reading(values))
    return made


def test_counters_are_unsigned():
    reading = Reading({"a": -1, "b": -(2**63), "c": 7, "name": "text"})
    assert {key: reading[key] for key in reading} == {"a": 2**64 - 1, "b": 2**63, "c": 7}
    assert "name" not in reading and len(reading) == 3 and reading.keys() == ["a", "b", "c"]
    assert Reading([("rxPkts", -2)])["rxPkts"] == 2**64 - 2
    assert Reading({"a": 2**32 + 5}, bits=32)["a"] == 5


def test_rate_is_of_all_counters_and_by_the_time_between(monkeypatch):
    old, new = readings(monkeypatch, (10.0, {"a": 100, "b": -1, "c": 7}), (12.5, {"a": 150, "b": 24, "c": 9}))
    assert new.growth(old, "a", "b") == 75
    assert new.rate(old, "a", "b") == 30.0
    assert new.rate(old, "c") == 0.8


def test_there_is_no_rate_when_a_counter_was_set_back_or_no_time_has_passed(monkeypatch):
    old, new = readings(monkeypatch, (0.0, {"a": 100, "b": 5}), (1.0, {"a": 150, "b": 4}))
    assert new.growth(old, "a", "b") is None and new.rate(old, "a", "b") is None
    assert new.rate(old, "a") == 50.0
    assert Reading({"a": 5}).rate(Reading({"a": 5}), "a") is None


def test_width_of_a_counter_follows_from_its_record(host):
    """GetFlowStats gives the low halves of its counters, GetFPOStats those of some."""
    flow, fpo = qdp.methods.GetFlowStats(0, (0,), 0)[0], qdp.methods.GetFPOStats(0, (0,))[0]
    assert {key for key in Reading(flow) if Reading(flow).bits(key) == 64} == {"lcoreID", "numFlows", "numModel2Flows"}
    assert [key for key in Reading(fpo) if Reading(fpo).bits(key) == 64] == [
        "lcoreID",
        "ctHWPktQueued",
        "ctPktsInjectedtoHW",
        "ctPktsContinuedInSW",
        "ctHwContextFailed",
    ]
    for name, keys in LOW_HALVES.items():
        assert keys < set(getattr(qdp.records, name).__annotations__)
    flow.hits = 0xFFFFFFF0
    before = Reading(flow)
    flow.hits = 0x10
    assert Reading(flow).growth(before, "hits") == 0x20


def test_rates_of_all_ports(layer):
    """Port 5 of the second switch sends 1,185 packets a second, counted by hand as 1000 + 37 * 5."""
    samples = list(layer.rates(every=4, count=3))
    assert [sample.number for sample in samples] == [1, 2, 3]
    for sample in samples:
        assert len(sample.ports) == PORTS and sample.failures == []
        (rates,) = [each for each in sample.ports if each.port.path == "dvs-storage/port/5"]
        assert rates["txPkts"] == rates.rate("txPkts") == 1185.0
        assert rates["txBytes"] == 1185.0 * (64 + 17 * 5)
        assert rates.rate("txPkts", "rxPkts") == 1185.0 + 1500 + 53 * 5
        assert all(each[key] >= 0 for each in sample.ports for key in each.keys())


def counters(tx_bytes):
    """A record in which one counter has counted something."""
    return struct.pack("<16Q", tx_bytes, *[0] * 15)


def test_counter_that_wraps_and_one_that_is_set_back(layer, host):
    first, second = [2**64 - 100, 5000, 2**63 - 10], [150, 0, 2**63 + 30]
    for values in (first, second):
        for value in values + [0] * (PORTS - 3):
            host.script("Qdp_Get_Port_Stats", outputs=[counters(value)])
            host.script("Qdp_Get_Port_Stats_Slowpath", outputs=[counters(0)])
    (sample,) = layer.rates(every=10, count=1)
    assert [rates["txBytes"] for rates in sample.ports[:4]] == [25.0, None, 4.0, 0.0]


def test_port_that_cannot_be_read_is_left_out_and_named(layer, host):
    host.fail("Qdp_Get_Port_Stats", nth=PORTS + 4)
    sample, after = layer.rates(every=1, count=2)
    assert len(sample.ports) == len(after.ports) == PORTS - 1
    assert [str(failure) for failure in sample.failures] == ["GetPortStats(0, 3): Failed to retrieve port stats."]
    assert after.failures == []


def test_switch_whose_ports_cannot_be_listed_is_named(layer, host):
    host.fail("Qdp_Get_Port_List", nth=3 + 2)
    (sample,) = layer.rates(every=1, count=1)
    assert [str(failure) for failure in sample.failures] == ["ListPorts(1): Failed to retrieve list of ports."]
    assert len(sample.ports) == PORTS - 8


def test_first_reading_that_fails_is_named(layer, host):
    host.fail("Qdp_Get_Switch_List")
    first, second = layer.rates(every=1, count=2)
    assert (first.ports, [str(failure) for failure in first.failures]) == (
        [],
        ["ListSwitches(): Failed to retrieve list of switches."],
    )
    assert len(second.ports) == PORTS and second.failures == []


def test_rates_of_some_switches(layer, host):
    with host.recording() as calls:
        (sample,) = layer.rates(every=1, count=1, switches=[1])
    assert {rates.port.switch.number for rates in sample.ports} == {1} and len(sample.ports) == 8
    assert {call.arguments[0] for call in calls if call.operation == "Qdp_Get_Port_Stats"} == {1}


def test_samples_do_not_drift(layer, monkeypatch):
    """What the reading takes, here half a second each, is not waited for again."""
    waits, pass_time, list_switches = [], time.sleep, layer.switches

    def slow():
        pass_time(0.5)
        return list_switches()

    def sleep(seconds):
        waits.append(round(seconds, 6))
        pass_time(seconds)

    monkeypatch.setattr(layer, "switches", slow)
    monkeypatch.setattr(time, "sleep", sleep)
    assert len(list(layer.rates(every=3, count=3))) == 3
    assert waits == [2.5, 2.5, 2.5]


@pytest.mark.parametrize("every", [0, -1, float("nan"), 86401])
def test_interval_that_is_none_is_refused_at_once(layer, host, every):
    with host.recording() as calls, pytest.raises(qdp.InvalidArgument, match="every is more than 0"):
        layer.rates(every=every)
    assert calls == []
