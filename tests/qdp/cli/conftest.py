"""What the tests of the command stand on: command lines run in this process, and in processes of their own."""

import json
import os
import subprocess
import sys

import pytest

from qdp.cli.main import main


class Command:
    """Runs command lines in this process, on its embedded host, whose clock stands still."""

    def __init__(self, host, capsys):
        self.host = host
        self.capsys = capsys

    def __call__(self, *arguments):
        """(exit code, standard output, standard error)."""
        self.capsys.readouterr()
        code = main([str(argument) for argument in arguments])
        return (code, *self.capsys.readouterr())

    def lines(self, *arguments):
        """The lines of standard output when all goes well."""
        code, out, err = self(*arguments)
        assert (code, err) == (0, "")
        return out.splitlines()

    def rows(self, *arguments):
        """What is printed as JSON when all goes well."""
        code, out, err = self(*arguments, "-j")
        assert (code, err) == (0, "")
        array = json.loads(out)
        assert type(array) is list
        return array

    def error(self, *arguments):
        """(exit code, the one line on standard error) of what prints nothing else."""
        code, out, err = self(*arguments)
        assert out == "" and err.endswith("\n") and err.count("\n") == 1
        return code, err[:-1]


@pytest.fixture
def qdp_command(host, capsys):
    host.freeze()
    return Command(host, capsys)


@pytest.fixture(scope="session")
def process(build, root):
    """The command line of the command, and its environment, for a process of its own."""

    def process(*arguments, **variables):
        inherited = {name: value for name, value in os.environ.items() if name not in ("COLUMNS", "LINES", "NO_COLOR")}
        environment = {**inherited, "LD_LIBRARY_PATH": str(build / "host"), "PYTHONPATH": str(build), **variables}
        return [sys.executable, str(root / "script" / "qdp_command.py"), *map(str, arguments)], environment

    return process


@pytest.fixture(scope="session")
def run_process(process):
    def run_process(*arguments, variables=None, **settings):
        line, environment = process(*arguments, **(variables or {}))
        settings = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "stdin": subprocess.DEVNULL, **settings}
        return subprocess.run(line, env=environment, text=True, timeout=120, **settings)

    return run_process
