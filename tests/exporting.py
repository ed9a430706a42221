"""Exporters as processes of their own, on embedded hosts that misbehave as a test says."""

import contextlib
import json
import os
import re
import signal
import socket
import subprocess
import sys
import time
import urllib.error
import urllib.parse
import urllib.request

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "qdp", "exporter")


def environment_of(build, root, **changes):
    """The environment in which a process finds the embedded host of a build."""
    return dict(
        os.environ,
        LD_LIBRARY_PATH=str(build / "host"),
        PYTHONPATH=os.pathsep.join([str(build), str(root / "host" / "python")]),
        **changes
    )


COMMAND = ("-c", "import sys; from qdp.cli.main import main; sys.exit(main())", "exporter")


class Exporter:
    """A running exporter."""

    def __init__(self, process, url):
        self.process, self.url = process, url

    def get(self, path="/metrics", timeout=20, **headers):
        """(status, content type, text) of a page."""
        request = urllib.request.Request(
            self.url + path, headers={key.replace("_", "-"): v for key, v in headers.items()}
        )
        try:
            with urllib.request.urlopen(request, timeout=timeout) as answer:
                return answer.status, answer.headers["Content-Type"], answer.read().decode()
        except urllib.error.HTTPError as error:
            return error.code, error.headers["Content-Type"], error.read().decode()

    def series(self, **headers):
        """{series: value} of a scrape."""
        lines = self.get(**headers)[2].splitlines()
        return {name: float(value) for name, value in (line.rsplit(" ", 1) for line in lines if line[:1] != "#")}

    def fresh(self):
        """The same, of a sweep of its own: an answer is used again for a second."""
        time.sleep(1.05)
        return self.series()


@contextlib.contextmanager
def exporting(environment, *options, command=COMMAND, listen="127.0.0.1:0"):
    """An exporter, which is stopped at the end of the block."""
    process = subprocess.Popen(
        [sys.executable, *command, "--listen", listen, *options],
        env=environment,
        cwd="/",  # where no folder is named like the package
        stderr=subprocess.PIPE,
        universal_newlines=True,
    )
    try:
        line = process.stderr.readline()
        url = re.match(r"Serving (http://\S+)/metrics$", line)
        assert url, line + process.stderr.read()
        yield Exporter(process, url[1])
    finally:
        process.send_signal(signal.SIGTERM)
        try:
            process.wait(10)
        finally:
            process.kill()
            process.wait()
            process.stderr.close()


def private_memory(pid):
    """Bytes that a process and its children have written and share with nobody."""
    with open("/proc/{}/smaps_rollup".format(pid)) as file:
        own = next(int(line.split()[1]) * 1024 for line in file if line.startswith("Private_Dirty:"))
    with open("/proc/{0}/task/{0}/children".format(pid)) as file:
        return own + sum(private_memory(int(child)) for child in file.read().split())


SECONDS = 60  # at most, until Prometheus is ready, or an alert fires or resolves


def free_port():
    with socket.socket() as each:
        each.bind(("127.0.0.1", 0))
        return each.getsockname()[1]


class Prometheus:
    """A running Prometheus."""

    def __init__(self, process, url):
        self.process, self.url = process, url

    def ask(self, path, **parameters):
        with urllib.request.urlopen(self.url + path + "?" + urllib.parse.urlencode(parameters), timeout=10) as answer:
            return json.load(answer)["data"]

    def firing(self):
        """{(alert, its port, or the kind of its failures, if any)} of what fires."""
        return {
            (alert["labels"]["alertname"], alert["labels"].get("port") or alert["labels"].get("kind"))
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
def prometheus(folder, targets, interval=1, rules="groups: []"):
    """A Prometheus that scrapes these and evaluates the rules, every `interval` seconds."""
    (folder / "qdp.rules.yml").write_text(rules)
    every = "{}s".format(interval)
    (folder / "prometheus.yml").write_text(
        json.dumps(
            {
                "global": {"scrape_interval": every, "scrape_timeout": every, "evaluation_interval": every},
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
        each = Prometheus(process, "http://127.0.0.1:{}".format(port))
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
