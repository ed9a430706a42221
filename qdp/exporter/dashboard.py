"""The dashboard for Grafana, made from the table of metrics: a panel a family, in the order of the table."""

import json

from . import metrics

COLUMNS, WIDTH, HEIGHT = 3, 8, 8  # panels beside each other, and their size on a grid of 24 columns
RATE_WINDOW = "$__rate_interval"
DATASOURCE = {"type": "prometheus", "uid": "${datasource}"}

# The rows of the dashboard: title, and what its families are about: the first word of their names behind "qdp_".
SECTIONS = (
    ("Exporter", ("up", "collector", "call", "reader", "exporter")),
    ("Switches", ("switch",)),
    ("Lcores", ("lcore",)),
    ("Load balancer", ("balancer",)),
    ("Uplinks", ("uplink",)),
    ("Offload", ("offload",)),
    ("Slow path", ("slowpath",)),
    ("SmartNIC", ("nic",)),
    ("Ports", ("port",)),
)
_UNITS = {"bytes": "bytes", "seconds": "s", "ratio": "percentunit", "": "short"}


def query(metric, window=RATE_WINDOW):
    """What a panel shows of a family."""
    selector = '{instance=~"$instance"}'
    if metric.type == metrics.COUNTER:
        return "rate({}{}[{}])".format(metrics.sample_name(metric), selector, window)
    if metric.type == metrics.HISTOGRAM:
        return "histogram_quantile(0.99, sum by (le, instance) (rate({}_bucket{}[{}])))".format(
            metric.name, selector, window
        )
    return metric.name + selector


def _panel(number, metric, x, y):
    is_rate = metric.type == metrics.COUNTER
    unit = _UNITS[metric.unit]
    return {
        "id": number,
        "type": "timeseries",
        "title": metric.name
        + (" a second" if is_rate else ", 99th percentile" if metric.type == metrics.HISTOGRAM else ""),
        "description": metric.help,
        "datasource": DATASOURCE,
        "gridPos": _place(x, y, WIDTH, HEIGHT),
        "fieldConfig": {"defaults": {"unit": {"bytes": "Bps", "short": "cps"}[unit] if is_rate else unit}},
        "targets": [
            {
                "refId": "A",
                "expr": query(metric),
                "legendFormat": " ".join("{{%s}}" % label for label in ("instance",) + metric.labels),
            }
        ],
    }


def dashboard():
    """The dashboard as plain data."""
    panels, y = [], 0
    for title, subjects in SECTIONS:
        shown = [metric for metric in metrics.METRICS if metric.name.split("_")[1] in subjects]
        panels.append({"id": len(panels) + 1, "type": "row", "title": title, "gridPos": _place(0, y, 24, 1)})
        y += 1
        for i, metric in enumerate(shown):
            panels.append(_panel(len(panels) + 1, metric, i % COLUMNS * WIDTH, y + i // COLUMNS * HEIGHT))
        y += -(-len(shown) // COLUMNS) * HEIGHT
    return {
        "uid": "qdp-host",
        "title": "qdp: a host's datapath",
        "tags": ["qdp"],
        "schemaVersion": 37,
        "time": {"from": "now-1h", "to": "now"},
        "refresh": "30s",
        "templating": {
            "list": [
                {"name": "datasource", "type": "datasource", "query": "prometheus"},
                {
                    "name": "instance",
                    "type": "query",
                    "datasource": DATASOURCE,
                    "query": "label_values(qdp_up, instance)",
                    "refresh": 2,
                    "multi": True,
                    "includeAll": True,
                },
            ]
        },
        "panels": panels,
    }


def _place(x, y, width, height):
    return {"h": height, "w": width, "x": x, "y": y}


def text():
    return json.dumps(dashboard(), indent=2) + "\n"
