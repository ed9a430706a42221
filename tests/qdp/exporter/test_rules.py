"""Tests of the rules and of the dashboard: as the tables have them, and as Prometheus reads them."""

import json
import subprocess
import sys

import pytest
from exporting import environment_of

from qdp.exporter import conditions, dashboard, metrics, rules

FILES = "qdp/exporter/files"


def test_files_are_those_of_the_tables(build, root):
    done = subprocess.run(
        [sys.executable, str(root / "script" / "exporter_files.py"), "--check"],
        env=environment_of(build, root),
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        universal_newlines=True,
    )
    assert (done.returncode, done.stdout) == (0, "")


def test_every_condition_has_a_page(root):
    for condition in conditions.CONDITIONS:
        page = (root / "docs" / "runbook" / (condition.alert + ".md")).read_text()
        assert condition.meaning in page and condition.action in page


def test_every_family_has_a_panel_and_every_panel_a_family():
    shown = [panel["title"] for panel in dashboard.dashboard()["panels"] if panel["type"] != "row"]
    families = [metric for metric in metrics.METRICS if metric.name != "qdp_build_info"]
    assert len(shown) == len(families)
    assert all(any(title.startswith(metric.name) for title in shown) for metric in families)


def series(name, **labels):
    pairs = ", ".join('{}="{}"'.format(*each) for each in sorted(dict(labels, instance="h", job="qdp").items()))
    return "%s{%s}" % (name, pairs)


PORT = {"switch": "0", "port": "3"}
RX = dict(PORT, direction="rx", path="fast")

# The alert; series that bring it, with Prometheus' notation of values at each minute; the labels that it carries.
FIRING = [
    ("QdpDown", [(series("qdp_up"), "0x30")], {"job": "qdp"}),
    (
        "QdpCollectorFailing",
        [(series("qdp_collector_success", collector="nic"), "0x30")],
        {"collector": "nic", "job": "qdp"},
    ),
    (
        "QdpPortDrops",
        [
            (series("qdp_port_drops_total", **RX), "0+6060x30"),  # 101 a second
            (series("qdp_port_packets_total", **RX), "0+600000x30"),
        ],
        dict(PORT, direction="rx"),
    ),
    (
        "QdpUplinkErrors",
        [(series("qdp_uplink_errors_total", direction="rx", **PORT), "0+120x30")],
        dict(PORT, direction="rx"),
    ),
    (
        "QdpOffloadTableFull",
        [(series("qdp_offload_flows", **PORT), "91x30"), (series("qdp_offload_flows_limit", **PORT), "100x30")],
        dict(PORT, job="qdp"),
    ),
    (
        "QdpOffloadFailing",
        [
            (series("qdp_offload_calls_total", call="create", result="failed", **PORT), "0+120x30"),
            (series("qdp_offload_calls_total", call="create", result="succeeded", **PORT), "0+1200x30"),
        ],
        PORT,
    ),
    (
        "QdpSlowPathShare",
        [
            (series("qdp_port_packets_total", **dict(RX, path="slow")), "0+120000x30"),  # 2000 a second
            (series("qdp_port_packets_total", **RX), "0+600000x30"),
        ],
        {"switch": "0"},
    ),
    (
        "QdpFlowCacheFailures",
        [(series("qdp_lcore_failures_total", switch="0", lcore="5", kind="key_insert"), "0+120x30")],
        {"switch": "0", "lcore": "5", "kind": "key_insert"},
    ),
    ("QdpExporterTruncated", [(series("qdp_exporter_omitted_series"), "17x30")], {"job": "qdp"}),
]

# What looks similar and brings nothing.
QUIET = [
    (
        "QdpPortDrops",
        [(series("qdp_port_drops_total", **RX), "0+6060x30"), (series("qdp_port_packets_total", **RX), "0+6120000x30")],
    ),
    (
        "QdpPortDrops",
        [(series("qdp_port_drops_total", **RX), "0+5940x30"), (series("qdp_port_packets_total", **RX), "0+6000x30")],
    ),
    (
        "QdpOffloadTableFull",
        [(series("qdp_offload_flows", **PORT), "90x30"), (series("qdp_offload_flows_limit", **PORT), "100x30")],
    ),
    (
        "QdpOffloadTableFull",
        [(series("qdp_offload_flows", **PORT), "0x30"), (series("qdp_offload_flows_limit", **PORT), "0x30")],
    ),
    ("QdpDown", [(series("qdp_up"), "1x30")]),
    (
        "QdpSlowPathShare",
        [
            (series("qdp_port_packets_total", **dict(RX, path="slow")), "0+600x30"),
            (series("qdp_port_packets_total", **RX), "0+600x30"),
        ],
    ),
]


def test_every_condition_is_brought_about():
    assert {alert for alert, _, _ in FIRING} == {condition.alert for condition in conditions.CONDITIONS}


def run_rules(root, tmp_path, alert, values, alerts):
    test = {
        "rule_files": [str(root / FILES / "qdp.rules.yml")],
        "evaluation_interval": "1m",
        "tests": [
            {
                "interval": "1m",
                "input_series": [{"series": name, "values": text} for name, text in values],
                "alert_rule_test": [{"eval_time": "29m", "alertname": alert, "exp_alerts": alerts}],
            }
        ],
    }
    file = tmp_path / "test.yml"
    file.write_text(json.dumps(test))
    done = subprocess.run(
        ["promtool", "test", "rules", str(file)],
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        universal_newlines=True,
    )
    assert done.returncode == 0, done.stdout


@pytest.mark.parametrize("alert, values, labels", FIRING, ids=[each[0] for each in FIRING])
def test_alert_fires(root, tmp_path, alert, values, labels):
    (condition,) = [each for each in conditions.CONDITIONS if each.alert == alert]
    summary = condition.summary
    for label, value in labels.items():
        summary = summary.replace("{{%s}}" % label, value)
    assert "{{" not in summary
    expected = {
        "exp_labels": dict(labels, instance="h", severity=condition.severity),
        "exp_annotations": {
            "summary": summary,
            "description": condition.meaning,
            "runbook_url": rules.RUNBOOK + alert,
        },
    }
    run_rules(root, tmp_path, alert, values, [expected])


@pytest.mark.parametrize("alert, values", QUIET)
def test_alert_does_not_fire(root, tmp_path, alert, values):
    run_rules(root, tmp_path, alert, values, [])


def test_promtool_accepts_the_rules(root):
    done = subprocess.run(
        ["promtool", "check", "rules", str(root / FILES / "qdp.rules.yml")],
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        universal_newlines=True,
    )
    assert done.returncode == 0, done.stdout
