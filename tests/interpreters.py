"""The interpreters of this machine that the module is for, each once."""

import functools
import glob
import os
import shutil
import subprocess

import pytest

MINORS = range(6, 14)


@functools.lru_cache(maxsize=None)
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
            found.setdefault(os.path.realpath(candidate), (int(minor), candidate))
    return [candidate for _, candidate in sorted(found.values())]


def oldest_and_newest():
    """All of them as parameters of a test; those between the oldest and the newest are of the long part."""
    found = interpreters()
    return [pytest.param(each, marks=[pytest.mark.long] * (each not in (found[0], found[-1]))) for each in found]
