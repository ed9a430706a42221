"""The rules for Prometheus, made from the conditions: recorded rates, and an alert for each condition."""

import json

from . import conditions
from .conditions import WINDOW, Rate, Share, Sum

RUNBOOK = "https://qdp.invalid/runbook/"  # stands in the annotations; fleets replace it with their own place

# What dashboards of many hosts read, so that they need not compute it anew each time.
_RECORDED = (
    ("qdp:port_packets:rate5m", Rate("qdp_port_packets", ("switch", "port", "direction"))),
    ("qdp:port_bytes:rate5m", Rate("qdp_port_bytes", ("switch", "port", "direction"))),
    ("qdp:port_drops:rate5m", Rate("qdp_port_drops", ("switch", "port", "direction"))),
    ("qdp:host_bytes:rate5m", Rate("qdp_uplink_bytes", ("direction",))),
    ("qdp:host_drops:rate5m", Rate("qdp_port_drops", ("direction",))),
    (
        "qdp:host_slowpath_share:ratio5m",
        Share(
            Rate("qdp_port_packets", path="slow"),
            Sum(Rate("qdp_port_packets", path="fast"), Rate("qdp_port_packets", path="slow")),
        ),
    ),
    (
        "qdp:host_lookup_hit_share:ratio5m",
        Share(Rate("qdp_lcore_lookup_hits"), Sum(Rate("qdp_lcore_lookup_hits"), Rate("qdp_lcore_lookup_misses"))),
    ),
)


def _annotation(text):
    """The placeholders {{label}} of a text as the rules have them."""
    for label in ("collector", "direction", "kind", "lcore", "port", "switch"):
        text = text.replace("{{%s}}" % label, "{{ $labels.%s }}" % label)
    return text


def text(window=WINDOW, minutes=None):
    """The rules file. A quoted text of JSON is one of YAML, too.

    window, minutes: other than the table's, for those who cannot wait so long.
    """
    lines = [
        "# Recording and alert rules of the qdp exporter. Made from the exporter's table of conditions: do not edit.",
        "groups:",
        "  - name: qdp-recording",
        "    rules:",
    ]
    for name, expression in _RECORDED:
        lines += ["      - record: " + name, "        expr: " + json.dumps(expression.promql(window))]
    lines += ["  - name: qdp-alerts", "    rules:"]
    for condition in conditions.CONDITIONS:
        lines += [
            "      - alert: " + condition.alert,
            "        expr: " + json.dumps(conditions.query(condition, window)),
            "        for: %dm" % (condition.minutes if minutes is None else minutes),
            "        labels:",
            "          severity: " + condition.severity,
            "        annotations:",
            "          summary: " + json.dumps(_annotation(condition.summary)),
            "          description: " + json.dumps(condition.meaning),
            "          runbook_url: " + json.dumps(RUNBOOK + condition.alert),
        ]
    return "\n".join(lines) + "\n"
