"""The command on every interpreter that is found: the same lines print the same."""

import subprocess

import pytest

from interpreters import oldest_and_newest

LINES = [
    ["switch", "show", "-j"],
    ["port", "show", "1", "--where", "client=VNIC", "--sort", "-port"],
    ["port", "conf", "0", "3"],
    ["nic", "lif", "--where", "lif-type=3"],
    ["table", "get", "mirror", "0-1"],
    ["setting", "set", "flow-timeout", "33", "-p"],
    ["setting", "schema"],
    ["mac", "clear", "0"],
    ["port", "show", "0", "x"],
    ["call", "ListPorts", "9", "-j"],
]


@pytest.fixture(scope="module")
def printed(process):
    def printed(interpreter, line):
        (_, *rest), environment = process(*line)
        streams = dict(stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        done = subprocess.run([interpreter, *rest], env=environment, timeout=60, **streams)
        return done.returncode, done.stdout.decode(), done.stderr.decode()

    return printed


@pytest.fixture(scope="module")
def reference(printed):
    return [printed("/usr/bin/python3", line) for line in LINES]


@pytest.mark.parametrize("interpreter", oldest_and_newest())
def test_lines_print_the_same(printed, reference, interpreter):
    for line, expected in zip(LINES, reference):
        assert printed(interpreter, line) == expected, line
