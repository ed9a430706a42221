"""Tests of the conditions on one host; prometheus evaluates the same ones in test_rules.py."""

import re

from qdp.exporter import metrics
from qdp.exporter.conditions import CONDITIONS, Samples, holding

BY_NAME = {condition.alert: condition for condition in CONDITIONS}
PORT = {"switch": "0", "port": "3"}


def traffic(family, value, path="fast", direction="rx", **port):
    return family, (dict(PORT, direction=direction, path=path, **port), value)


def samples(time, *series):
    families = {}
    for name, each in series:
        families.setdefault(name, []).append(each)
    return Samples(families, time)


def drops_of(drops, packets):
    """The ports that the condition finds where these grow within ten seconds."""
    before = samples(100.0, traffic("qdp_port_drops", 50), traffic("qdp_port_packets", 1000))
    after = samples(110.0, traffic("qdp_port_drops", 50 + drops), traffic("qdp_port_packets", 1000 + packets))
    return holding(BY_NAME["QdpPortDrops"], before, after)


def test_drops_need_both_a_rate_and_a_share():
    assert drops_of(1010, 100_000) == [dict(PORT, direction="rx")]
    assert drops_of(1000, 100_000) == []  # 100 a second is not above
    assert drops_of(1010, 1_010_000) == []  # 0.1 % is not above
    assert drops_of(1010, 0) == []  # no share of no packets


def test_paths_are_added_and_directions_are_not():
    before = samples(
        0.0,
        *(
            traffic(family, 0, path, direction)
            for family in ("qdp_port_drops", "qdp_port_packets")
            for path in ("fast", "slow")
            for direction in ("rx", "tx")
        )
    )
    after = samples(
        10.0,
        traffic("qdp_port_drops", 600, "fast", "tx"),
        traffic("qdp_port_drops", 600, "slow", "tx"),
        traffic("qdp_port_drops", 600, "fast", "rx"),
        traffic("qdp_port_packets", 1200, "fast", "tx"),
        traffic("qdp_port_packets", 1200, "fast", "rx"),
    )
    assert holding(BY_NAME["QdpPortDrops"], before, after) == [dict(PORT, direction="tx")]


def test_counter_that_goes_back_tells_nothing():
    assert drops_of(-10, 1000) == []


def offload(flows, limit):
    now = samples(0.0, ("qdp_offload_flows", (PORT, flows)), ("qdp_offload_flows_limit", (PORT, limit)))
    return holding(BY_NAME["QdpOffloadTableFull"], now, now)


def test_offload_table():
    assert offload(90, 100) == []
    assert offload(91, 100) == [PORT]
    assert offload(0, 0) == []


def test_offload_calls_fail():
    def calls(result, value):
        return "qdp_offload_calls", (dict(PORT, call="create", result=result), value)

    before = samples(0.0, calls("failed", 0), calls("succeeded", 0))
    few = samples(10.0, calls("failed", 11), calls("succeeded", 1000))
    many = samples(10.0, calls("failed", 11), calls("succeeded", 100))
    slow = samples(10.0, calls("failed", 10), calls("succeeded", 0))
    assert holding(BY_NAME["QdpOffloadFailing"], before, few) == []
    assert holding(BY_NAME["QdpOffloadFailing"], before, many) == [PORT]
    assert holding(BY_NAME["QdpOffloadFailing"], before, slow) == []


def test_datapath_is_down():
    assert holding(BY_NAME["QdpDown"], *[samples(0.0, ("qdp_up", ({}, 0)))] * 2) == [{}]
    assert holding(BY_NAME["QdpDown"], *[samples(0.0, ("qdp_up", ({}, 1)))] * 2) == []


def test_collector_fails():
    now = samples(
        0.0,
        ("qdp_collector_success", ({"collector": "nic"}, 0)),
        ("qdp_collector_success", ({"collector": "ports"}, 1)),
    )
    assert holding(BY_NAME["QdpCollectorFailing"], now, now) == [{"collector": "nic"}]


def every_series(value):
    """One series for each key of each row, with the label values that the key adds."""
    return {
        metric.name: [
            (
                dict(
                    dict.fromkeys(metric.labels, "x"),
                    **dict(zip(metric.labels[len(metric.labels) - len(added) :], added)),
                ),
                value,
            )
            for added in metric.keys.values() or [()]
        ]
        for metric in metrics.METRICS
    }


def test_every_label_of_a_summary_is_one_that_the_condition_keeps():
    before, after = Samples(every_series(1), 0.0), Samples(every_series(2), 1.0)
    for condition in CONDITIONS:
        labels = {part.split("}}")[0] for part in condition.summary.split("{{")[1:]}
        for expression, _, _ in condition.bounds:
            found = expression.evaluate(before, after)
            assert found, condition.alert
            assert all(labels <= set(dict(each)) for each in found), condition.alert


def test_runbooks_name_commands_that_are_there():
    """With words in capitals for the selectors that the verb wants."""
    from qdp.cli import load

    for condition in CONDITIONS:
        for line in re.findall("`qdp ([^`]+)`", condition.meaning + condition.action):
            name, *words = line.split()
            verb, count = load(name).find(words)
            assert count == 1 or name == "call", line
            needed = [each for each in verb.selectors if each.settings.get("nargs") not in ("?", "*")]
            assert len(needed) <= len(words) - count <= len(verb.selectors), line
