"""Exporters as processes of their own, on embedded hosts that misbehave as a test says."""

import contextlib
import os
import re
import signal
import subprocess
import sys
import time
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
        request = urllib.request.Request(self.url + path, headers={key.replace("_", "-"): v for key, v in headers.items()})
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
