"""Tests of the text of series, and of counters that are shown narrower than they are."""

import pytest

from qdp.exporter import metrics, render


def lines_of(series):
    families, _ = series.taken()
    return families


@pytest.mark.parametrize(
    "shown, reported",
    [
        ([5, 7, 7], [5, 7, 7]),
        ([2**32 - 1, 0, 3], [2**32 - 1, 2**32, 2**32 + 3]),  # past its end
        ([2**32 - 10, 5, 2**32 - 20], [2**32 - 10, 2**32 + 5, 2**32 + 5 + 2**32 - 20]),
        ([3_000_000_000, 3_000_000_010], [3_000_000_000, 3_000_000_010]),  # its first value is no reset
        ([1000, 10, 12], [1000, 1010, 1012]),  # began anew
        ([1000, 0, 0, 4], [1000, 1000, 1000, 1004]),
    ],
)
def test_wide_counter_never_goes_back(shown, reported):
    wide = render.Wide(32)
    assert [wide(each) for each in shown] == reported


def flow_stats(**values):
    keys = {key for metric in metrics.of_method("GetFlowStats") for key in metric.keys}
    return dict(dict.fromkeys(keys, 0), **values)


def test_counter_of_a_thing_that_a_failed_sweep_missed_counts_on():
    series = render.Series()
    series.add("GetFlowStats", ("0", "1"), flow_stats(miss=2**32 - 1))
    series.end_sweep(is_complete=True)
    series.taken()
    series.end_sweep(is_complete=False)  # the lcore was not answered for
    series.add("GetFlowStats", ("0", "1"), flow_stats(miss=1))
    assert lines_of(series)["qdp_lcore_lookup_misses"] == (
        'qdp_lcore_lookup_misses_total{switch="0",lcore="1"} %d\n' % (2**32 + 1)
    )


def test_counter_of_a_thing_that_is_gone_begins_anew():
    series = render.Series()
    series.add("GetFlowStats", ("0", "1"), flow_stats(miss=2**32 - 1))
    series.end_sweep(is_complete=True)
    series.taken()
    series.end_sweep(is_complete=True)  # the lcore is gone
    series.add("GetFlowStats", ("0", "1"), flow_stats(miss=1))
    assert lines_of(series)["qdp_lcore_lookup_misses"] == 'qdp_lcore_lookup_misses_total{switch="0",lcore="1"} 1\n'


def test_state_carries_counters_into_the_next_process():
    first, second = render.Series(), render.Series()
    first.add("GetFlowStats", ("0", "1"), flow_stats(hits=2**32 - 2))
    first.end_sweep(is_complete=True)
    second.restore(first.state())
    second.add("GetFlowStats", ("0", "1"), flow_stats(hits=7))
    assert 'qdp_lcore_lookup_hits_total{switch="0",lcore="1",source="cache"} %d\n' % (2**32 + 7) in lines_of(second)[
        "qdp_lcore_lookup_hits"
    ]


def test_counters_shown_negative_are_reported_unsigned():
    series = render.Series()
    answer = {key: -1 for metric in metrics.of_method("P4IStatsGet") for key in metric.keys}
    series.add("P4IStatsGet", (), answer)
    assert lines_of(series)["qdp_nic_ingress_packets"] == "".join(
        'qdp_nic_ingress_packets_total{source="%s"} 18446744073709551615\n' % source
        for source in ("host", "switch", "cpu")
    )


def test_labels_are_escaped():
    assert render.labelled("m", ("name",), ('a "b"\\\n',)) == 'm{name="a \\"b\\"\\\\\\n"} '


def test_heads_of_the_two_forms():
    families = {"qdp_switch_mtu_bytes": "x\n", "qdp_port_bytes": "y\n"}
    assert render.page(families, is_openmetrics=False) == (
        "# HELP qdp_switch_mtu_bytes Largest packet that a switch forwards.\n# TYPE qdp_switch_mtu_bytes gauge\nx\n"
        "# HELP qdp_port_bytes_total Bytes that a port has sent (tx) or received (rx), on the fast and on the slow "
        "path.\n"
        "# TYPE qdp_port_bytes_total counter\ny\n"
    )
    assert "# TYPE qdp_port_bytes counter\n# UNIT qdp_port_bytes bytes\ny\n" in render.page(
        families, is_openmetrics=True
    )
