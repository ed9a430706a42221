"""Makes what is written from the exporter's tables: the rules, the dashboard, the pages of the documentation.

--check: says which of them are not as the tables have them, and writes nothing.
"""

import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT))

from qdp.exporter import conditions, dashboard, metrics, rules  # noqa: E402: the path comes first


def metrics_page():
    lines = [
        "# Metrics of the exporter",
        "",
        "`qdp exporter` serves these metrics. Counters end in `_total`; those that the datapath shows with 32 bits are",
        "extended to 64. A family whose method is not there has no series on hosts that lack it.",
        "",
        "| metric | type | labels | method | meaning |",
        "|---|---|---|---|---|",
    ]
    for metric in metrics.METRICS:
        labels = ", ".join("`%s`" % label for label in metric.labels) or "none"
        method = "{py:func}`~_libqdp.%s`" % metric.method if metric.method else ""
        name = metrics.sample_name(metric)
        lines.append("| `{}` | {} | {} | {} | {} |".format(name, metric.type, labels, method, metric.help))
    return "\n".join(lines) + "\n"


def runbook_page(condition):
    held = " and ".join(
        "`%s` is %s %g" % (expression.promql(conditions.WINDOW), {">": "above", "<": "below"}[comparison], value)
        for expression, comparison, value in condition.bounds
    )
    return "\n".join(
        [
            "# " + condition.alert,
            "",
            condition.summary.replace("{{", "*").replace("}}", "*"),
            "",
            "Severity: %s, after %d minutes." % (condition.severity, condition.minutes),
            "",
            "## Condition",
            "",
            held + ".",
            "",
            "## Meaning",
            "",
            condition.meaning,
            "",
            "## What to do",
            "",
            condition.action,
            "",
        ]
    )


def files():
    """{path: text} of all that is made."""
    made = {
        "qdp/exporter/files/qdp.rules.yml": rules.text(),
        "qdp/exporter/files/dashboard.json": dashboard.text(),
        "docs/metrics.md": metrics_page(),
    }
    made.update(("docs/runbook/%s.md" % each.alert, runbook_page(each)) for each in conditions.CONDITIONS)
    return made


def main(arguments):
    stale = []
    for path, text in sorted(files().items()):
        file = ROOT / path
        if not file.exists() or file.read_text() != text:
            stale.append(path)
            if "--check" not in arguments:
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(text)
    for path in stale:
        print(path + (": script/exporter-files makes it anew" if "--check" in arguments else ""))
    return 1 if stale and "--check" in arguments else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
