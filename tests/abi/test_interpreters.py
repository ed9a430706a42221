"""One binary for every CPython: the same answers and the same failures from each interpreter found on this machine."""

import subprocess

import pytest

from interpreters import oldest_and_newest
from contract import RECIPES


def listed(root, build, interpreter):
    done = subprocess.run(
        [interpreter, str(root / "tests" / "abi" / "inventory.py"), str(build), str(root / "host" / "python")],
        capture_output=True,
        text=True,
        timeout=120,
    )
    assert done.returncode == 0, done.stderr
    return done.stdout, done.stderr


@pytest.fixture(scope="module")
def reference(root, build):
    return listed(root, build, "/usr/bin/python3")


def test_every_method_succeeds_and_fails(reference):
    answers, texts = (each.splitlines() for each in reference)
    assert [line.split()[0] for line in answers if " succeeds: " in line] == list(RECIPES)
    assert 'GetLBMetric succeeds: "cpu"' in answers
    assert "GetLBMetric unknown switch ('unknown',) None: null" in answers
    assert "GetSwitchMetaFlow one too few () None: SystemError from TypeError" in answers
    assert "TypeError: Invalid parameter passed." in texts


@pytest.mark.parametrize("interpreter", oldest_and_newest())
def test_same_answers_and_failures(root, build, reference, interpreter):
    assert listed(root, build, interpreter) == reference
