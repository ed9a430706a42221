"""Tests of what the exporter costs: processor time of a scrape and of a series, and memory that stays."""

import gc
import marshal
import sys
import time

import pytest
from exporting import COMMAND, environment_of, exporting, private_memory

from qdp import call_raw
from qdp.exporter import collect, main, reader, render
from qdp.exporter.source import Reading

SCRAPE_SECONDS = 5e-3
SERIES_SECONDS = 2e-6  # on top of the platform's own time
ROUNDS = 40  # of which the best counts: what comes on top is the machine's other work


class InProcess:
    """Sweeps as the reading process does, and takes the frames as the exporter does, in this process."""

    restarts = 0

    def __init__(self):
        self._platform, self._series = collect.Platform(), render.Series()

    def read(self, seconds=None):
        reading = Reading()
        sweep = collect.Sweep(self._platform, self._series, collect.Options())
        reading.collectors = [self._sent(frame) for frame in sweep.read()]
        end = self._sent((reader.END, self._platform.failures, sweep.omitted, self._series.state()))
        _, reading.failures, reading.omitted, _ = end
        reading.is_complete = True
        return reading

    @staticmethod
    def _sent(frame):
        return marshal.loads(reader.pack(frame)[reader.LENGTH.size :])


@pytest.fixture
def scrapes(host):
    return main.Scrapes(InProcess())


def best(action):
    """Processor seconds."""
    found = []
    for _ in range(ROUNDS):
        start = time.process_time()
        action()
        found.append(time.process_time() - start)
    return min(found)


@pytest.mark.long  # and by itself: tests on the other processors make each instruction slower
def test_scrape_of_the_default_host(scrapes, monkeypatch):
    """All of it: the sweep, the way between the processes, and the page."""
    calls = []

    def ask(platform, method, *arguments, real=collect.Platform.ask):
        calls.append((method,) + arguments)
        return real(platform, method, *arguments)

    with monkeypatch.context() as patched:
        patched.setattr(collect.Platform, "ask", ask)
        page = scrapes.page().decode()
    series = len([line for line in page.splitlines() if not line.startswith("#")])
    assert len(calls) > 50 and series > 1000

    whole, platform = best(scrapes.page), best(lambda: [call_raw(*each) for each in calls])
    assert whole < SCRAPE_SECONDS
    assert (whole - platform) / series < SERIES_SECONDS


@pytest.mark.parametrize("count", [200, pytest.param(20000, marks=pytest.mark.long)])
def test_scrapes_keep_nothing(host, scrapes, count):
    host.freeze()
    for i in range(10):
        scrapes.page(None, i % 2 == 1)
    gc.collect()
    before = sys.getallocatedblocks()
    for i in range(count):
        scrapes.page(None, i % 2 == 1)
    gc.collect()
    assert sys.getallocatedblocks() - before < 100


FRESH = ("-c", "from qdp.exporter import source; source.YOUNG = -1; " + COMMAND[1]) + COMMAND[2:]


@pytest.mark.parametrize("count", [150, pytest.param(5000, marks=pytest.mark.long)])
def test_memory_of_both_processes_is_flat(build, root, count):
    """Over scrapes that are all read anew."""
    with exporting(environment_of(build, root), command=FRESH) as each:
        for _ in range(50):
            each.get()
        before = private_memory(each.process.pid)
        restarts = each.series()["qdp_reader_restarts_total"]
        for _ in range(count):
            assert each.get()[0] == 200
        assert each.series()["qdp_reader_restarts_total"] == restarts
        assert private_memory(each.process.pid) - before < 3 << 20
