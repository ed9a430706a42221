"""A short soak; script/soak makes longer ones."""

import re
import subprocess
import sys


def soak(root, build, *options):
    return subprocess.run(
        [sys.executable, str(root / "tests" / "torture" / "soak.py"), str(build), *options],
        capture_output=True,
        text=True,
        timeout=300,
    )


def test_soak(root, build):
    done = soak(root, build, "--seconds", "2", *["--texts-only"] * ("sanitize" in build.name))
    assert (done.returncode, done.stderr) == (0, ""), done.stdout + done.stderr
    assert re.fullmatch(r"[0-9,]+ calls of 147 methods, [0-9,]+ a second", done.stdout.splitlines()[-1])
