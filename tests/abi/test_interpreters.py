"""One binary for every CPython: the same answers from each interpreter found on this machine."""

import glob
import os
import shutil
import subprocess

import pytest

from recipes import RECIPES

MINORS = range(6, 14)


def interpreters():
    found = {}
    candidates = ["/usr/bin/python3"]
    candidates += [shutil.which(f"python3.{minor}") for minor in MINORS]
    candidates += sorted(glob.glob(os.path.expanduser("~/.pyenv/versions/3.*/bin/python3")))
    for candidate in filter(None, candidates):
        asked = subprocess.run(
            [candidate, "-c", "import sys; print(sys.implementation.name, *sys.version_info[:2])"],
            capture_output=True,
            text=True,
        )
        name, major, minor = (asked.stdout.split() + ["", "0", "0"])[:3]
        if asked.returncode == 0 and name == "cpython" and int(major) == 3 and int(minor) in MINORS:
            found.setdefault(os.path.realpath(candidate), candidate)
    return sorted(found.values())


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
