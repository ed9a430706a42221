"""mypy over scripts and packages, as their authors run it: it finds packages on Python's own path, as if installed."""

import os
import subprocess
import sys


def checked(build, cwd, path, *arguments, module="mypy", **environment):
    """What mypy's module says. All runs share what they know of the standard library, in a folder of the build."""
    return subprocess.run(
        [sys.executable, "-m", module, *map(str, arguments)],
        env={
            **os.environ,
            "PYTHONPATH": os.pathsep.join(map(str, path)),
            "MYPY_CACHE_DIR": str(build / "mypy"),
            "LD_PRELOAD": "",
            **environment,
        },
        cwd=cwd,
        capture_output=True,
        text=True,
        timeout=600,
    )
