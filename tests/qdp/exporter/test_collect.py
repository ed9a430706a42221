"""Tests of what the exporter reads, on the embedded host: which series, from which calls, and that nothing is
written."""

import gc
import re
import sys

import pytest

import _libqdp
from qdp.exporter import collect, metrics, render, values

# The operations that the exporter may reach. None sets, clears, creates or enables anything.
OPERATIONS = {
    "Qdp_AdvStatsGetCounters",
    "Qdp_AdvStatsGetEnabled",
    "Qdp_DumpLBStats",
    "Qdp_Get_Flow_Stats",
    "Qdp_Get_FPO_Uplink_Stats",
    "Qdp_Get_FPO_Uplink_Status",
    "Qdp_Get_Port_List",
    "Qdp_Get_Port_Stats",
    "Qdp_Get_Port_Stats_Slowpath",
    "Qdp_Get_Switch_List",
    "Qdp_Get_Uplink_Priv_Stats",
    "Qdp_Get_Uplink_Priv_Stats_Len",
    "Qdp_Get_Uplink_Stats",
    "Qdp_P4AppGet",
    "Qdp_P4E_Stats_Get",
    "Qdp_P4I_Stats_Get",
    "Qdp_P4UKLatencyDump",
}


def sweep(options=None, platform=None, series=None):
    """(frames by collector, the sweep)."""
    each = collect.Sweep(platform or collect.Platform(), series or render.Series(), options or collect.Options())
    return {frame[0]: frame for frame in each.read()}, each


def families(options=None):
    found = {}
    for frame in sweep(options)[0].values():
        found.update(frame[1])
    return found


def series_of(text):
    return dict(line.rsplit(" ", 1) for line in text.splitlines())


def test_sweep_reads_and_never_writes(host):
    with host.recording() as calls:
        sweep()
    # The reasons of the slow path are not being collected on the default host.
    assert {call.operation for call in calls} == OPERATIONS - {"Qdp_AdvStatsGetCounters"}


def test_sweep_leaves_the_host_as_it_was(host):
    host.freeze()
    before = host.scenario()
    sweep()
    assert host.scenario() == before


def test_platform_refuses_other_methods(host):
    with pytest.raises(AssertionError):
        collect.Platform().ask("ClearSwitchFlowTable", 0)


def test_port_series_are_the_counters_of_the_module(host):
    host.freeze()
    stats = _libqdp.GetPortStats(0, 3)
    found = families()
    expected = {
        'qdp_port_{}_total{{switch="0",port="3",direction="{}",path="{}"}}'.format(family, direction, path): str(
            stats[("sp" if path == "slow" else "") + (direction if path == "fast" else direction.capitalize()) + ending]
        )
        for family, ending in [("packets", "Pkts"), ("bytes", "Bytes"), ("drops", "Drops"), ("errors", "Errors")]
        for direction in ("tx", "rx")
        for path in ("fast", "slow")
    }
    shown = {}
    for family in ("packets", "bytes", "drops", "errors"):
        shown.update(series_of(found["qdp_port_" + family]))
    assert {name: value for name, value in shown.items() if 'switch="0",port="3"' in name} == expected


def test_switch_series(host):
    found = families()
    for switch in _libqdp.ListSwitches():
        number = switch["swID"]
        assert 'qdp_switch_info{switch="%d",name="%s"} 1\n' % (number, switch["name"]) in found["qdp_switch_info"]
        assert 'qdp_switch_mtu_bytes{switch="%d"} %d\n' % (number, switch["mtu"]) in found["qdp_switch_mtu_bytes"]
        assert 'qdp_switch_lcores{switch="%d"} %d\n' % (number, switch["numLcores"]) in found["qdp_switch_lcores"]


def test_every_lcore_of_every_switch_is_asked_for(host):
    wanted = {
        'qdp_lcore_flows{switch="%d",lcore="%d"}' % (switch["swID"], lcore)
        for switch in _libqdp.ListSwitches()
        for lcore in range(64)
        if switch["lcores"] >> lcore & 1
    }
    assert set(series_of(families()["qdp_lcore_flows"])) == wanted


def test_uplink_series(host):
    host.freeze()
    counters = dict(_libqdp.GetUplinkStats(0, 0)["uplinkStats"])
    found = families()
    assert 'qdp_uplink_drops_total{switch="0",port="0",direction="rx"} %d\n' % counters["rxDrops"] in found[
        "qdp_uplink_drops"
    ]
    kinds = series_of(found["qdp_uplink_errors_by_kind"])
    assert kinds['qdp_uplink_errors_by_kind_total{switch="0",port="0",kind="rx_miss"}'] == str(counters["rxMissErrors"])
    assert len([name for name in kinds if 'switch="0",port="0"' in name]) == 12


def test_offload_series(host):
    host.freeze()
    status, stats = _libqdp.GetFPOUplinkStatus(0, 1), _libqdp.GetFPOUplinkStats(0, 1)
    found = families()
    assert 'qdp_offload_flows{switch="0",port="1"} %d\n' % status["numFlowsOffloaded"] in found["qdp_offload_flows"]
    calls = series_of(found["qdp_offload_calls"])
    assert calls['qdp_offload_calls_total{switch="0",port="1",call="bulk_res_alloc",result="failed"}'] == str(
        stats["numFailedBulkResAllocCalls"]
    )
    # Every counter of calls of the answer has a series.
    counted = [key for key in stats if re.match("num(Succeeded|Failed).*Calls$", key)]
    assert len([name for name in calls if 'switch="0",port="1"' in name]) == len(counted)


def test_balancer_is_asked_for_contexts_alone(host):
    with host.recording() as calls:
        sweep()
    assert all(len(call.arguments) for call in calls)
    found = families()
    contexts = series_of(found["qdp_balancer_context_packets"])
    assert len(contexts) == sum(switch["numLcores"] for switch in _libqdp.ListSwitches())


def test_slow_path_reasons_only_where_they_are_collected(host):
    assert "qdp_slowpath_reasons" not in families()
    _libqdp.AdvStatsSetEnabled(0, 1)
    host.freeze()
    host.advance(60)
    counters = _libqdp.AdvStatsGetCounters(0, 0, "")
    reasons = series_of(families()["qdp_slowpath_reasons"])
    assert len(reasons) == 16
    assert reasons['qdp_slowpath_reasons_total{switch="0",reason="vlan_tf"}'] == str(counters["spReaonVlanTF"])


def test_latency_is_a_histogram_where_it_is_collected(host):
    name = "qdp_nic_programming_latency_seconds"
    assert name not in families()
    _libqdp.P4UKLatencySet(1)
    host.freeze()
    host.advance(100)
    histogram = _libqdp.P4UKLatencyDump(0)
    found = series_of(families()[name])
    assert len(found) == 23
    assert found[name + '_bucket{le="0.0001"}'] == str(histogram["100us"])
    assert found[name + '_bucket{le="0.0003"}'] == str(histogram["100us"] + histogram["200us"] + histogram["300us"])
    assert found[name + '_bucket{le="+Inf"}'] == found[name + "_count"] == str(histogram["totalSample"])
    assert float(found[name + "_sum"]) == pytest.approx(histogram["totalTime"] / 1e6)


def test_ports_by_default_are_vnics_and_uplinks(host):
    ports = {
        (str(switch["swID"]), str(port["portID"]), port["clientType"])
        for switch in _libqdp.ListSwitches()
        for port in _libqdp.ListPorts(switch["swID"])
    }
    shown = set(re.findall(r'switch="(\d+)",port="(\d+)",client_type="(.*?)"', families()["qdp_port_info"]))
    assert shown == {port for port in ports if port[2] in ("VNIC", "VNIC.PT", "UPLINK")}
    assert shown < ports


def test_include_and_exclude(host):
    options = collect.Options(include=r"^dvs-storage/", exclude=r"/7/")
    shown = re.findall(r'switch="(\d+)",port="(\d+)"', families(options)["qdp_port_info"])
    assert set(shown) == {("1", str(port)) for port in range(7)}


def test_series_are_bounded_and_uplinks_come_first(host):
    _, unbounded = sweep()
    others = unbounded._count - len(unbounded._ports) * collect.SERIES_OF_A_PORT
    frames, bounded = sweep(collect.Options(max_series=others + 7 * collect.SERIES_OF_A_PORT + 5))
    shown = re.findall(r'client_type="(.*?)"', frames["ports"][1]["qdp_port_info"])
    assert shown == ["UPLINK"] * 6 + ["VNIC"]
    assert bounded._count == others + 7 * collect.SERIES_OF_A_PORT
    assert bounded.omitted == (len(unbounded._ports) - 7) * collect.SERIES_OF_A_PORT
    assert unbounded.omitted == 0


def test_failed_call_is_counted_and_the_rest_is_read(host):
    platform = collect.Platform()
    host.fail("Qdp_Get_Port_Stats", nth=2)
    frames, each = sweep(platform=platform)
    _, found, _, answered, failed = frames["ports"]
    assert (answered, failed) == (len(each._ports) - 1, 1)
    assert platform.failures["GetPortStats"] == 1
    assert found["qdp_port_info"].count("\n") == len(each._ports)


def test_refused_switch_list_reads_nothing_of_switches(host):
    host.fail("Qdp_Get_Switch_List")
    frames, _ = sweep()
    assert {name: frame[1] for name, frame in frames.items() if name in ("switches", "lcores", "ports")} == {
        "switches": {},
        "lcores": {},
        "ports": {},
    }
    assert frames["switches"][3:] == (0, 1)


def test_all_families_of_the_table_are_read_on_a_host_that_has_all(host):
    _libqdp.AdvStatsSetEnabled(0, 1)
    _libqdp.P4UKLatencySet(1)
    host.freeze()
    host.advance(10)
    about_the_exporter = {
        name for name in metrics.BY_NAME if not name.startswith(("qdp_switch", "qdp_port", "qdp_nic"))
    }
    own = {name for name in about_the_exporter if not metrics.BY_NAME[name].method}
    assert set(families()) == set(metrics.BY_NAME) - own


def test_values_are_those_of_the_text(host):
    host.freeze()
    found = families()
    numbers = values.read().families
    for name in ("qdp_port_packets", "qdp_lcore_lookup_misses", "qdp_offload_calls", "qdp_switch_mtu_bytes"):
        metric = metrics.BY_NAME[name]
        text = "".join(
            render.labelled(metrics.sample_name(metric), labels, labels.values()) + "%d\n" % value
            for labels, value in numbers[name]
        )
        assert sorted(text.splitlines()) == sorted(found[name].splitlines())


@pytest.mark.parametrize("sweeps", [100, pytest.param(3000, marks=pytest.mark.long)])
def test_sweeps_keep_nothing(host, sweeps):
    host.freeze()
    series = render.Series()

    def read():
        list(collect.Sweep(collect.Platform(), series, collect.Options()).read())

    for _ in range(3):
        read()
    gc.collect()
    before = sys.getallocatedblocks()
    for _ in range(sweeps):
        read()
    gc.collect()
    assert sys.getallocatedblocks() - before < 100
