"""The packages' tests. script/package --test names in QDP_PACKAGES the folder of the packages that it has built, and
runs them all; without that, those run that Debian's packages alone make possible."""

import os

import pytest

collect_ignore = [] if "QDP_PACKAGES" in os.environ else ["test_checkers.py", "test_wheel.py"]


@pytest.fixture(scope="session")
def bare():
    """An environment without what the tests themselves run on: nothing leads to the build."""
    left_out = {"PYTHONPATH", "LD_LIBRARY_PATH", "LD_PRELOAD", "VIRTUAL_ENV"}
    return {name: value for name, value in os.environ.items() if name not in left_out and not name.startswith("QDP_")}


@pytest.fixture
def in_fresh_root(bare, fresh_root):
    """That environment, with the Debian packages' files in Python's path."""
    return dict(bare, PYTHONPATH=str(fresh_root / "usr/lib/python3/dist-packages"))
