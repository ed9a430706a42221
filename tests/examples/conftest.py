"""What the examples' tests stand on: an example in a process of its own, on the embedded host."""

import errno
import json
import os
import pty
import subprocess
import sys

import pytest


@pytest.fixture(scope="session")
def command(root, build):
    """The command line of an example, and its environment with the size of its terminal. A preparation prepares its
    host, see prepared.py."""

    def command(name, *options, prepare=None, columns=100, lines=24):
        environment = {
            **os.environ,
            "LD_LIBRARY_PATH": str(build / "host"),
            "PYTHONPATH": f"{build}{os.pathsep}{root / 'host' / 'python'}",
            "COLUMNS": str(columns),
            "LINES": str(lines),
        }
        start = [str(root / "examples" / name), *options]
        if prepare is not None:
            start[:0] = [str(root / "tests" / "examples" / "prepared.py"), str(build / "host"), prepare]
        return [sys.executable, *start], environment

    return command


@pytest.fixture(scope="session")
def run(command):
    """Runs an example, on the embedded host with a frozen clock unless something else is prepared."""

    def run(name, *options, prepare="", **streams):
        line, environment = command(name, *options, prepare=prepare)
        streams = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
        return subprocess.run(line, env=environment, text=True, timeout=120, **streams)

    return run


CHECK = "check that the switch, port or table exists and that the feature is on; see the log of the platform"


@pytest.fixture(scope="session")
def refused():
    """The line that an example prints for a call that fails: what failed, and what to do."""

    def refused(name, call, text, hint=CHECK):
        return f"{name}: {call}: {text}; {hint}\n"

    return refused


@pytest.fixture(scope="session")
def printed(run):
    """What an example prints when all goes well."""

    def printed(name, *options, **preparation):
        done = run(name, *options, **preparation)
        assert (done.returncode, done.stderr) == (0, "")
        return done.stdout

    return printed


@pytest.fixture(scope="session")
def on_a_terminal(command):
    """The lines that an example prints on a terminal of so many columns when all goes well."""

    def on_a_terminal(name, *options, columns, lines=24, prepare=""):
        line, environment = command(name, *options, prepare=prepare, columns=columns, lines=lines)
        terminal, end = pty.openpty()
        process = subprocess.Popen(line, env=environment, stdout=end, stderr=subprocess.PIPE, text=True)
        os.close(end)
        shown = b""
        try:
            while part := os.read(terminal, 4096):
                shown += part
        except OSError as error:  # the process has ended
            assert error.errno == errno.EIO
        os.close(terminal)
        with process.stderr:
            assert (process.stderr.read(), process.wait(timeout=120)) == ("", 0)
        return shown.decode().splitlines()

    return on_a_terminal


@pytest.fixture(scope="session")
def rows(printed):
    """What an example prints in JSON when all goes well."""

    def rows(name, *options, **preparation):
        array = json.loads(printed(name, "--json", *options, **preparation))
        assert type(array) is list
        return array

    return rows


@pytest.fixture
def frozen(host):
    """The embedded host of this process, as it is when an example starts: its answers are what the example gets."""
    host.freeze()
    return host
