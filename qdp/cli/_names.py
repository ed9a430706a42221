"""The names of switches and ports that shells complete: a file of each kind, with what was shown on a terminal last."""

import os
import sys

from ._output import is_terminal


def remember(kind, names):
    """Keeps the names for completion. Scripts keep nothing, and a folder that cannot be written to is no failure."""
    if not is_terminal(sys.stdout):
        return
    cache = os.environ.get("XDG_CACHE_HOME") or os.path.join(os.path.expanduser("~"), ".cache")
    folder = os.path.join(cache, "qdp")
    path = os.path.join(folder, kind)
    try:
        os.makedirs(folder, exist_ok=True)
        with open(path + ".new", "w", errors="surrogateescape") as file:
            file.write("".join(name + "\n" for name in names if name and name.isprintable() and " " not in name))
        os.replace(path + ".new", path)
    except OSError:
        pass
