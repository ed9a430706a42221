"""The module under valgrind."""

import os
import subprocess

import pytest

from contract import RECIPES, one_of_each_shape


@pytest.mark.parametrize(
    "names", [one_of_each_shape(), pytest.param(RECIPES, marks=pytest.mark.long)], ids=["shapes", "all"]
)
def test_valgrind_has_nothing_to_say(root, build, names):
    done = subprocess.run(
        [
            "valgrind",
            "--quiet",
            "--error-exitcode=99",
            "--leak-check=no",
            "/usr/bin/python3",
            str(root / "tests" / "abi" / "inventory.py"),
            str(build),
            str(root / "host" / "python"),
            *names,
        ],
        capture_output=True,
        text=True,
        timeout=600,
        env={**os.environ, "PYTHONMALLOC": "malloc"},
    )
    assert done.returncode == 0, done.stderr
    assert "==" not in done.stderr, done.stderr
    assert "portset-0" in done.stdout
    called = [line.split()[0] for line in done.stdout.splitlines() if " succeeds: " in line]
    assert called == [name for name in RECIPES if name in names] and len(called) == len(names)
