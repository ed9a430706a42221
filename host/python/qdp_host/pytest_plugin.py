"""For pytest: the fixture `qdp_host`, the embedded host of a test, and the markers `scenario` and `snapshot` that
choose what it has.

The plugin loads the stand-ins where the fixture is used. A test file that names it, itself or in a conftest.py, can
import _libqdp at its top; in every other run _libqdp finds the libraries of the machine, or none.
"""

import importlib
import os
import sys
from typing import Any, Iterator, Optional, Sequence

import pytest

from . import _host

FIXTURE = b"qdp_host"


def _names_the_fixture(path: str) -> bool:
    try:
        with open(path, "rb") as file:
            return FIXTURE in file.read()
    except OSError:
        return False


class _BeforeTheModule:
    """Loads the stand-ins when a test file that uses the fixture imports the module."""

    def __init__(self) -> None:
        self.is_wanted = False  # by a conftest.py
        self.collected = None  # type: Optional[str]

    def find_spec(self, name: str, path: Optional[Sequence[str]] = None, target: Any = None) -> None:
        if name == "_libqdp" and (self.is_wanted or (self.collected and _names_the_fixture(self.collected))):
            _host.the_host()
        # Others find it.

    def pytest_plugin_registered(self, plugin: Any) -> None:
        file = getattr(plugin, "__file__", None) or ""
        self.is_wanted |= os.path.basename(file) == "conftest.py" and _names_the_fixture(file)

    def pytest_collectstart(self, collector: Any) -> None:
        if isinstance(collector, pytest.Module):
            self.collected = str(collector.fspath)


_before_the_module = _BeforeTheModule()


def pytest_configure(config: Any) -> None:
    config.addinivalue_line(
        "markers", "scenario(name): the scenario, by file or by name, that the fixture qdp_host has"
    )
    config.addinivalue_line(
        "markers", "snapshot(file): the snapshot of a host whose answers the fixture qdp_host replays"
    )
    config.pluginmanager.register(_before_the_module, "qdp_host.before_the_module")
    sys.meta_path.insert(0, _before_the_module)


def pytest_unconfigure() -> None:
    sys.meta_path.remove(_before_the_module)


def _capture_of(snapshot: str, folder: Any) -> str:
    """The file of the capture that a snapshot holds."""
    reader = importlib.import_module("qdp.snapshot.read")  # only a test with a snapshot needs the layer
    path = str(folder / "capture")
    with open(path, "wb") as file:
        file.writelines(reader.Snapshot(snapshot).capture())
    return path


@pytest.fixture
def qdp_host(request: Any) -> Iterator[_host.EmbeddedHost]:
    """The embedded host, fresh for each test; `@pytest.mark.scenario("mux")` chooses a scenario, and
    `@pytest.mark.snapshot("customer.qdp")` lets it answer as that host has answered."""
    marker = request.node.get_closest_marker("scenario")
    snapshot = request.node.get_closest_marker("snapshot")
    with _host.running(*(marker.args if marker else ()), **(marker.kwargs if marker else {})) as host:
        if snapshot:
            host.replay(_capture_of(snapshot.args[0], request.getfixturevalue("tmp_path")))
        yield host
