"""What every test stands on: the embedded host of this process, and calls of the module's methods under observation."""

import ctypes
import gc
import importlib.machinery
import importlib.util
import os
import pathlib
import signal
import sys

import pytest

from observe import Observer
from qdp_host import EmbeddedHost

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = pathlib.Path(os.environ.get("QDP_BUILD", ROOT / "build" / "release")).resolve()

# The processes that tests start write and take signals as those of a user do, also where this one runs in the
# background or unbuffered.
os.environ.pop("PYTHONUNBUFFERED", None)
if signal.getsignal(signal.SIGINT) == signal.SIG_IGN:
    signal.signal(signal.SIGINT, signal.default_int_handler)

sys.path[:0] = [str(BUILD), str(BUILD / "tests")]
the_host = EmbeddedHost(BUILD / "host")
the_module = importlib.import_module("_libqdp")


@pytest.fixture(scope="session")
def build():
    """The folder of the build under test."""
    return BUILD


@pytest.fixture(scope="session")
def root():
    """The repository."""
    return ROOT


@pytest.fixture
def host():
    """The embedded host of the default scenario. Fails the test when a value of the switch state library is not
    released."""
    the_host.reset()
    before = the_host.unreleased_values()
    yield the_host
    assert the_host.unreleased_values() == before, "a value of the switch state library was not released"
    the_host.reset()


@pytest.fixture(scope="session")
def exported():
    """The module's plain functions, as the hosting process sees them."""
    return ctypes.PyDLL(the_module.__file__)


@pytest.fixture
def configured(host, exported):
    """The embedded host after LibraryInit: aliases resolve."""
    assert exported.LibraryInit() == 0
    return host


@pytest.fixture
def qdp(host):
    """The module's methods under observation, on the embedded host of the default scenario."""
    return Observer(the_module, host)


@pytest.fixture(scope="session")
def tortured(build):
    """The functions that torture, and the tortured module; both are in one file."""
    path = str(build / "tests" / "torture.so")
    loaded = []
    for name in ("torture", "_libqdp"):
        loader = importlib.machinery.ExtensionFileLoader(name, path)
        spec = importlib.util.spec_from_file_location(name, path, loader=loader)
        loaded.append(importlib.util.module_from_spec(spec))
    return loaded


@pytest.fixture
def release_only(build):
    """For tests of what things cost, and of what takes minutes where more than the work is done."""
    if build.name in ("sanitize", "coverage"):
        pytest.skip("this build costs more than the release")


@pytest.fixture(scope="session")
def core():
    """The core's own functions, of which each takes bytes made by a test."""
    return importlib.import_module("core_under_test")


def pytest_addoption(parser):
    parser.addoption("--long", action="store_true", help="run the tests marked as long, too")
    parser.addoption(
        "--one-of-each-shape", action="store_true", help="torture one method of each shape, not all methods"
    )


def pytest_configure(config):
    config.addinivalue_line("markers", "long: takes longer than a usual run of the tests may; runs with --long")


@pytest.hookimpl(tryfirst=True)  # before pytest-xdist reads the groups
def pytest_collection_modifyitems(config, items):
    """Keeps a file's tests in one process, so that what they share is made once."""
    for item in items:
        if not item.get_closest_marker("xdist_group"):
            item.add_marker(pytest.mark.xdist_group(str(item.path.relative_to(ROOT / "tests"))))
    if not config.getoption("--long"):
        long = [item for item in items if item.get_closest_marker("long")]
        config.hook.pytest_deselected(items=long)
        items[:] = [item for item in items if item not in long]


def pytest_collection_finish(session):
    """Takes thousands of test items out of the collector's sight, so that collections cost what the tests make."""
    gc.collect()
    gc.freeze()
