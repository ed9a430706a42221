"""The layer on every interpreter of this machine, with both captures: the same results and the same exceptions."""

import subprocess

import pytest

from contract import RECIPES
from interpreters import oldest_and_newest


def said_by(root, build, interpreter, *capture):
    script = root / "tests" / "qdp" / "calls.py"
    done = subprocess.run(
        [interpreter, "-W", "error", str(script), str(build), str(root / "host" / "python"), *capture],
        capture_output=True,
        text=True,
        timeout=300,
    )
    assert (done.returncode, done.stderr) == (0, "")
    return done.stdout


@pytest.fixture(scope="module")
def reference(root, build):
    return said_by(root, build, "/usr/bin/python3")


def test_reference(reference):
    lines = reference.splitlines()
    assert [line.split()[0] for line in lines if " succeeds: " in line] == list(RECIPES)
    assert 'GetLBMetric succeeds: "cpu"' in lines
    said = r"InvalidArgument: 'TypeError: Invalid switch ID passed.\n' from NoneType"
    assert "ListPorts out of range (16,) None " + said in lines and len(lines) > 1600


@pytest.mark.parametrize("interpreter", oldest_and_newest())
def test_same_on_every_interpreter(root, build, reference, interpreter):
    assert said_by(root, build, interpreter) == reference


def test_same_without_the_helper(root, build, reference):
    assert said_by(root, build, "/usr/bin/python3", "python") == reference


@pytest.mark.long
@pytest.mark.parametrize("interpreter", oldest_and_newest())
def test_same_without_the_helper_on_every_interpreter(root, build, reference, interpreter):
    assert said_by(root, build, interpreter, "python") == reference
