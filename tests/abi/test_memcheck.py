"""The module under valgrind."""

import os
import subprocess

from contract import RECIPES


def test_valgrind_has_nothing_to_say(root, build):
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
        ],
        capture_output=True,
        text=True,
        timeout=600,
        env={**os.environ, "PYTHONMALLOC": "malloc"},
    )
    assert done.returncode == 0, done.stderr
    assert "==" not in done.stderr, done.stderr
    assert "portset-0" in done.stdout
    assert [name for name in RECIPES if f"\n{name} " not in done.stdout] == []
