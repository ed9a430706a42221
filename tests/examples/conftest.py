"""What the examples' tests stand on: an example in a process of its own, on the embedded host."""

import json
import os
import subprocess
import sys

import pytest


@pytest.fixture(scope="session")
def command(root, build):
    """The command line of an example, and its environment. A preparation prepares its host, see prepared.py."""
    environment = {
        **os.environ,
        "LD_LIBRARY_PATH": str(build / "host"),
        "PYTHONPATH": f"{build}{os.pathsep}{root / 'host' / 'python'}",
        "COLUMNS": "100",
        "LINES": "24",
    }

    def command(name, *options, prepare=None):
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


@pytest.fixture(scope="session")
def printed(run):
    """What an example prints when all goes well."""

    def printed(name, *options, **preparation):
        done = run(name, *options, **preparation)
        assert (done.returncode, done.stderr) == (0, "")
        return done.stdout

    return printed


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
