"""A real Prometheus on loopback scrapes exporters on embedded hosts with trouble, and its alerts fire and resolve."""

import contextlib
import json
import os
import socket
import subprocess
import time
import urllib.parse
import urllib.request

import pytest
from exporting import HERE, environment_of, exporting

from qdp.exporter import dashboard, metrics, rules

pytestmark = pytest.mark.long

SECONDS = 60  # at most, until an alert fires or resolves


def free_port():
    with socket.socket() as each:
        each.bind(("127.0.0.1", 0))
        return each.getsockname()[1]


class Prometheus:
    def __init__(self, url):
        self.url = url

    def ask(self, path, **parameters):
        with urllib.request.urlopen(self.url + path + "?" + urllib.parse.urlencode(parameters), timeout=10) as answer:
            return json.load(answer)["data"]

    def firing(self):
        """{(alert, port)} of what fires."""
        return {
            (alert["labels"]["alertname"], alert["labels"].get("port"))
            for alert in self.ask("/api/v1/alerts")["alerts"]
            if alert["state"] == "firing"
        }

    def wait_for(self, wanted):
        deadline = time.monotonic() + SECONDS
        while time.monotonic() < deadline:
            if wanted(self.firing()):
                return
            time.sleep(0.5)
        raise AssertionError("after {} s these fire: {}".format(SECONDS, self.firing()))


@contextlib.contextmanager
def prometheus(folder, targets):
    """A Prometheus that scrapes these each second, with the rules for those who cannot wait."""
    (folder / "qdp.rules.yml").write_text(rules.text(window="10s", minutes=0))
    (folder / "prometheus.yml").write_text(
        json.dumps(
            {
                "global": {"scrape_interval": "1s", "scrape_timeout": "1s", "evaluation_interval": "1s"},
                "rule_files": ["qdp.rules.yml"],
                "scrape_configs": [{"job_name": "qdp", "static_configs": [{"targets": targets}]}],
            }
        )
    )
    port = free_port()
    with open(str(folder / "prometheus.log"), "w") as log:
        process = subprocess.Popen(
            [
                "prometheus",
                "--config.file=prometheus.yml",
                "--storage.tsdb.path=data",
                "--web.listen-address=127.0.0.1:{}".format(port),
            ],
            cwd=str(folder),
            stdout=log,
            stderr=log,
        )
    try:
        each = Prometheus("http://127.0.0.1:{}".format(port))
        deadline = time.monotonic() + SECONDS
        while True:
            try:
                urllib.request.urlopen(each.url + "/-/ready", timeout=5).close()
                break
            except OSError:
                assert time.monotonic() < deadline and process.poll() is None, (folder / "prometheus.log").read_text()
                time.sleep(0.2)
        yield each
    finally:
        process.terminate()
        process.wait(20)


def test_alerts_fire_and_resolve(build, root, tmp_path):
    """An exporter on a host with trouble; then, at the same address, on a host without."""
    address = "127.0.0.1:{}".format(free_port())
    environment = environment_of(build, root, QDP_HOST_SCENARIO=os.path.join(HERE, "trouble.json"))
    brought = {("QdpPortDrops", "3"), ("QdpOffloadFailing", "0"), ("QdpOffloadTableFull", "0"), ("QdpUplinkErrors", "0")}
    with prometheus(tmp_path, [address]) as server:
        with exporting(environment, listen=address):
            server.wait_for(lambda firing: firing >= brought)
        with exporting(environment_of(build, root), listen=address):
            server.wait_for(lambda firing: not firing & brought)


def test_datapath_down_fires_and_resolves(build, root, tmp_path):
    file = tmp_path / "misbehaviour"
    file.write_text(json.dumps({"fail": ["Qdp_Get_Switch_List", "Qdp_P4I_Stats_Get"]}))
    environment = environment_of(build, root, MISBEHAVIOUR=str(file))
    with exporting(environment, command=(os.path.join(HERE, "misbehaving.py"),)) as each:
        with prometheus(tmp_path, [urllib.parse.urlsplit(each.url).netloc]) as server:
            server.wait_for(lambda firing: {name for name, _ in firing} >= {"QdpDown", "QdpCollectorFailing"})
            file.write_text("{}")
            server.wait_for(lambda firing: not {name for name, _ in firing} & {"QdpDown", "QdpCollectorFailing"})


def test_every_query_of_the_dashboard_has_an_answer(build, root, tmp_path):
    environment = environment_of(build, root, QDP_HOST_SCENARIO=os.path.join(HERE, "trouble.json"))
    with exporting(environment) as each, prometheus(tmp_path, [urllib.parse.urlsplit(each.url).netloc]) as server:
        time.sleep(12)
        for metric in metrics.METRICS:
            query = dashboard.query(metric, "10s").replace("$instance", ".*")
            assert server.ask("/api/v1/query", query=query)["result"], query
