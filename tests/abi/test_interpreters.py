"""One binary for every CPython: the same answers from each interpreter found on this machine."""

import subprocess

import pytest

from interpreters import interpreters
from recipes import RECIPES


def listed(root, build, interpreter):
    done = subprocess.run(
        [interpreter, str(root / "tests" / "abi" / "inventory.py"), str(build), str(root / "host" / "python")],
        capture_output=True,
        text=True,
        timeout=120,
    )
    assert done.returncode == 0, done.stderr
    return done.stdout, done.stderr


@pytest.mark.parametrize("interpreter", interpreters())
def test_same_answers(root, build, interpreter):
    reference = listed(root, build, "/usr/bin/python3")
    assert "DvsPortset-0" in reference[0]
    assert "TypeError: Invalid parameter passed.\n" in reference[1]
    results = dict(line.split(" ", 1) for line in reference[0].splitlines()[-len(RECIPES) :])
    assert list(results) == list(RECIPES)
    assert results["GetLBMetric"] == '"cpu"'
    assert listed(root, build, interpreter) == reference
