"""The command qdp-host and Python processes on the embedded host, as tests start them."""

import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PACKAGES = ROOT / "host" / "python"


def environment(build, **variables):
    """That of a user who has nothing set up but the build under test."""
    own = ("LD_LIBRARY_PATH", "QDP_HOST_SCENARIO", "QDP_HOST_REPLAY", "QDP_HOST_CAPTURE")
    inherited = {name: value for name, value in os.environ.items() if name not in own}
    return {**inherited, "PYTHONPATH": str(PACKAGES), "QDP_HOST_LIBRARIES": str(build / "host"), **variables}


def started(command, build, cwd=None, variables=None):
    return subprocess.run(
        [str(part) for part in command],
        env=environment(build, **(variables or {})),
        cwd=cwd,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
        timeout=300,
    )


def qdp_host(build, *arguments, cwd=None, variables=None):
    """(exit code, standard output, standard error) of the command."""
    done = started([sys.executable, "-m", "qdp_host", *arguments], build, cwd, variables)
    return done.returncode, done.stdout, done.stderr
