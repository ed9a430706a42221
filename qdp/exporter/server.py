"""The exporter's web server: the metrics, a health page, an index page."""

import socket
import sys
import threading
import time
from http.server import BaseHTTPRequestHandler
from socketserver import TCPServer, ThreadingMixIn
from urllib.parse import urlsplit

from prometheus_client import CONTENT_TYPE_LATEST as TEXT
from prometheus_client.openmetrics.exposition import CONTENT_TYPE_LATEST as OPENMETRICS

MOST_CONNECTIONS = 32
MOST_SECONDS = 30  # of a connection, from its begin to its end
MARGIN = 0.5  # seconds between the end of a sweep and the scraper's own time limit
SCRAPE_TIMEOUT = "X-Prometheus-Scrape-Timeout-Seconds"

INDEX = b"""<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>qdp exporter</title></head>
<body><h1>qdp exporter</h1>
<ul><li><a href="/metrics">Metrics</a></li><li><a href="/-/healthy">Health of the exporter itself</a></li></ul>
</body></html>
"""


class Handler(BaseHTTPRequestHandler):
    """Answers GET and HEAD. A connection carries one request."""

    server_version = "qdp-exporter"
    sys_version = ""
    timeout = 5  # seconds for each read

    def do_GET(self):
        path = urlsplit(self.path).path
        if path == "/metrics":
            self._metrics()
        elif path == "/-/healthy":
            self._send(200, "text/plain; charset=utf-8", b"The exporter is healthy.\n")
        elif path == "/":
            self._send(200, "text/html; charset=utf-8", INDEX)
        else:
            self._send(404, "text/plain; charset=utf-8", b"There is no such page; see /metrics.\n")

    do_HEAD = do_GET

    def _metrics(self):
        is_openmetrics = "application/openmetrics-text" in self.headers.get("Accept", "")
        try:
            text = self.server.scrape(self._seconds(), is_openmetrics)
        except Exception as error:  # the next scrape may succeed
            print("qdp exporter: a scrape failed: {!r}".format(error), file=sys.stderr, flush=True)
            self._send(500, "text/plain; charset=utf-8", b"The scrape failed; the exporter's log says why.\n")
            return
        self._send(200, OPENMETRICS if is_openmetrics else TEXT, text)

    def _seconds(self):
        """The time that the scraper gives; None where it does not say."""
        try:
            return max(float(self.headers.get(SCRAPE_TIMEOUT, "")) - MARGIN, MARGIN)
        except ValueError:
            return None

    def _send(self, status, content_type, body):
        self.send_response(status)
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(body)))
        self.send_header("Connection", "close")
        self.end_headers()
        if self.command != "HEAD":
            self.wfile.write(body)

    def log_message(self, *arguments):
        """Requests are not logged: a scraper makes thousands a day."""


class Server(ThreadingMixIn, TCPServer):
    """A thread a connection, a bounded number of both, and an end to each."""

    allow_reuse_address = True
    daemon_threads = True
    block_on_close = False
    request_queue_size = MOST_CONNECTIONS

    def __init__(self, address, scrape):
        """`scrape(seconds, is_openmetrics)` gives the bytes of a scrape."""
        self.scrape = scrape
        self.address_family = socket.AF_INET6 if ":" in address[0] else socket.AF_INET
        self._connections = {}  # by connection, when it has to end
        self._connections_lock = threading.Lock()
        super().__init__(address, Handler)

    def verify_request(self, request, client_address):
        with self._connections_lock:
            has_room = len(self._connections) < MOST_CONNECTIONS
            if has_room:
                self._connections[request] = time.monotonic() + MOST_SECONDS
        return has_room

    def service_actions(self):
        """Ends the connections whose time is over, however slowly they read or write."""
        now = time.monotonic()
        with self._connections_lock:
            late = [request for request, end in self._connections.items() if now > end]
        for request in late:
            try:
                request.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass  # it has just ended

    def shutdown_request(self, request):
        with self._connections_lock:
            self._connections.pop(request, None)
        super().shutdown_request(request)

    def handle_error(self, request, client_address):
        """Clients go away in the middle of a page; the others notice nothing."""
