"""The exporter as a program: serves the metrics, or writes them into a folder for the node exporter."""

import errno
import os
import signal
import sys
import tempfile
import threading

from prometheus_client import CollectorRegistry, ProcessCollector
from prometheus_client import generate_latest as TEXT
from prometheus_client.openmetrics.exposition import generate_latest as OPENMETRICS

import qdp

from . import collect, render
from .source import Source

FILE = "qdp.prom"
POLL = 0.5  # seconds between two looks for connections whose time is over
TIMEOUT = 8.0  # seconds for a sweep: less than a scraper's usual 10


class ExporterError(Exception):
    """The exporter cannot do what was asked; the text says why."""


class Scrapes:
    """Makes the pages: the metrics of the host, and those of the exporter's own process."""

    def __init__(self, source):
        self._source = source
        self._seen = set(collect.NEEDED)  # collectors that report success; the others once they had an answer
        self._own = _own_registry()

    def page(self, seconds=None, is_openmetrics=False):
        reading = self._source.read(seconds)
        families = dict(self._about(reading))
        for _, found, _, _, _ in reading.collectors:
            families.update(found)
        text = render.page(families, is_openmetrics)
        return text.encode() + (OPENMETRICS if is_openmetrics else TEXT)(self._own)

    def _about(self, reading):
        """The metrics about the sweep itself."""
        about = render.Series()
        self._seen.update(name for name, _, _, answered, _ in reading.collectors if answered)
        read = {name: (seconds, answered, failed) for name, _, seconds, answered, failed in reading.collectors}
        about.add_one("qdp_up", (), int("switches" in read and read["switches"][1] > 0))
        about.add_one("qdp_build_info", (qdp.__version__,), 1)
        for name, _ in collect.Sweep.COLLECTORS:
            if name in self._seen:
                about.add_one("qdp_collector_success", (name,), int(name in read and not read[name][2]))
            if name in read:
                about.add_one("qdp_collector_duration_seconds", (name,), "%.6f" % read[name][0])
        for method, count in sorted(reading.failures.items()):
            about.add_one("qdp_call_failures", (method,), count)
        about.add_one("qdp_reader_restarts", (), self._source.restarts)
        about.add_one("qdp_exporter_omitted_series", (), reading.omitted)
        return about.taken()[0]


def _own_registry():
    """The exporter's own memory and CPU time, as every exporter of the client library shows them."""
    registry = CollectorRegistry()
    ProcessCollector(registry=registry)
    return registry


def _source(options):
    return Source(options, TIMEOUT)


def serve(address, options):
    """Serves until SIGTERM or Ctrl-C."""
    from .server import Server

    source = _source(options)
    scrapes = Scrapes(source)
    try:
        server = Server(address, scrapes.page)
    except OSError as error:
        raise ExporterError("cannot listen on {}:{}: {}".format(address[0], address[1], error.strerror))
    signal.signal(signal.SIGTERM, lambda *_: threading.Thread(target=server.shutdown).start())
    try:
        print("Serving http://{}:{}/metrics".format(*server.server_address[:2]), file=sys.stderr, flush=True)
        server.serve_forever(poll_interval=POLL)
    except KeyboardInterrupt:
        pass
    finally:
        server.server_close()
        source.close()


def write(folder, options):
    """Writes the metrics into a file of the folder once, whole or not at all."""
    source = _source(options)
    try:
        page = Scrapes(source).page()
        handle, temporary = tempfile.mkstemp(prefix="." + FILE, dir=folder)
        try:
            with os.fdopen(handle, "wb") as file:
                file.write(page)
                os.fchmod(file.fileno(), 0o644)
            os.replace(temporary, os.path.join(folder, FILE))
        except BaseException:
            os.unlink(temporary)
            raise
    except OSError as error:
        if error.errno in (errno.ENOENT, errno.ENOTDIR):
            raise ExporterError("there is no folder {}; create it first".format(folder))
        raise ExporterError("cannot write {}: {}".format(os.path.join(folder, FILE), error.strerror))
    finally:
        source.close()
