"""Imports what is installed for another interpreter, and nothing else that is installed beside it."""

import glob
import importlib.util
import os
import sys

SITE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def load(name: str) -> None:
    """Puts the installed module or package into the place of the one that is being imported."""
    package = os.path.join(SITE, name, "__init__.py")
    folder = [os.path.dirname(package)] if os.path.exists(package) else None
    files = [package] if folder else glob.glob(os.path.join(SITE, name + ".*.so"))
    if not files:
        raise ModuleNotFoundError("No module named {!r} in {}".format(name, SITE), name=name)
    spec = importlib.util.spec_from_file_location(name, files[0], submodule_search_locations=folder)
    if spec is None or spec.loader is None:
        raise ImportError("{} cannot be imported".format(files[0]), name=name)
    module = importlib.util.module_from_spec(spec)
    sys.modules[name] = module
    spec.loader.exec_module(module)
