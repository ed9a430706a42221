"""One sweep's values as numbers with labels, for conditions on this host; render.py makes text of the same."""

import time

from . import collect, metrics
from .conditions import Samples


class Values:
    """Takes the series of answers as render.Series does."""

    def __init__(self):
        self.families = {}
        self._count = 0

    def add(self, method, labels, answer):
        for metric in metrics.of_method(method):
            for key, added in metric.keys.items():
                # The module shows counters signed.
                value = answer[key] % metrics.WORD if answer[key] < 0 else answer[key] * metric.scale
                self._add(metric, metric.labels, labels + added, value)

    def add_one(self, name, labels, value, ending=""):
        if not ending:  # a histogram is part of no condition
            metric = metrics.BY_NAME[name]
            self._add(metric, metric.labels, labels, value)

    def _add(self, metric, names, labels, value):
        self.families.setdefault(metric.name, []).append((dict(zip(names, labels)), value))
        self._count += 1

    def taken(self):
        count, self._count = self._count, 0
        return {}, count

    def end_sweep(self, is_complete):
        """Nothing is kept between sweeps."""


def read(options=None):
    """The samples of this host, now."""
    values, seen = Values(), {}
    sweep = collect.Sweep(collect.Platform(), values, options or collect.Options())
    for name, _, _, answered, failed in sweep.read():
        if answered or name in collect.NEEDED:
            values.add_one("qdp_collector_success", (name,), int(not failed))
        seen[name] = answered
    values.add_one("qdp_up", (), int(seen["switches"] > 0))
    values.add_one("qdp_exporter_omitted_series", (), sweep.omitted)
    return Samples(values.families, time.monotonic())
