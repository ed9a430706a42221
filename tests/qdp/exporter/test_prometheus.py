"""A real Prometheus on loopback scrapes exporters on embedded hosts with trouble, and its alerts fire and resolve."""

import json
import os
import time
import urllib.parse

import pytest
from exporting import HERE, environment_of, exporting, free_port, prometheus

from qdp.exporter import conditions, dashboard, metrics, rules

pytestmark = pytest.mark.long

TROUBLE = os.path.join(HERE, "trouble.json")
IMPATIENT = rules.text(window="10s", minutes=0)


def test_alerts_fire_and_resolve(build, root, tmp_path):
    """An exporter on a host with trouble; then, at the same address, on a host without."""
    address = "127.0.0.1:{}".format(free_port())
    environment = environment_of(build, root, QDP_HOST_SCENARIO=TROUBLE)
    brought = {("QdpPortDrops", "3"), ("QdpUplinkErrors", "0")}
    with prometheus(tmp_path, [address], rules=IMPATIENT) as server:
        with exporting(environment, listen=address):
            server.wait_for(lambda firing: firing >= brought)
        with exporting(environment_of(build, root), listen=address):
            server.wait_for(lambda firing: not firing & brought)


def test_offload_alerts_fire_and_resolve(build, root, tmp_path):
    file = tmp_path / "misbehaviour"
    file.write_text(
        json.dumps(
            {
                "grow": {"GetFPOUplinkStats": {"numFailedCreateCalls": 5000}},
                "set": {"GetFPOUplinkStatus": {"numFlowsOffloaded": 95, "maxFlowsSupported": 100}},
            }
        )
    )
    brought = {("QdpOffloadFailing", "0"), ("QdpOffloadTableFull", "0")}
    environment = environment_of(build, root, MISBEHAVIOUR=str(file))
    with exporting(environment, command=(os.path.join(HERE, "misbehaving.py"),)) as each:
        with prometheus(tmp_path, [urllib.parse.urlsplit(each.url).netloc], rules=IMPATIENT) as server:
            server.wait_for(lambda firing: firing >= brought)
            file.write_text("{}")
            server.wait_for(lambda firing: not firing & brought)


def test_slow_path_flow_cache_and_truncation_fire_and_resolve(build, root, tmp_path):
    """One lcore of the host without misbehaviour fails to allocate actions, which fires all the time."""
    file = tmp_path / "misbehaviour"
    grown = {"GetPortStats": {"spRxPkts": 10**9}, "GetFlowStats": {"keyInsertFailCount": 1000}}
    file.write_text(json.dumps({"grow": grown}))
    address = "127.0.0.1:{}".format(free_port())
    environment = environment_of(build, root, MISBEHAVIOUR=str(file))
    command = (os.path.join(HERE, "misbehaving.py"),)
    brought = {("QdpSlowPathShare", None), ("QdpFlowCacheFailures", "key_insert"), ("QdpExporterTruncated", None)}
    with prometheus(tmp_path, [address], rules=IMPATIENT) as server:
        with exporting(environment, "--max-series", "700", command=command, listen=address):
            server.wait_for(lambda firing: firing >= brought)
        file.write_text("{}")
        with exporting(environment, command=command, listen=address):
            server.wait_for(lambda firing: not firing & brought)


def test_datapath_down_fires_and_resolves(build, root, tmp_path):
    file = tmp_path / "misbehaviour"
    file.write_text(json.dumps({"fail": ["Qdp_Get_Switch_List", "Qdp_P4I_Stats_Get"]}))
    environment = environment_of(build, root, MISBEHAVIOUR=str(file))
    with exporting(environment, command=(os.path.join(HERE, "misbehaving.py"),)) as each:
        with prometheus(tmp_path, [urllib.parse.urlsplit(each.url).netloc], rules=IMPATIENT) as server:
            server.wait_for(lambda firing: {name for name, _ in firing} >= {"QdpDown", "QdpCollectorFailing"})
            file.write_text("{}")
            server.wait_for(lambda firing: not {name for name, _ in firing} & {"QdpDown", "QdpCollectorFailing"})


def test_each_alert_is_seen_to_fire():
    """Each alert is named by a test of this file."""
    with open(__file__) as file:
        text = file.read()
    assert [each.alert for each in conditions.CONDITIONS if '"{}"'.format(each.alert) not in text] == []


def test_every_query_of_the_dashboard_has_an_answer(build, root, tmp_path):
    """On a host where all collections are on."""
    file = tmp_path / "misbehaviour"
    file.write_text(json.dumps({"collect": True}))
    command = (os.path.join(HERE, "misbehaving.py"),)
    with exporting(environment_of(build, root, MISBEHAVIOUR=str(file)), command=command) as each:
        with prometheus(tmp_path, [urllib.parse.urlsplit(each.url).netloc]) as server:
            time.sleep(12)
            for metric in metrics.METRICS:
                query = dashboard.query(metric, "10s").replace("$instance", ".*")
                assert server.ask("/api/v1/query", query=query)["result"], query
